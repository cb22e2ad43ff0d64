#include "model/range_totals.h"

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "model/checked_arithmetic.h"
#include "model/record_store.h"
#include "model/text_numbers.h"
#include "model/usage_summaries.h"

namespace kivo {

namespace {

// The live totals of a range: the given columns, then the record's place in store order.
std::string rangeSql(const char* kind, const char* columns) {
    return "SELECT " + std::string(columns) + ", createdAt, rowid FROM " + kind +
           " WHERE isDeleted = 0 AND createdAt >= ? AND createdAt < ?";
}

// The same columns read from the records or, for whole stretches of days, from their summaries,
// where a group's earliest total stands for the record's place.
struct RangeReads {
    RangeReads(const char* kind, const char* columns)
        : records(rangeSql(kind, columns)),
          summaries("SELECT " + std::string(columns) + ", firstCreatedAt, firstRowid FROM " +
                    usage_summaries::tableOf(kind) +
                    " WHERE days = ? AND stretch >= ? AND stretch <= ?") {}

    std::string records;
    std::string summaries;
};

void readRange(RecordStore& store, const RangeReads& reads, const DayRange& range,
               const std::function<void(const RowCells&)>& onRow) {
    if (!store.hasUsageSummaries()) {
        store.read(reads.records, {range.begin, range.end}, onRow);
        return;
    }
    for (const auto& piece :
         usage_summaries::piecesOf(toEpochSeconds(range.begin), toEpochSeconds(range.end))) {
        if (piece.days == 0) {
            store.read(reads.records, {piece.begin, piece.end}, onRow);
        } else {
            store.read(reads.summaries,
                       {std::int64_t{piece.days}, piece.firstStretch, piece.lastStretch}, onRow);
        }
    }
}

QString utf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// Sums a range's live totals by filter (column 0) and key (column 1); column 2 is the duration,
// then come the position columns. `make` starts a group from its first row, `rename` takes the
// names of a row that comes earlier in store order.
template <class Group, class Make, class Rename>
std::vector<Group> groupsOf(RecordStore& store, const RangeReads& reads, const DayRange& range,
                            const QSet<QUuid>& countedFilters, int positionColumn, Make make,
                            Rename rename) {
    TextNumbers filters;
    std::vector<bool> isFilterCounted;  // by filter number, decided once per filter
    TextNumbers keys;
    std::unordered_map<std::uint64_t, std::size_t> groupOfPair;
    std::vector<Group> groups;
    readRange(store, reads, range, [&](const RowCells& row) {
        const std::uint32_t filter = filters.numberOf(row.text(0));
        if (filter == isFilterCounted.size()) {
            isFilterCounted.push_back(countedFilters.contains(uuidOf(filters.text(filter))));
        }
        if (!isFilterCounted[filter]) {
            return;
        }
        const std::uint32_t key = keys.numberOf(row.text(1));
        const std::uint64_t pair = std::uint64_t{filter} << 32 | key;
        const std::int64_t duration = row.integer(2);
        const StorePosition position{row.real(positionColumn), row.integer(positionColumn + 1)};
        const auto [found, isNew] = groupOfPair.try_emplace(pair, groups.size());
        if (isNew) {
            groups.push_back(make(uuidOf(filters.text(filter)), keys.text(key), row));
            groups.back().duration = duration;
            groups.back().first = position;
            return;
        }
        Group& group = groups[found->second];
        group.duration = checkedAdd(group.duration, duration);
        if (position < group.first) {
            group.first = position;
            rename(group, row);
        }
    });
    return groups;
}

// Store order within a range: the index hands totals out by creation moment; totals created in
// the same moment go by insertion.
template <class Raw>
void putInStoreOrder(std::vector<Raw>& rows) {
    const auto byPosition = [](const Raw& a, const Raw& b) { return a.position < b.position; };
    const auto byMoment = [](const Raw& a, const Raw& b) {
        return a.position.createdAt < b.position.createdAt;
    };
    if (!std::is_sorted(rows.begin(), rows.end(), byMoment)) {
        std::sort(rows.begin(), rows.end(), byPosition);
        return;
    }
    for (auto run = rows.begin(); run != rows.end();) {
        const auto end = std::upper_bound(run, rows.end(), *run, byMoment);
        std::sort(run, end, byPosition);
        run = end;
    }
}

}  // namespace

std::vector<AppUsageGroup> appUsageGroups(RecordStore& store, const DayRange& range,
                                          const QSet<QUuid>& countedFilters) {
    static const RangeReads reads("AppUsage", "filterId, appBundleId, duration, appName");
    return groupsOf<AppUsageGroup>(
        store, reads, range, countedFilters, 4,
        [](const QUuid& filterId, std::string_view bundleId, const RowCells& row) {
            return AppUsageGroup{filterId, utf8(bundleId), utf8(row.text(3)), 0, {}};
        },
        [](AppUsageGroup& group, const RowCells& row) { group.appName = utf8(row.text(3)); });
}

std::vector<WebUsageGroup> webUsageGroups(RecordStore& store, const DayRange& range,
                                          const QSet<QUuid>& countedFilters) {
    static const RangeReads reads("WebUsage", "filterId, domainName, duration");
    return groupsOf<WebUsageGroup>(
        store, reads, range, countedFilters, 3,
        [](const QUuid& filterId, std::string_view domainName, const RowCells&) {
            return WebUsageGroup{filterId, utf8(domainName), 0, {}};
        },
        [](WebUsageGroup&, const RowCells&) {});
}

std::vector<TagUsageGroup> tagUsageGroups(RecordStore& store, const DayRange& range,
                                          const QSet<QUuid>& countedFilters) {
    static const RangeReads reads("TagUsage", "filterId, projectId, duration");
    return groupsOf<TagUsageGroup>(
        store, reads, range, countedFilters, 3,
        [](const QUuid& filterId, std::string_view projectId, const RowCells&) {
            return TagUsageGroup{filterId, uuidOf(projectId), 0, {}};
        },
        [](TagUsageGroup&, const RowCells&) {});
}

TagUsageDays tagUsageDays(RecordStore& store, QDate first, QDate last) {
    TagUsageDays days;
    if (last < first) {
        return days;
    }
    days.dayCount = static_cast<int>(first.daysTo(last)) + 1;

    struct Raw {
        StorePosition position;
        std::uint32_t filter;
        std::uint32_t project;
        std::int64_t duration;
    };
    static const std::string sql = rangeSql("TagUsage", "filterId, projectId, duration");
    TextNumbers filters;
    TextNumbers projects;
    std::vector<Raw> rows;
    const DayRange range = localDays(first, last);
    store.read(sql, {range.begin, range.end}, [&](const RowCells& row) {
        rows.push_back({{row.real(3), row.integer(4)},
                        filters.numberOf(row.text(0)),
                        projects.numberOf(row.text(1)),
                        row.integer(2)});
    });
    putInStoreOrder(rows);

    for (std::uint32_t i = 0; i < filters.size(); ++i) {
        days.filterIds.push_back(uuidOf(filters.text(i)));
    }
    for (std::uint32_t i = 0; i < projects.size(); ++i) {
        days.projectIds.push_back(uuidOf(projects.text(i)));
    }
    // Local days differ in length across clock changes, so each day's end is asked for.
    days.entries.reserve(rows.size());
    int day = 0;
    double dayEnd = toEpochSeconds(localDayStart(first.addDays(1)));
    for (const Raw& row : rows) {
        while (row.position.createdAt >= dayEnd) {
            ++day;
            dayEnd = toEpochSeconds(localDayStart(first.addDays(day + 1)));
        }
        days.entries.push_back({day, row.filter, row.project, row.duration, row.position});
    }
    return days;
}

}  // namespace kivo
