#pragma once

#include <vector>

#include "classify/match_budget.h"
#include "model/application_settings.h"
#include "model/capture_data.h"
#include "model/instant.h"
#include "model/record_store.h"

namespace kivo {

// Writes the activities that `activitiesOfEndedCaptures` makes of the pending captures, each
// also adding to its day's totals. The writes join the store's open batch; committing or rolling
// it back is the caller's. Throws StoreError when the store fails.
void recordCaptures(const std::vector<CaptureData>& pending, RecordStore& store,
                    const ApplicationSettings& settings, Instant now, const MatchBudget& budget);

}  // namespace kivo
