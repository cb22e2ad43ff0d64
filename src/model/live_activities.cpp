#include "model/live_activities.h"

#include <algorithm>
#include <limits>

#include "model/checked_arithmetic.h"

namespace kivo {

namespace {

// Where the daily total that a live activity starts would stand in store order: it is created
// when the activity is written, after every stored total, and dated like one (see daily totals).
StorePosition positionOf(const Activity& activity, std::size_t order) {
    const DayRange day = localDayContaining(activity.startAt);
    const Instant createdAt =
        day.contains(activity.createdAt) ? activity.createdAt : activity.startAt;
    constexpr std::int64_t afterStoredRows = std::numeric_limits<std::int64_t>::max() / 2;
    return {toEpochSeconds(createdAt), afterStoredRows + static_cast<std::int64_t>(order)};
}

template <class Group, class HasKey, class Make>
void addToGroups(std::vector<Group>& groups, const LiveActivities& live, const DayRange& range,
                 const QSet<QUuid>& countedFilters, HasKey hasKey, Make make) {
    for (std::size_t i = 0; i < live.activities.size(); ++i) {
        const Activity& activity = live.activities[i];
        if (!range.contains(activity.startAt) || !countedFilters.contains(activity.filterId)) {
            continue;
        }
        const auto found = std::find_if(groups.begin(), groups.end(), [&](const Group& group) {
            return group.filterId == activity.filterId && hasKey(group, activity);
        });
        if (found != groups.end()) {
            found->duration = checkedAdd(found->duration, activity.duration);
            continue;
        }
        Group group = make(activity);
        group.filterId = activity.filterId;
        group.duration = activity.duration;
        group.first = positionOf(activity, i);
        groups.push_back(std::move(group));
    }
}

std::uint32_t numberOf(std::vector<QUuid>& ids, const QUuid& id) {
    const auto found = std::find(ids.begin(), ids.end(), id);
    if (found != ids.end()) {
        return static_cast<std::uint32_t>(found - ids.begin());
    }
    ids.push_back(id);
    return static_cast<std::uint32_t>(ids.size() - 1);
}

}  // namespace

void addLiveActivities(std::vector<AppUsageGroup>& groups, const LiveActivities& live,
                       const DayRange& range, const QSet<QUuid>& countedFilters) {
    addToGroups(
        groups, live, range, countedFilters,
        [](const AppUsageGroup& group, const Activity& activity) {
            return group.appBundleId == activity.appBundleId;
        },
        [](const Activity& activity) {
            AppUsageGroup group;
            group.appBundleId = activity.appBundleId;
            group.appName = activity.appName;
            return group;
        });
}

void addLiveActivities(std::vector<WebUsageGroup>& groups, const LiveActivities& live,
                       const DayRange& range, const QSet<QUuid>& countedFilters) {
    addToGroups(
        groups, live, range, countedFilters,
        [](const WebUsageGroup& group, const Activity& activity) {
            return group.domainName == activity.domainName;
        },
        [](const Activity& activity) {
            WebUsageGroup group;
            group.domainName = activity.domainName;
            return group;
        });
}

void addLiveActivities(std::vector<TagUsageGroup>& groups, const LiveActivities& live,
                       const DayRange& range, const QSet<QUuid>& countedFilters) {
    addToGroups(
        groups, live, range, countedFilters,
        [](const TagUsageGroup& group, const Activity& activity) {
            return group.projectId == activity.projectId;
        },
        [](const Activity& activity) {
            TagUsageGroup group;
            group.projectId = activity.projectId;
            return group;
        });
}

void addLiveActivities(TagUsageDays& days, const LiveActivities& live, QDate first) {
    if (days.dayCount == 0) {
        return;
    }
    const DayRange range = localDays(first, first.addDays(days.dayCount - 1));
    for (std::size_t i = 0; i < live.activities.size(); ++i) {
        const Activity& activity = live.activities[i];
        if (!range.contains(activity.startAt)) {
            continue;
        }
        const auto day = static_cast<int>(first.daysTo(localDateOf(activity.startAt)));
        const std::uint32_t filter = numberOf(days.filterIds, activity.filterId);
        const std::uint32_t project = numberOf(days.projectIds, activity.projectId);
        const auto found = std::find_if(
            days.entries.begin(), days.entries.end(), [&](const TagUsageDays::Entry& entry) {
                return entry.day == day && entry.filter == filter && entry.project == project;
            });
        if (found != days.entries.end()) {
            found->duration = checkedAdd(found->duration, activity.duration);
        } else {
            days.entries.push_back(
                {day, filter, project, activity.duration, positionOf(activity, i)});
        }
    }
}

}  // namespace kivo
