#pragma once

#include <vector>

#include "model/application_settings.h"
#include "model/capture_data.h"

namespace kivo {

// Merges one sample into the pending captures, in list order: the capture with the same
// application, title and address is extended by the time since it was last seen (a late tick
// counts one timer interval at most); every other capture unseen for longer than the maximum
// gap is marked ended. A sample that extends nothing opens a new capture with no time yet.
// Captures already ended are waiting to be written and are left alone.
void mergeSample(std::vector<CaptureData>& pending, const CaptureData& sample,
                 const ApplicationSettings& settings);

}  // namespace kivo
