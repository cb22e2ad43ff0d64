#include "capture/capture_timer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kivo {

namespace {

// A hand-written interval that is no positive number ticks once a second, as an unset one does.
std::chrono::milliseconds intervalOf(double seconds) {
    if (!(seconds > 0.0) || !std::isfinite(seconds)) {
        seconds = 1.0;
    }
    constexpr double longest = std::numeric_limits<int>::max();
    return std::chrono::milliseconds(std::llround(std::clamp(seconds * 1000.0, 1.0, longest)));
}

}  // namespace

CaptureTimer::CaptureTimer(Recorder& recorder, const ApplicationSettings& settings, QObject* parent)
    : QObject(parent), settings_(settings) {
    connect(&timer_, &QTimer::timeout, this, [&recorder] { recorder.captureTick(); });
}

void CaptureTimer::start() {
    if (!timer_.isActive()) {
        timer_.start(intervalOf(settings_.timerInterval()));
    }
}

void CaptureTimer::stop() {
    timer_.stop();
}

bool CaptureTimer::isRunning() const {
    return timer_.isActive();
}

std::chrono::milliseconds CaptureTimer::interval() const {
    return timer_.intervalAsDuration();
}

}  // namespace kivo
