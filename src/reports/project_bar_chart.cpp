#include "reports/project_bar_chart.h"

#include <QSet>
#include <QUuid>

#include "model/checked_arithmetic.h"
#include "model/local_day.h"
#include "model/record_store.h"
#include "reports/chart_days.h"
#include "tree/report_selection.h"

namespace kivo {

namespace {

// The day's seconds of each counted filter; the records of other filters add to no sum.
QHash<QUuid, std::int64_t> durationByFilterOn(RecordStore& store, QDate day,
                                              const QSet<QUuid>& counted) {
    QHash<QUuid, std::int64_t> durations;
    for (const auto& usage : store.fetch<TagUsage>(liveCreatedWithin(localDay(day)))) {
        if (!counted.contains(usage.filterId)) {
            continue;
        }
        auto& sum = durations[usage.filterId];
        sum = checkedAdd(sum, usage.duration);
    }
    return durations;
}

}  // namespace

ProjectBarChart computeProjectBarChart(RecordStore& store, const ReportSelection& selection,
                                       QDate today, int daysAgo) {
    const auto& enabled = selection.enableFilters;
    const QSet<QUuid> counted(enabled.begin(), enabled.end());
    ProjectBarChart chart;
    std::int64_t periodMaximum = 0;
    for (const QDate day : chartDays(today, daysAgo)) {
        const QString label = dayLabel(day);
        const auto durationByFilter = durationByFilterOn(store, day, counted);
        std::int64_t dayTotal = 0;
        bool hasSegment = false;
        for (const auto& project : selection.projects) {
            if (!selection.isShowArchivedProject && project.isArchived) {
                continue;
            }
            std::int64_t projectSum = 0;
            for (const auto& filter : project.filters) {
                if (filter.isToggled && counted.contains(filter.id)) {
                    const std::int64_t duration = durationByFilter.value(filter.id);
                    projectSum = checkedAdd(projectSum, duration);
                    dayTotal = checkedAdd(dayTotal, duration);
                }
            }
            chart.dataSet.push_back({QUuid::createUuid(), label,
                                     static_cast<double>(projectSum) / 3600.0, 0, project.name});
            hasSegment = true;
        }
        if (hasSegment) {
            chart.dataSet.back().annotation = dayTotal;
        }
        chart.durationPerDay.insert(label, dayTotal);
        if (dayTotal >= periodMaximum) {
            periodMaximum = dayTotal;
        }
    }
    chart.durationPeriodMaxHour = wholeSeconds(static_cast<double>(periodMaximum) / 3600.0);
    return chart;
}

}  // namespace kivo
