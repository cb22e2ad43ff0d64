#include "capture/capture_merging.h"

#include <algorithm>

namespace kivo {

namespace {

bool isSameCapture(const CaptureData& capture, const CaptureData& sample) {
    return capture.name == sample.name && capture.bundleId == sample.bundleId &&
           capture.title == sample.title && capture.url == sample.url;
}

}  // namespace

void mergeSample(std::vector<CaptureData>& pending, const CaptureData& sample,
                 const ApplicationSettings& settings) {
    const double interval = settings.timerInterval();
    const double maximumGap = settings.maximumGapLength();
    bool isExtended = false;
    for (CaptureData& capture : pending) {
        if (capture.isEnd) {
            continue;
        }
        const double elapsed = (sample.createdAt - capture.updatedAt).count();
        if (isSameCapture(capture, sample)) {
            // A tick that comes late (sleep, a slow script) or a return after an absence counts
            // one interval; a clock set back counts nothing rather than taking time away.
            const double counted = elapsed > 1.5 * interval ? interval : std::max(elapsed, 0.0);
            capture.duration += counted;
            capture.updatedAt = sample.createdAt;
            isExtended = true;
        } else if (elapsed > maximumGap) {
            capture.isEnd = true;
        }
    }
    if (!isExtended) {
        pending.push_back(sample);
    }
}

}  // namespace kivo
