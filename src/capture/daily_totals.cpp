#include "capture/daily_totals.h"

#include <algorithm>

#include "model/checked_arithmetic.h"
#include "model/local_day.h"

namespace kivo {

namespace {

template <class Total, class HasKey, class SetKey>
void addToDailyTotal(RecordStore& store, const Activity& activity, Instant now, HasKey hasKey,
                     SetKey setKey) {
    const DayRange day = localDayContaining(activity.startAt);
    auto totals = store.fetch<Total>(liveCreatedWithin(day));
    const auto found = std::find_if(totals.begin(), totals.end(), hasKey);
    if (found != totals.end()) {
        found->duration = checkedAdd(found->duration, activity.duration);
        store.update(*found);
        return;
    }
    // Totals are found by their creation date, so a total for an earlier day (a capture that
    // ran past midnight) is dated within that day.
    auto total = newRecord<Total>(day.contains(now) ? now : activity.startAt);
    total.duration = activity.duration;
    setKey(total);
    store.insert(total);
}

}  // namespace

void addToDailyTotals(RecordStore& store, const Activity& activity, Instant now) {
    addToDailyTotal<TagUsage>(
        store, activity, now,
        [&](const TagUsage& total) {
            return total.projectId == activity.projectId && total.filterId == activity.filterId;
        },
        [&](TagUsage& total) {
            total.projectId = activity.projectId;
            total.filterId = activity.filterId;
        });
    addToDailyTotal<AppUsage>(
        store, activity, now,
        [&](const AppUsage& total) {
            return total.filterId == activity.filterId && total.appBundleId == activity.appBundleId;
        },
        [&](AppUsage& total) {
            total.filterId = activity.filterId;
            total.appName = activity.appName;
            total.appBundleId = activity.appBundleId;
        });
    addToDailyTotal<WebUsage>(
        store, activity, now,
        [&](const WebUsage& total) {
            return total.filterId == activity.filterId && total.domainName == activity.domainName;
        },
        [&](WebUsage& total) {
            total.filterId = activity.filterId;
            total.domainName = activity.domainName;
        });
}

}  // namespace kivo
