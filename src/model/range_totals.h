#pragma once

#include <QDate>
#include <QSet>
#include <QString>
#include <QUuid>
#include <compare>
#include <cstdint>
#include <vector>

#include "model/local_day.h"

namespace kivo {

class RecordStore;

// Where a record stands in the order in which the store hands out a range of daily totals: by
// creation moment, then by insertion.
struct StorePosition {
    double createdAt = 0.0;
    std::int64_t rowid = 0;

    friend auto operator<=>(const StorePosition&, const StorePosition&) = default;
};

// The live daily totals of a range that share a filter and a key, summed. `first` is the earliest
// of them in store order; it names the group. The groups come in no particular order.
struct AppUsageGroup {
    QUuid filterId;
    QString appBundleId;
    QString appName;
    std::int64_t duration = 0;
    StorePosition first;
};

struct WebUsageGroup {
    QUuid filterId;
    QString domainName;
    std::int64_t duration = 0;
    StorePosition first;
};

struct TagUsageGroup {
    QUuid filterId;
    QUuid projectId;
    std::int64_t duration = 0;
    StorePosition first;
};

// Each reads only the columns it needs, in one pass over the range. Only the totals of
// `countedFilters` are summed: the others add to no sum. An overflowing sum stops the program.
std::vector<AppUsageGroup> appUsageGroups(RecordStore& store, const DayRange& range,
                                          const QSet<QUuid>& countedFilters);
std::vector<WebUsageGroup> webUsageGroups(RecordStore& store, const DayRange& range,
                                          const QSet<QUuid>& countedFilters);
std::vector<TagUsageGroup> tagUsageGroups(RecordStore& store, const DayRange& range,
                                          const QSet<QUuid>& countedFilters);

// Every live TagUsage total of the days `first` to `last` (none when `last` is before `first`),
// in store order, each with the local day it was created on (0 for `first`). Ids are given once
// and referred to by index.
struct TagUsageDays {
    struct Entry {
        int day = 0;
        std::uint32_t filter = 0;
        std::uint32_t project = 0;
        std::int64_t duration = 0;
        StorePosition position;
    };
    int dayCount = 0;
    std::vector<QUuid> filterIds;
    std::vector<QUuid> projectIds;
    std::vector<Entry> entries;
};

TagUsageDays tagUsageDays(RecordStore& store, QDate first, QDate last);

}  // namespace kivo
