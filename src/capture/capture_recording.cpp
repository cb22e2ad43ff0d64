#include "capture/capture_recording.h"

#include "capture/capture_activities.h"
#include "capture/daily_totals.h"

namespace kivo {

void recordCaptures(const std::vector<CaptureData>& pending, RecordStore& store,
                    const ApplicationSettings& settings, Instant now, const MatchBudget& budget) {
    for (const Activity& activity :
         activitiesOfEndedCaptures(pending, store, settings, now, budget)) {
        store.insert(activity);
        addToDailyTotals(store, activity, now);
    }
}

}  // namespace kivo
