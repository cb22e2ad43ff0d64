#pragma once

#include <QDate>
#include <QSet>
#include <QUuid>
#include <vector>

#include "model/local_day.h"
#include "model/range_totals.h"
#include "model/records.h"

namespace kivo {

// What recording would write for the captures still open if they ended now: activities that are
// shown but not stored. Each counts for the local day it started on, as a written one does.
struct LiveActivities {
    std::vector<Activity> activities;

    bool isEmpty() const { return activities.empty(); }
};

// The store's groups of `range` with the live activities that started within it added as their
// daily totals would add once written: into the group of their filter and key, or as a new group
// after every stored total. Only the activities of `countedFilters` count.
void addLiveActivities(std::vector<AppUsageGroup>& groups, const LiveActivities& live,
                       const DayRange& range, const QSet<QUuid>& countedFilters);
void addLiveActivities(std::vector<WebUsageGroup>& groups, const LiveActivities& live,
                       const DayRange& range, const QSet<QUuid>& countedFilters);
void addLiveActivities(std::vector<TagUsageGroup>& groups, const LiveActivities& live,
                       const DayRange& range, const QSet<QUuid>& countedFilters);
// The same for the tag usage of single days: a live activity adds to its day's total of its
// project and filter, or adds a total after the stored ones.
void addLiveActivities(TagUsageDays& days, const LiveActivities& live, QDate first);

}  // namespace kivo
