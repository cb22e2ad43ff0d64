#include "reports/productivity_score.h"

#include "model/checked_arithmetic.h"
#include "model/fatal.h"
#include "model/local_day.h"
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
    std::int64_t total = 0;
    double weighted = 0.0;
    for (const auto& usage : store.fetch<TagUsage>(liveCreatedWithin(localDay(day)))) {
        if (!inputs.countedProjects.contains(usage.projectId)) {
            continue;
        }
        const auto rating = inputs.ratingByFilter.constFind(usage.filterId);
        if (rating == inputs.ratingByFilter.constEnd()) {
            fatal("a tag usage names a filter that has no rating");
        }
        total = checkedAdd(total, usage.duration);
        weighted += static_cast<double>(usage.duration) * static_cast<double>(*rating) / 100.0;
    }
    if (total == 0) {
        return {0, 0};
    }
    return {truncatedPercent(weighted / static_cast<double>(total) * 100.0), total};
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
    const ProductivityInputs inputs = productivityInputs(store, selection);
    std::vector<BarChartData> bars;
    bars.reserve(days.size());
    for (const QDate day : days) {
        const std::int64_t score = dayProductivity(store, inputs, day).score;
        bars.push_back(
            {QUuid::createUuid(), dayLabel(day), static_cast<double>(score), score, QString()});
    }
    return bars;
}

}  // namespace kivo
