#include "reports/productivity_score.h"

#include "model/checked_arithmetic.h"
#include "model/fatal.h"
#include "model/range_totals.h"
#include "model/record_store.h"
#include "reports/chart_days.h"
#include "reports/percentage.h"
#include "reports/productivity.h"
#include "tree/duration_label.h"
#include "tree/report_selection.h"

namespace kivo {

ProductivityInputs productivityInputs(RecordStore& store, const ReportSelection& selection) {
    ProductivityInputs inputs;
    for (const auto& filter : store.fetch<Filter>()) {
        inputs.ratingByFilter.insert(filter.id, filter.rating);
    }
    for (const auto& project : selection.projects) {
        if (project.isToggled && (selection.isShowArchivedProject || !project.isArchived)) {
            inputs.countedProjects.insert(project.id);
        }
    }
    return inputs;
}

DayProductivity dayProductivity(RecordStore& store, const ProductivityInputs& inputs, QDate day) {
    return productivityOfDays(store, inputs, day, day).front();
}

std::vector<DayProductivity> productivityOfDays(RecordStore& store,
                                                const ProductivityInputs& inputs, QDate first,
                                                QDate last) {
    return productivityOfDays(tagUsageDays(store, first, last), inputs);
}

std::vector<DayProductivity> productivityOfDays(const TagUsageDays& days,
                                                const ProductivityInputs& inputs) {
    std::vector<bool> isProjectCounted;
    for (const auto& projectId : days.projectIds) {
        isProjectCounted.push_back(inputs.countedProjects.contains(projectId));
    }
    // Looked up once per filter; a missing rating only matters for a counted total.
    std::vector<const std::int64_t*> ratingOfFilter;
    for (const auto& filterId : days.filterIds) {
        const auto rating = inputs.ratingByFilter.constFind(filterId);
        ratingOfFilter.push_back(rating == inputs.ratingByFilter.constEnd() ? nullptr : &*rating);
    }

    const auto dayCount = static_cast<std::size_t>(days.dayCount);
    std::vector<std::int64_t> totals(dayCount, 0);
    std::vector<double> weighted(dayCount, 0.0);
    // One total after the other in store order, so that the weighted sums round as they always
    // have.
    for (const auto& entry : days.entries) {
        if (!isProjectCounted[entry.project]) {
            continue;
        }
        const std::int64_t* rating = ratingOfFilter[entry.filter];
        if (rating == nullptr) {
            fatal("a tag usage names a filter that has no rating");
        }
        const auto day = static_cast<std::size_t>(entry.day);
        totals[day] = checkedAdd(totals[day], entry.duration);
        weighted[day] += static_cast<double>(entry.duration) * static_cast<double>(*rating) / 100.0;
    }

    std::vector<DayProductivity> scores;
    scores.reserve(dayCount);
    for (std::size_t day = 0; day < dayCount; ++day) {
        if (totals[day] == 0) {
            scores.push_back({0, 0});
        } else {
            scores.push_back(
                {truncatedPercent(weighted[day] / static_cast<double>(totals[day]) * 100.0),
                 totals[day]});
        }
    }
    return scores;
}

void refreshProductivity(Productivity& productivity, RecordStore& store,
                         const ReportSelection& selection, QDate today) {
    const DayProductivity result =
        dayProductivity(store, productivityInputs(store, selection), today);
    productivity.setValue(result.score);
    productivity.setDurationToday(formatDurationLabel(result.duration));
}

std::vector<BarChartData> productivityBars(RecordStore& store, const ReportSelection& selection,
                                           QDate today, int daysAgo) {
    const auto days = chartDays(today, daysAgo);
    std::vector<BarChartData> bars;
    if (days.empty()) {
        return bars;
    }
    const auto scores =
        productivityOfDays(store, productivityInputs(store, selection), days.front(), days.back());
    bars.reserve(days.size());
    for (std::size_t i = 0; i < days.size(); ++i) {
        const std::int64_t score = scores[i].score;
        bars.push_back(
            {QUuid::createUuid(), dayLabel(days[i]), static_cast<double>(score), score, QString()});
    }
    return bars;
}

}  // namespace kivo
