#pragma once

#include <vector>

#include "classify/match_budget.h"
#include "model/application_settings.h"
#include "model/capture_data.h"
#include "model/instant.h"
#include "model/record_store.h"

namespace kivo {

// Writes every ended capture that lasted at least the minimum duration: one `Activity` per live
// filter that accepts it, in store order, or one under the unassigned filter when none does;
// each activity also adds to its day's totals. Matching works on copies, so the pending captures
// keep their texts for a retry. Matching stops when `budget` is spent: the filters not yet tried
// for a capture count as not matching, which one line says once per capture. The writes join the
// store's open batch; committing or rolling it back is the caller's. Throws StoreError when the
// store fails.
void recordCaptures(const std::vector<CaptureData>& pending, RecordStore& store,
                    const ApplicationSettings& settings, Instant now, const MatchBudget& budget);

}  // namespace kivo
