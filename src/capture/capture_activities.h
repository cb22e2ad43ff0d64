#pragma once

#include <vector>

#include "classify/match_budget.h"
#include "model/application_settings.h"
#include "model/capture_data.h"
#include "model/instant.h"
#include "model/record_store.h"
#include "model/records.h"

namespace kivo {

// The activities that recording makes of the ended captures among `captures` that lasted at least
// the minimum duration: one per live filter that accepts it, in store order, or one under the
// unassigned filter when none does; each created at `now`, its duration rounded to the nearest
// whole second. Only reads the store. Matching works on copies, so the captures keep their texts.
// Matching stops when `budget` is spent: the filters not yet tried for a capture count as not
// matching, which one line says once per capture. Throws StoreError when the store fails.
std::vector<Activity> activitiesOfEndedCaptures(const std::vector<CaptureData>& captures,
                                                RecordStore& store,
                                                const ApplicationSettings& settings, Instant now,
                                                const MatchBudget& budget);

}  // namespace kivo
