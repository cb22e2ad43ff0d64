#pragma once

#include <QDate>
#include <QHash>
#include <QString>
#include <cstdint>
#include <vector>

#include "model/live_activities.h"
#include "reports/bar_chart_data.h"

namespace kivo {

struct ReportSelection;
class RecordStore;

// Stacked daily bars of the counted projects' hours.
struct ProjectBarChart {
    // Per day, oldest first, one segment per counted project in tree order (also when it has no
    // time); the day's last segment carries the day's total seconds as its annotation.
    std::vector<BarChartData> dataSet;
    // Total seconds by day label; of two days with the same label the later one wins.
    QHash<QString, std::int64_t> durationPerDay;
    // The largest day total, in whole hours.
    std::int64_t durationPeriodMaxHour = 0;
};

// Only filters that are toggled and counted by the tree (`enableFilters`) add time; the live
// activities add to the days they started.
ProjectBarChart computeProjectBarChart(RecordStore& store, const ReportSelection& selection,
                                       QDate today, int daysAgo, const LiveActivities& live = {});

}  // namespace kivo
