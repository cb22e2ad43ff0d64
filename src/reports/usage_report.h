#pragma once

#include <QDate>
#include <cstdint>
#include <vector>

#include "model/live_activities.h"
#include "model/range_totals.h"
#include "reports/display_items.h"

namespace kivo {

struct ReportSelection;
class RecordStore;

// What one report view shows for a range of days. The table lists every group with time; the
// chart lists the groups above 3 percent and pools the rest into one "Misc." row, which it
// leaves out when the pool is 0.05 percent or less. Both are sorted largest first; rows of equal
// duration keep the order in which their groups first appeared.
template <class Row>
struct UsageReport {
    std::vector<Row> tableDataSet;
    std::vector<Row> chartDataSet;
    // The counted seconds, or 1 when there are none, so that shares can always be taken.
    std::int64_t durationTotal = 1;
};

// Only records of the filters the tree counts (`enableFilters`) take part. The first record of a
// group, in the store's order, names it. The live activities of the range add in as their totals
// would once written.
UsageReport<AppDisplayItem> computeApplicationReport(RecordStore& store,
                                                     const ReportSelection& selection,
                                                     QDate minDate, QDate maxDate,
                                                     const LiveActivities& live = {});
UsageReport<WebDisplayItem> computeWebsiteReport(RecordStore& store,
                                                 const ReportSelection& selection, QDate minDate,
                                                 QDate maxDate, const LiveActivities& live = {});
// Projects and tags are named by the tree; a counted record whose project or filter the tree
// cannot name stops the program.
UsageReport<TagDisplayItem> computeFilterReport(RecordStore& store,
                                                const ReportSelection& selection, QDate minDate,
                                                QDate maxDate, const LiveActivities& live = {});
UsageReport<ProjectDisplayItem> computeProjectReport(RecordStore& store,
                                                     const ReportSelection& selection,
                                                     QDate minDate, QDate maxDate,
                                                     const LiveActivities& live = {});
// The same two from the range's tag usage already read for the tree (which counts every filter
// the selection counts, and more): one reading serves the tree and both reports.
UsageReport<TagDisplayItem> computeFilterReportFromTree(
    const std::vector<TagUsageGroup>& treeGroups, const ReportSelection& selection);
UsageReport<ProjectDisplayItem> computeProjectReportFromTree(
    const std::vector<TagUsageGroup>& treeGroups, const ReportSelection& selection);

}  // namespace kivo
