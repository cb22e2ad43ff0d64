#include "gui/report_rows.h"

#include "reports/usage_report.h"

namespace kivo {

namespace {

ReportRow rowOf(const AppDisplayItem& item) {
    return {item.id, item.appBundleId, item.appName, {}, item.duration};
}
ReportRow rowOf(const WebDisplayItem& item) {
    return {item.id, item.domainName, item.domainName, {}, item.duration};
}
ReportRow rowOf(const TagDisplayItem& item) {
    return {item.id, item.filterId.toString(QUuid::WithoutBraces), item.tagName, item.projectName,
            item.duration};
}
ReportRow rowOf(const ProjectDisplayItem& item) {
    return {item.id,
            item.projectId.toString(QUuid::WithoutBraces),
            item.projectName,
            {},
            item.duration};
}

template <class Item>
ReportRows rowsOf(const UsageReport<Item>& report) {
    ReportRows rows;
    rows.durationTotal = report.durationTotal;
    rows.table.reserve(report.tableDataSet.size());
    for (const auto& item : report.tableDataSet) {
        rows.table.push_back(rowOf(item));
    }
    for (const auto& item : report.chartDataSet) {
        rows.chart.push_back(rowOf(item));
    }
    return rows;
}

}  // namespace

ReportRows computeReportRows(ReportKind kind, RecordStore& store, const ReportSelection& selection,
                             QDate minDate, QDate maxDate, const LiveActivities& live) {
    switch (kind) {
        case ReportKind::applications:
            return rowsOf(computeApplicationReport(store, selection, minDate, maxDate, live));
        case ReportKind::websites:
            return rowsOf(computeWebsiteReport(store, selection, minDate, maxDate, live));
        case ReportKind::tags:
            return rowsOf(computeFilterReport(store, selection, minDate, maxDate, live));
        case ReportKind::projects:
            return rowsOf(computeProjectReport(store, selection, minDate, maxDate, live));
    }
    return {};
}

QString shownName(ReportKind kind, const ReportRow& row) {
    if (kind == ReportKind::websites && row.name.isEmpty()) {
        return QStringLiteral("(no website)");
    }
    return row.name;
}

}  // namespace kivo
