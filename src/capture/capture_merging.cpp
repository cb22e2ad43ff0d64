#include "capture/capture_merging.h"

#include <algorithm>

namespace kivo {

namespace {

bool isSameCapture(const CaptureData& capture, const CaptureData& sample) {
    return capture.name == sample.name && capture.bundleId == sample.bundleId &&
           capture.title == sample.title && capture.url == sample.url;
}

// Adds to the capture in front the time from its last sample to `now`. A sample that comes late
// (sleep, a slow script, a pause while the user was away) counts one interval; a clock set back
// counts nothing rather than taking time away.
void countFrontUntil(std::vector<CaptureData>& pending, Instant now, double interval) {
    const auto front = std::ranges::find_if(pending, [](const CaptureData& capture) {
        return capture.isInFront && !capture.isEnd;
    });
    if (front == pending.end()) {
        return;
    }
    const double elapsed = (now - front->updatedAt).count();
    const double counted = elapsed > 1.5 * interval ? interval : std::max(elapsed, 0.0);
    front->duration += counted;
    front->updatedAt += Seconds{counted};
}

}  // namespace

void mergeSample(std::vector<CaptureData>& pending, const CaptureData& sample,
                 const ApplicationSettings& settings) {
    const double maximumGap = settings.maximumGapLength();
    countFrontUntil(pending, sample.createdAt, settings.timerInterval());
    bool isExtended = false;
    for (CaptureData& capture : pending) {
        if (capture.isEnd) {
            continue;
        }
        capture.isInFront = isSameCapture(capture, sample);
        if (capture.isInFront) {
            // Returning after an absence continues the capture; the absence adds nothing.
            capture.updatedAt = sample.createdAt;
            isExtended = true;
        } else if ((sample.createdAt - capture.updatedAt).count() > maximumGap) {
            capture.isEnd = true;
        }
    }
    if (!isExtended) {
        pending.push_back(sample);
        pending.back().isInFront = true;
    }
}

void endCaptures(std::vector<CaptureData>& pending, Instant now,
                 const ApplicationSettings& settings) {
    countFrontUntil(pending, now, settings.timerInterval());
    for (CaptureData& capture : pending) {
        capture.isEnd = true;
        capture.isInFront = false;
    }
}

}  // namespace kivo
