#pragma once

#include <QIcon>
#include <QImage>
#include <cstdint>

namespace kivo {

// The tray's picture of today's score: a gauge whose needle and figure show `score` percent.
QImage gaugeImage(std::int64_t score, int size);
QIcon gaugeIcon(std::int64_t score);

}  // namespace kivo
