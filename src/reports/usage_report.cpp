#include "reports/usage_report.h"

#include <QHash>
#include <QSet>
#include <algorithm>

#include "model/checked_arithmetic.h"
#include "model/fatal.h"
#include "model/local_day.h"
#include "model/record_store.h"
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

// The steps every report shares. `keyOf` gives a record's group, `rowOf` the first row of a
// group, `miscRow` the chart's pool of small groups.
template <class Record, class Row, class KeyOf, class RowOf, class MiscRow>
UsageReport<Row> computeReport(RecordStore& store, const ReportSelection& selection, QDate minDate,
                               QDate maxDate, KeyOf keyOf, RowOf rowOf, MiscRow miscRow) {
    const auto& enabled = selection.enableFilters;
    const QSet<QUuid> counted(enabled.begin(), enabled.end());

    std::vector<Row> rows;
    QHash<decltype(keyOf(std::declval<const Record&>())), std::size_t> rowByKey;
    std::int64_t total = 0;
    for (const auto& record : store.fetch<Record>(liveCreatedWithin(localDays(minDate, maxDate)))) {
        if (!counted.contains(record.filterId)) {
            continue;
        }
        const auto key = keyOf(record);
        const auto found = rowByKey.constFind(key);
        if (found != rowByKey.constEnd()) {
            Row& row = rows[*found];
            row.duration = checkedAdd(row.duration, record.duration);
        } else {
            rowByKey.insert(key, rows.size());
            rows.push_back(rowOf(record));
        }
        total = checkedAdd(total, record.duration);
    }

    UsageReport<Row> report;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(report.tableDataSet),
                 [](const Row& row) { return row.duration != 0; });
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

QString misc() {
    return QStringLiteral("Misc.");
}

}  // namespace

UsageReport<AppDisplayItem> computeApplicationReport(RecordStore& store,
                                                     const ReportSelection& selection,
                                                     QDate minDate, QDate maxDate) {
    return computeReport<AppUsage, AppDisplayItem>(
        store, selection, minDate, maxDate, [](const AppUsage& usage) { return usage.appBundleId; },
        [](const AppUsage& usage) {
            return AppDisplayItem{QUuid::createUuid(), usage.duration, usage.appName,
                                  usage.appBundleId, usage.filterId};
        },
        [](std::int64_t remainder) {
            return AppDisplayItem{QUuid::createUuid(), remainder, misc(), QString(),
                                  QUuid::createUuid()};
        });
}

UsageReport<WebDisplayItem> computeWebsiteReport(RecordStore& store,
                                                 const ReportSelection& selection, QDate minDate,
                                                 QDate maxDate) {
    return computeReport<WebUsage, WebDisplayItem>(
        store, selection, minDate, maxDate, [](const WebUsage& usage) { return usage.domainName; },
        [](const WebUsage& usage) {
            return WebDisplayItem{QUuid::createUuid(), usage.domainName, usage.duration};
        },
        [](std::int64_t remainder) {
            return WebDisplayItem{QUuid::createUuid(), misc(), remainder};
        });
}

UsageReport<TagDisplayItem> computeFilterReport(RecordStore& store,
                                                const ReportSelection& selection, QDate minDate,
                                                QDate maxDate) {
    return computeReport<TagUsage, TagDisplayItem>(
        store, selection, minDate, maxDate, [](const TagUsage& usage) { return usage.filterId; },
        [&selection](const TagUsage& usage) {
            return TagDisplayItem{
                QUuid::createUuid(), usage.duration,
                requiredName(selection.projectNames, usage.projectId,
                             "a counted tag usage names a project that the tree does not hold"),
                requiredName(selection.tagNames, usage.filterId,
                             "a counted tag usage names a tag that the tree does not hold"),
                usage.filterId};
        },
        [](std::int64_t remainder) {
            return TagDisplayItem{QUuid::createUuid(), remainder, misc(), misc(),
                                  QUuid::createUuid()};
        });
}

UsageReport<ProjectDisplayItem> computeProjectReport(RecordStore& store,
                                                     const ReportSelection& selection,
                                                     QDate minDate, QDate maxDate) {
    return computeReport<TagUsage, ProjectDisplayItem>(
        store, selection, minDate, maxDate, [](const TagUsage& usage) { return usage.projectId; },
        [&selection](const TagUsage& usage) {
            return ProjectDisplayItem{
                QUuid::createUuid(), usage.duration,
                requiredName(selection.projectNames, usage.projectId,
                             "a counted tag usage names a project that the tree does not hold"),
                usage.projectId};
        },
        [](std::int64_t remainder) {
            return ProjectDisplayItem{QUuid::createUuid(), remainder, misc(), QUuid::createUuid()};
        });
}

}  // namespace kivo
