#pragma once

#include <vector>

#include "model/application_settings.h"
#include "model/capture_data.h"
#include "model/instant.h"

namespace kivo {

// Merges one sample into the pending captures, in list order. The time since the last sample
// belongs to the capture that sample showed, the one in front until now (a late sample counts one
// timer interval at most), so that the second of a switch goes to the window left, not the one
// come to. Then the capture with the sample's application, title and address is in front; every
// other capture unseen for longer than the maximum gap is marked ended. A sample that matches
// nothing opens a new capture with no time yet. Captures already ended are waiting to be written
// and are left alone. A browser's sample without an address (the tab not known yet) is held: its
// time goes to the sample of the same browser that follows, and is dropped otherwise.
void mergeSample(std::vector<CaptureData>& pending, const CaptureData& sample,
                 const ApplicationSettings& settings);

// Gives the capture in front the time from its last sample up to `now`, by the same rule, and
// ends every capture but a held one, which is dropped: the clean end, or the open captures seen
// as if they ended now.
void endCaptures(std::vector<CaptureData>& pending, Instant now,
                 const ApplicationSettings& settings);

}  // namespace kivo
