#include "reports/project_bar_chart.h"

#include <QSet>
#include <QUuid>

#include "model/checked_arithmetic.h"
#include "model/range_totals.h"
#include "reports/chart_days.h"
#include "tree/report_selection.h"

namespace kivo {

namespace {

// The seconds of each counted filter on each day of the chart, from one read of the whole period;
// the totals of other filters add to no sum.
class DailyFilterDurations {
public:
    DailyFilterDurations(RecordStore& store, const std::vector<QDate>& days,
                         const QSet<QUuid>& counted, const LiveActivities& live) {
        if (days.empty()) {
            return;
        }
        TagUsageDays totals = tagUsageDays(store, days.front(), days.back());
        addLiveActivities(totals, live, days.front());
        filterCount_ = totals.filterIds.size();
        for (std::size_t i = 0; i < filterCount_; ++i) {
            filterNumbers_.insert(totals.filterIds[i], i);
        }
        durations_.assign(static_cast<std::size_t>(totals.dayCount) * filterCount_, 0);
        std::vector<bool> isCounted;
        for (const auto& filterId : totals.filterIds) {
            isCounted.push_back(counted.contains(filterId));
        }
        for (const auto& entry : totals.entries) {
            if (!isCounted[entry.filter]) {
                continue;
            }
            auto& sum =
                durations_[static_cast<std::size_t>(entry.day) * filterCount_ + entry.filter];
            sum = checkedAdd(sum, entry.duration);
        }
    }

    std::int64_t on(std::size_t day, const QUuid& filterId) const {
        const auto number = filterNumbers_.constFind(filterId);
        return number == filterNumbers_.constEnd() ? 0 : durations_[day * filterCount_ + *number];
    }

private:
    std::size_t filterCount_ = 0;
    QHash<QUuid, std::size_t> filterNumbers_;
    std::vector<std::int64_t> durations_;
};

}  // namespace

ProjectBarChart computeProjectBarChart(RecordStore& store, const ReportSelection& selection,
                                       QDate today, int daysAgo, const LiveActivities& live) {
    const auto& enabled = selection.enableFilters;
    const QSet<QUuid> counted(enabled.begin(), enabled.end());
    ProjectBarChart chart;
    std::int64_t periodMaximum = 0;
    const auto days = chartDays(today, daysAgo);
    const DailyFilterDurations durations(store, days, counted, live);
    for (std::size_t day = 0; day < days.size(); ++day) {
        const QString label = dayLabel(days[day]);
        std::int64_t dayTotal = 0;
        bool hasSegment = false;
        for (const auto& project : selection.projects) {
            if (!selection.isShowArchivedProject && project.isArchived) {
                continue;
            }
            std::int64_t projectSum = 0;
            for (const auto& filter : project.filters) {
                if (filter.isToggled && counted.contains(filter.id)) {
                    const std::int64_t duration = durations.on(day, filter.id);
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
