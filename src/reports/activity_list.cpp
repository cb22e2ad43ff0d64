#include "reports/activity_list.h"

#include <QDateTime>
#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

#include "model/checked_arithmetic.h"
#include "model/local_day.h"
#include "model/record_store.h"

namespace kivo {

namespace {

constexpr double secondsPerHour = 3600.0;
constexpr double secondsPerDay = 24 * secondsPerHour;

bool isSelected(const QStringList& selections, const QString& key) {
    return selections.isEmpty() || selections.contains(key);
}

bool isSelected(const QStringList& selections, const QUuid& key) {
    return selections.isEmpty() ||
           std::any_of(selections.begin(), selections.end(),
                       [&key](const QString& text) { return QUuid::fromString(text) == key; });
}

// Spreads the activity's seconds over the hours of the day from its start on. Whole days (a
// record that claims more than a day) count in every hour alike.
void addToHistogram(std::array<double, 24>& minutesPerHour, const Activity& activity) {
    if (activity.duration <= 0) {
        return;
    }
    const auto start = QDateTime::fromMSecsSinceEpoch(
        static_cast<qint64>(std::floor(toEpochSeconds(activity.startAt) * 1000.0)));
    const QTime time = start.time();
    int hour = time.hour();
    double intoHour = time.minute() * 60.0 + time.second() + time.msec() / 1000.0;
    double left = static_cast<double>(activity.duration);
    const double wholeDays = std::floor(left / secondsPerDay);
    if (wholeDays > 0) {
        for (double& minutes : minutesPerHour) {
            minutes += wholeDays * 60.0;
        }
        left -= wholeDays * secondsPerDay;
    }
    while (left > 0) {
        const double taken = std::min(left, secondsPerHour - intoHour);
        minutesPerHour[static_cast<std::size_t>(hour)] += taken / 60.0;
        left -= taken;
        intoHour = 0;
        hour = (hour + 1) % 24;
    }
}

}  // namespace

std::vector<Activity> activitiesStartedWithin(RecordStore& store, QDate first, QDate last) {
    if (last < first) {
        return {};
    }
    const DayRange days = localDays(first, last);
    return store.fetch<Activity>(
        {"isDeleted = 0 AND startAt >= ? AND startAt < ?", {days.begin, days.end}, "startAt"});
}

bool isActivityShown(const Activity& activity, const ActivityListQuery& query) {
    if (static_cast<double>(activity.duration) < query.minimumDuration ||
        !query.countedFilters.contains(activity.filterId) ||
        !isSelected(query.applicationSelections, activity.appBundleId) ||
        !isSelected(query.websiteSelections, activity.domainName) ||
        !isSelected(query.filterSelections, activity.filterId) ||
        !isSelected(query.projectSelections, activity.projectId)) {
        return false;
    }
    return query.searchText.isEmpty() ||
           activity.title.contains(query.searchText, Qt::CaseInsensitive) ||
           activity.url.contains(query.searchText, Qt::CaseInsensitive);
}

ActivityList groupActivities(const std::vector<Activity>& activities,
                             const ActivityListQuery& query) {
    ActivityList list;
    std::map<std::tuple<QString, QString, QString, QUuid>, std::size_t> groupOf;
    for (const Activity& activity : activities) {
        if (!isActivityShown(activity, query)) {
            continue;
        }
        const auto [found, isNew] = groupOf.try_emplace(
            {activity.appBundleId, activity.title, activity.url, activity.filterId},
            list.groups.size());
        if (isNew) {
            list.groups.push_back({activity.appName,
                                   activity.appBundleId,
                                   activity.title,
                                   activity.url,
                                   activity.domainName,
                                   activity.projectId,
                                   activity.filterId,
                                   0,
                                   {}});
        }
        ActivityGroup& group = list.groups[found->second];
        group.duration = checkedAdd(group.duration, activity.duration);
        group.entries.push_back({activity.id, activity.startAt, activity.endAt, activity.duration});
        list.durationTotal = checkedAdd(list.durationTotal, activity.duration);
        addToHistogram(list.minutesPerHour, activity);
    }
    std::stable_sort(
        list.groups.begin(), list.groups.end(),
        [](const ActivityGroup& a, const ActivityGroup& b) { return a.duration > b.duration; });
    return list;
}

ActivityList listActivities(RecordStore& store, const ActivityListQuery& query) {
    return groupActivities(activitiesStartedWithin(store, query.minDate, query.maxDate), query);
}

Filter filterPrefilledFrom(const ActivityGroup& group, QUuid projectId, Instant now) {
    auto filter = newRecord<Filter>(now);
    filter.projectId = projectId;
    filter.appName = group.appName;
    filter.appBundleId = group.appBundleId;
    if (!group.domainName.isEmpty()) {
        filter.matchExpressionOfUrl = group.domainName;
        filter.tagName = group.domainName;
    } else {
        filter.matchExpressionOfTitle = group.title;
        filter.tagName = group.title;
    }
    return filter;
}

}  // namespace kivo
