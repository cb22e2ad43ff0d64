#pragma once

#include "model/instant.h"
#include "model/record_store.h"
#include "model/records.h"

namespace kivo {

// Adds the activity's seconds to the totals of the local day it started on: per project and
// filter (`TagUsage`), per application (`AppUsage`), per web domain (`WebUsage`), in that order.
// A day without a total of that key gets a new one. The writes join the store's open batch.
void addToDailyTotals(RecordStore& store, const Activity& activity, Instant now);

}  // namespace kivo
