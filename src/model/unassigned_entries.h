#pragma once

#include "model/instant.h"
#include "model/record_store.h"

namespace kivo {

// Makes sure the project "Others" and its filter "Unassigned", under which recording files time
// that no filter claims, exist exactly once. Inserts what is missing and saves. Running it again
// (a second start, a reopened window) creates nothing.
void ensureUnassignedEntries(RecordStore& store, Instant now);

}  // namespace kivo
