#pragma once

#include <QString>
#include <cstdint>

namespace kivo {

// The short duration shown beside tree labels and today's score: "" for 0, " <1m " below a
// minute, " 12m " below an hour, " 3h 5m " from an hour on. Quotients are truncated and the
// blanks on both sides are part of the text.
QString formatDurationLabel(std::int64_t seconds);

}  // namespace kivo
