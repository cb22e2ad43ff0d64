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
    const auto front = std::ranges::find_if(
        pending, [](const CaptureData& capture) { return capture.isInFront && !capture.isEnd; });
    if (front == pending.end()) {
        return;
    }
    const double elapsed = (now - front->updatedAt).count();
    const double counted = elapsed > 1.5 * interval ? interval : std::max(elapsed, 0.0);
    front->duration += counted;
    front->updatedAt += Seconds{counted};
}

bool isWaitingForTab(const CaptureData& capture) {
    return !capture.isEnd && !capture.url;
}

// The time a browser took to say which tab was in front, held for that tab's capture.
struct HeldTime {
    QString bundleId;
    Instant since{};
    double duration = 0.0;
};

// Takes out the capture of a browser that had not yet said which tab was in front, unless
// `sample` continues it; nothing held when there is none.
HeldTime takeWaitingCapture(std::vector<CaptureData>& pending, const CaptureData& sample) {
    const auto waiting = std::ranges::find_if(pending, isWaitingForTab);
    if (waiting == pending.end() || isSameCapture(*waiting, sample)) {
        return {};
    }
    HeldTime held{waiting->bundleId, waiting->createdAt, waiting->duration};
    pending.erase(waiting);
    return held;
}

}  // namespace

void mergeSample(std::vector<CaptureData>& pending, const CaptureData& sample,
                 const ApplicationSettings& settings) {
    const double maximumGap = settings.maximumGapLength();
    countFrontUntil(pending, sample.createdAt, settings.timerInterval());
    const HeldTime held = takeWaitingCapture(pending, sample);
    const bool isHeldForSample = !held.bundleId.isEmpty() && held.bundleId == sample.bundleId;
    CaptureData* continued = nullptr;
    for (CaptureData& capture : pending) {
        if (capture.isEnd) {
            continue;
        }
        capture.isInFront = isSameCapture(capture, sample);
        if (capture.isInFront) {
            // Returning after an absence continues the capture; the absence adds nothing.
            capture.updatedAt = sample.createdAt;
            continued = &capture;
        } else if ((sample.createdAt - capture.updatedAt).count() > maximumGap) {
            capture.isEnd = true;
        }
    }
    if (continued == nullptr) {
        continued = &pending.emplace_back(sample);
        continued->isInFront = true;
        if (isHeldForSample) {
            continued->createdAt = held.since;
        }
    }
    // The seconds while the browser found its answer are the tab's. When something else came
    // first, they are dropped: the window title alone may name a page the tab would keep
    // private.
    if (isHeldForSample) {
        continued->duration += held.duration;
    }
}

void endCaptures(std::vector<CaptureData>& pending, Instant now,
                 const ApplicationSettings& settings) {
    countFrontUntil(pending, now, settings.timerInterval());
    std::erase_if(pending, isWaitingForTab);
    for (CaptureData& capture : pending) {
        capture.isEnd = true;
        capture.isInFront = false;
    }
}

}  // namespace kivo
