#pragma once

#include <QDate>
#include <QString>
#include <cstdint>
#include <vector>

#include "reports/bar_chart_data.h"
#include "reports/project_bar_chart.h"
#include "reports/usage_report.h"
#include "tree/tree_items.h"

namespace kivo {

class ApplicationSettings;
class Clock;
class RecordStore;
struct ReportArguments;

// The sidebar tree as the main window would show it for the range.
struct TreeSnapshot {
    RootTreeItem root;
    std::int64_t durationTotal = 0;
    bool isShowArchivedProject = false;
    std::vector<ProjectTreeItem> projects;
    std::vector<QUuid> enableFilters;
};

struct DayScore {
    QDate date;
    std::int64_t score = 0;
    std::int64_t duration = 0;
};

// Everything `kivo report` prints, computed once and then written as text or JSON.
struct ReportContents {
    QDate from;
    QDate to;
    QDate today;
    int days = 0;
    TreeSnapshot tree;
    UsageReport<AppDisplayItem> applications;
    UsageReport<WebDisplayItem> websites;
    UsageReport<TagDisplayItem> tags;
    UsageReport<ProjectDisplayItem> projects;
    std::vector<DayScore> dayScores;  // each day of the range
    std::vector<BarChartData> productivityBars;
    ProjectBarChart projectBars;
};

// Restores the tree as the main window does on start (the saved layout and selection, or a tree
// built from the records) and computes every report from the store. Writes nothing.
ReportContents collectReport(RecordStore& store, ApplicationSettings& settings, const Clock& clock,
                             const ReportArguments& arguments);

}  // namespace kivo
