#pragma once

#include <QString>
#include <cstdint>

namespace kivo {

// `part` as a percentage of `whole`, in floating point.
double sharePercent(std::int64_t part, std::int64_t whole);

// A percentage truncated toward zero; one that is not finite or does not fit a 64-bit integer
// stops the program.
std::int64_t truncatedPercent(double percent);

// The share column of a report table: "<1%" when the truncated share is 0, else "N%".
QString percentageText(std::int64_t duration, std::int64_t durationTotal);

}  // namespace kivo
