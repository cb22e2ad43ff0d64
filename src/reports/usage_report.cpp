#include "reports/usage_report.h"

#include <QHash>
#include <QSet>
#include <algorithm>
#include <iterator>

#include "model/checked_arithmetic.h"
#include "model/fatal.h"
#include "model/local_day.h"
#include "model/range_totals.h"
#include "reports/percentage.h"
#include "tree/report_selection.h"

namespace kivo {

namespace {

constexpr double chartItemMinimumPercent = 3.0;
constexpr double miscMinimumPercent = 0.05;

const QString& requiredName(const QHash<QUuid, QString>& names, const QUuid& id,
                            const char* fault) {
    const auto found = names.constFind(id);
    if (found == names.constEnd()) {
        fatal(fault);
    }
    return *found;
}

template <class Row>
void sortLargestFirst(std::vector<Row>& rows) {
    std::stable_sort(rows.begin(), rows.end(),
                     [](const Row& a, const Row& b) { return a.duration > b.duration; });
}

// The steps every report shares, over the range's totals already summed per filter and key.
// `keyOf` gives a group's row key, `rowOf` the row that the first group of a key starts,
// `miscRow` the chart's pool of small groups.
template <class Row, class Group, class KeyOf, class RowOf, class MiscRow>
UsageReport<Row> computeReport(const std::vector<Group>& groups, KeyOf keyOf, RowOf rowOf,
                               MiscRow miscRow) {
    // A row stands where its earliest counted total stands in store order, and that total names
    // it, as if the totals were read one by one.
    struct Merged {
        const Group* first;
        std::int64_t duration;
    };
    std::vector<Merged> merged;
    QHash<decltype(keyOf(std::declval<const Group&>())), std::size_t> mergedByKey;
    std::int64_t total = 0;
    for (const auto& group : groups) {
        const auto key = keyOf(group);
        const auto found = mergedByKey.constFind(key);
        if (found != mergedByKey.constEnd()) {
            Merged& row = merged[*found];
            row.duration = checkedAdd(row.duration, group.duration);
            if (group.first < row.first->first) {
                row.first = &group;
            }
        } else {
            mergedByKey.insert(key, merged.size());
            merged.push_back({&group, group.duration});
        }
        total = checkedAdd(total, group.duration);
    }
    std::sort(merged.begin(), merged.end(),
              [](const Merged& a, const Merged& b) { return a.first->first < b.first->first; });

    UsageReport<Row> report;
    for (const auto& each : merged) {
        // Made also for a row that is then dropped: its names must be known all the same.
        Row row = rowOf(*each.first);
        row.duration = each.duration;
        if (row.duration != 0) {
            report.tableDataSet.push_back(std::move(row));
        }
    }
    report.durationTotal = total == 0 ? 1 : total;

    std::int64_t remainder = 0;
    for (const auto& row : report.tableDataSet) {
        if (sharePercent(row.duration, report.durationTotal) > chartItemMinimumPercent) {
            report.chartDataSet.push_back(row);
        } else {
            remainder = checkedAdd(remainder, row.duration);
        }
    }
    if (sharePercent(remainder, report.durationTotal) > miscMinimumPercent) {
        report.chartDataSet.push_back(miscRow(remainder));
    }
    sortLargestFirst(report.tableDataSet);
    sortLargestFirst(report.chartDataSet);
    return report;
}

QSet<QUuid> countedFilters(const ReportSelection& selection) {
    return QSet<QUuid>(selection.enableFilters.begin(), selection.enableFilters.end());
}

QString misc() {
    return QStringLiteral("Misc.");
}

UsageReport<TagDisplayItem> filterReport(const std::vector<TagUsageGroup>& groups,
                                         const ReportSelection& selection) {
    return computeReport<TagDisplayItem>(
        groups, [](const TagUsageGroup& group) { return group.filterId; },
        [&selection](const TagUsageGroup& group) {
            return TagDisplayItem{
                QUuid::createUuid(), 0,
                requiredName(selection.projectNames, group.projectId,
                             "a counted tag usage names a project that the tree does not hold"),
                requiredName(selection.tagNames, group.filterId,
                             "a counted tag usage names a tag that the tree does not hold"),
                group.filterId};
        },
        [](std::int64_t remainder) {
            return TagDisplayItem{QUuid::createUuid(), remainder, misc(), misc(),
                                  QUuid::createUuid()};
        });
}

UsageReport<ProjectDisplayItem> projectReport(const std::vector<TagUsageGroup>& groups,
                                              const ReportSelection& selection) {
    return computeReport<ProjectDisplayItem>(
        groups, [](const TagUsageGroup& group) { return group.projectId; },
        [&selection](const TagUsageGroup& group) {
            return ProjectDisplayItem{
                QUuid::createUuid(), 0,
                requiredName(selection.projectNames, group.projectId,
                             "a counted tag usage names a project that the tree does not hold"),
                group.projectId};
        },
        [](std::int64_t remainder) {
            return ProjectDisplayItem{QUuid::createUuid(), remainder, misc(), QUuid::createUuid()};
        });
}

// Dropping the groups of uncounted filters leaves the others in the order they were first seen.
std::vector<TagUsageGroup> countedGroups(const std::vector<TagUsageGroup>& groups,
                                         const ReportSelection& selection) {
    const QSet<QUuid> counted = countedFilters(selection);
    std::vector<TagUsageGroup> kept;
    std::copy_if(
        groups.begin(), groups.end(), std::back_inserter(kept),
        [&counted](const TagUsageGroup& group) { return counted.contains(group.filterId); });
    return kept;
}

// The range's stored groups of the counted filters, then the live activities added to them.
template <class Group>
std::vector<Group> groupsWithLive(std::vector<Group> (*read)(RecordStore&, const DayRange&,
                                                             const QSet<QUuid>&),
                                  RecordStore& store, const ReportSelection& selection,
                                  QDate minDate, QDate maxDate, const LiveActivities& live) {
    const DayRange range = localDays(minDate, maxDate);
    const QSet<QUuid> counted = countedFilters(selection);
    auto groups = read(store, range, counted);
    addLiveActivities(groups, live, range, counted);
    return groups;
}

}  // namespace

UsageReport<AppDisplayItem> computeApplicationReport(RecordStore& store,
                                                     const ReportSelection& selection,
                                                     QDate minDate, QDate maxDate,
                                                     const LiveActivities& live) {
    return computeReport<AppDisplayItem>(
        groupsWithLive(appUsageGroups, store, selection, minDate, maxDate, live),
        [](const AppUsageGroup& group) { return group.appBundleId; },
        [](const AppUsageGroup& group) {
            return AppDisplayItem{QUuid::createUuid(), 0, group.appName, group.appBundleId,
                                  group.filterId};
        },
        [](std::int64_t remainder) {
            return AppDisplayItem{QUuid::createUuid(), remainder, misc(), QString(),
                                  QUuid::createUuid()};
        });
}

UsageReport<WebDisplayItem> computeWebsiteReport(RecordStore& store,
                                                 const ReportSelection& selection, QDate minDate,
                                                 QDate maxDate, const LiveActivities& live) {
    return computeReport<WebDisplayItem>(
        groupsWithLive(webUsageGroups, store, selection, minDate, maxDate, live),
        [](const WebUsageGroup& group) { return group.domainName; },
        [](const WebUsageGroup& group) {
            return WebDisplayItem{QUuid::createUuid(), group.domainName, 0};
        },
        [](std::int64_t remainder) {
            return WebDisplayItem{QUuid::createUuid(), misc(), remainder};
        });
}

UsageReport<TagDisplayItem> computeFilterReport(RecordStore& store,
                                                const ReportSelection& selection, QDate minDate,
                                                QDate maxDate, const LiveActivities& live) {
    return filterReport(groupsWithLive(tagUsageGroups, store, selection, minDate, maxDate, live),
                        selection);
}

UsageReport<ProjectDisplayItem> computeProjectReport(RecordStore& store,
                                                     const ReportSelection& selection,
                                                     QDate minDate, QDate maxDate,
                                                     const LiveActivities& live) {
    return projectReport(groupsWithLive(tagUsageGroups, store, selection, minDate, maxDate, live),
                         selection);
}

UsageReport<TagDisplayItem> computeFilterReportFromTree(
    const std::vector<TagUsageGroup>& treeGroups, const ReportSelection& selection) {
    return filterReport(countedGroups(treeGroups, selection), selection);
}

UsageReport<ProjectDisplayItem> computeProjectReportFromTree(
    const std::vector<TagUsageGroup>& treeGroups, const ReportSelection& selection) {
    return projectReport(countedGroups(treeGroups, selection), selection);
}

}  // namespace kivo
