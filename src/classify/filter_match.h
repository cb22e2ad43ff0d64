#pragma once

#include "classify/match_budget.h"
#include "model/capture_data.h"
#include "model/records.h"

namespace kivo {

// Whether `filter` accepts `capture`. On acceptance the capture's title and address are replaced
// by the texts the filter tested (cut down when the filter cuts), so that the activity and every
// later filter see them; otherwise the capture is left as it was. A filter whose searches ran into
// the end of `budget` does not accept.
bool matchFilter(CaptureData& capture, const Filter& filter, const MatchBudget* budget = nullptr);

}  // namespace kivo
