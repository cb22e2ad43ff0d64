#include "model/range_totals.h"

#include <QByteArray>
#include <QHash>
#include <algorithm>
#include <string>

#include "model/checked_arithmetic.h"
#include "model/record_store.h"

namespace kivo {

namespace {

// The live totals of a range: the given columns, then the record's place in store order.
std::string rangeSql(const char* kind, const char* columns) {
    return "SELECT " + std::string(columns) + ", createdAt, rowid FROM " + kind +
           " WHERE isDeleted = 0 AND createdAt >= ? AND createdAt < ?";
}

// Dense numbers for the distinct texts of a column, so that a range of totals is grouped without
// making a string for every row.
class TextNumbers {
public:
    std::uint32_t numberOf(std::string_view text) {
        // Neighbouring totals often share a filter: the index orders a moment's totals by it.
        if (!texts_.empty() && text == lastText_) {
            return lastNumber_;
        }
        lastNumber_ = lookUp(text);
        lastText_ = std::string_view(texts_[lastNumber_].constData(),
                                     static_cast<std::size_t>(texts_[lastNumber_].size()));
        return lastNumber_;
    }
    const QByteArray& text(std::uint32_t number) const { return texts_[number]; }
    QUuid uuid(std::uint32_t number) const {
        return QUuid::fromString(QLatin1StringView(text(number)));
    }
    std::size_t size() const { return texts_.size(); }

private:
    std::uint32_t lookUp(std::string_view text) {
        const auto raw = QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
        const auto found = numbers_.constFind(raw);
        if (found != numbers_.constEnd()) {
            return *found;
        }
        const auto number = static_cast<std::uint32_t>(texts_.size());
        texts_.emplace_back(text.data(), static_cast<qsizetype>(text.size()));
        numbers_.insert(texts_.back(), number);
        return number;
    }

    QHash<QByteArray, std::uint32_t> numbers_;
    std::vector<QByteArray> texts_;
    std::string_view lastText_;
    std::uint32_t lastNumber_ = 0;
};

// Sums a range's live totals by filter (column 0) and key (column 1); column 2 is the duration,
// then come the position columns. `make` starts a group from its first row, `rename` takes the
// names of a row that comes earlier in store order.
template <class Group, class Make, class Rename>
std::vector<Group> groupsOf(RecordStore& store, const std::string& sql, const DayRange& range,
                            int positionColumn, Make make, Rename rename) {
    TextNumbers filters;
    TextNumbers keys;
    QHash<quint64, std::size_t> groupOfPair;
    std::vector<Group> groups;
    store.read(sql, {range.begin, range.end}, [&](const RowCells& row) {
        const std::uint32_t filter = filters.numberOf(row.text(0));
        const std::uint32_t key = keys.numberOf(row.text(1));
        const quint64 pair = quint64{filter} << 32 | key;
        const std::int64_t duration = row.integer(2);
        const StorePosition position{row.real(positionColumn), row.integer(positionColumn + 1)};
        const auto found = groupOfPair.constFind(pair);
        if (found == groupOfPair.constEnd()) {
            groupOfPair.insert(pair, groups.size());
            groups.push_back(make(filters.uuid(filter), keys.text(key), row));
            groups.back().duration = duration;
            groups.back().first = position;
            return;
        }
        Group& group = groups[*found];
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

std::vector<AppUsageGroup> appUsageGroups(RecordStore& store, const DayRange& range) {
    static const std::string sql = rangeSql("AppUsage", "filterId, appBundleId, duration, appName");
    return groupsOf<AppUsageGroup>(
        store, sql, range, 4,
        [](const QUuid& filterId, const QByteArray& bundleId, const RowCells& row) {
            const auto name = row.text(3);
            return AppUsageGroup{
                filterId,
                QString::fromUtf8(bundleId),
                QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())),
                0,
                {}};
        },
        [](AppUsageGroup& group, const RowCells& row) {
            const auto name = row.text(3);
            group.appName = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
        });
}

std::vector<WebUsageGroup> webUsageGroups(RecordStore& store, const DayRange& range) {
    static const std::string sql = rangeSql("WebUsage", "filterId, domainName, duration");
    return groupsOf<WebUsageGroup>(
        store, sql, range, 3,
        [](const QUuid& filterId, const QByteArray& domainName, const RowCells&) {
            return WebUsageGroup{filterId, QString::fromUtf8(domainName), 0, {}};
        },
        [](WebUsageGroup&, const RowCells&) {});
}

std::vector<TagUsageGroup> tagUsageGroups(RecordStore& store, const DayRange& range) {
    static const std::string sql = rangeSql("TagUsage", "filterId, projectId, duration");
    return groupsOf<TagUsageGroup>(
        store, sql, range, 3,
        [](const QUuid& filterId, const QByteArray& projectId, const RowCells&) {
            return TagUsageGroup{filterId, QUuid::fromString(QLatin1StringView(projectId)), 0, {}};
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
        days.filterIds.push_back(filters.uuid(i));
    }
    for (std::uint32_t i = 0; i < projects.size(); ++i) {
        days.projectIds.push_back(projects.uuid(i));
    }
    // Local days differ in length across clock changes, so each day's end is asked for.
    days.entries.reserve(rows.size());
    int day = 0;
    double dayEnd = toEpochSeconds(localDay(first).end);
    for (const Raw& row : rows) {
        while (row.position.createdAt >= dayEnd) {
            ++day;
            dayEnd = toEpochSeconds(localDay(first.addDays(day)).end);
        }
        days.entries.push_back({day, row.filter, row.project, row.duration});
    }
    return days;
}

}  // namespace kivo
