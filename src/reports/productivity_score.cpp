#include "reports/productivity_score.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "model/checked_arithmetic.h"
#include "model/day_score_sums.h"
#include "model/fatal.h"
#include "model/local_day.h"
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

namespace {

// The score that adding the day's totals one by one in double precision gives, told from exact
// sums where that is certain: when the exact share lies farther from a whole percent than the
// rounding of those additions can reach. Otherwise (a share of exactly 40 %, say, which the
// additions may land just below) nothing: the totals decide.
std::optional<DayProductivity> scoreOfSums(const DayScoreSums& sums) {
    if (!sums.isKnown || sums.duration < 0) {
        return std::nullopt;
    }
    if (sums.duration == 0) {
        return DayProductivity{0, 0};
    }
    const std::int64_t total = sums.duration;
    std::int64_t below = sums.ratedDuration / total;  // rounded toward zero
    std::int64_t remainder = sums.ratedDuration % total;
    if (remainder < 0) {
        below -= 1;
        remainder += total;
    }
    if (remainder == 0) {
        return std::nullopt;
    }
    const double t = static_cast<double>(total);
    const double distance = static_cast<double>(std::min(remainder, total - remainder)) / t;
    // Each addition, the division and the product round by at most 2^-53 of their size; eight
    // times that, for every total and a few more operations, leaves a wide margin.
    const double share = static_cast<double>(sums.ratedDuration) / t;
    const double reach = static_cast<double>(sums.members + 4) * std::ldexp(1.0, -50) *
                         (static_cast<double>(sums.absRated) / t + std::abs(share) + 1.0);
    if (!(distance > reach)) {
        return std::nullopt;
    }
    return DayProductivity{sums.ratedDuration >= 0 ? below : below + 1, total};
}

}  // namespace

std::vector<DayProductivity> productivityOfDays(RecordStore& store,
                                                const ProductivityInputs& inputs, QDate first,
                                                QDate last) {
    const auto sums =
        dayScoreSums(store, first, last, inputs.countedProjects, inputs.ratingByFilter);
    if (sums.empty()) {
        return productivityOfDays(tagUsageDays(store, first, last), inputs);
    }
    std::vector<DayProductivity> scores(sums.size());
    std::vector<bool> isTold(sums.size());
    for (std::size_t day = 0; day < sums.size(); ++day) {
        const auto score = scoreOfSums(sums[day]);
        isTold[day] = score.has_value();
        scores[day] = score.value_or(DayProductivity{});
    }
    // The days the sums cannot tell, a run of them at a time, from their totals.
    for (std::size_t begin = 0; begin < sums.size();) {
        if (isTold[begin]) {
            ++begin;
            continue;
        }
        std::size_t end = begin;
        while (end < sums.size() && !isTold[end]) {
            ++end;
        }
        const auto told =
            productivityOfDays(tagUsageDays(store, first.addDays(static_cast<qint64>(begin)),
                                            first.addDays(static_cast<qint64>(end - 1))),
                               inputs);
        std::copy(told.begin(), told.end(), scores.begin() + static_cast<std::ptrdiff_t>(begin));
        begin = end;
    }
    return scores;
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

namespace {

bool hasLiveOn(const LiveActivities& live, QDate day) {
    return std::any_of(
        live.activities.begin(), live.activities.end(),
        [day](const Activity& activity) { return localDateOf(activity.startAt) == day; });
}

// The day's totals one by one, the live ones after the stored, as the day will be scored once
// they are written.
DayProductivity dayProductivityWithLive(RecordStore& store, const ProductivityInputs& inputs,
                                        QDate day, const LiveActivities& live) {
    TagUsageDays days = tagUsageDays(store, day, day);
    addLiveActivities(days, live, day);
    return productivityOfDays(days, inputs).front();
}

}  // namespace

void refreshProductivity(Productivity& productivity, RecordStore& store,
                         const ReportSelection& selection, QDate today,
                         const LiveActivities& live) {
    const ProductivityInputs inputs = productivityInputs(store, selection);
    const DayProductivity result = hasLiveOn(live, today)
                                       ? dayProductivityWithLive(store, inputs, today, live)
                                       : dayProductivity(store, inputs, today);
    productivity.setValue(result.score);
    productivity.setDurationToday(formatDurationLabel(result.duration));
}

std::vector<BarChartData> productivityBars(RecordStore& store, const ReportSelection& selection,
                                           QDate today, int daysAgo, const LiveActivities& live) {
    return productivityBars(store, productivityInputs(store, selection), today, daysAgo, live);
}

std::vector<BarChartData> productivityBars(RecordStore& store, const ProductivityInputs& inputs,
                                           QDate today, int daysAgo, const LiveActivities& live) {
    const auto days = chartDays(today, daysAgo);
    std::vector<BarChartData> bars;
    if (days.empty()) {
        return bars;
    }
    auto scores = productivityOfDays(store, inputs, days.front(), days.back());
    for (std::size_t i = 0; i < days.size(); ++i) {
        if (hasLiveOn(live, days[i])) {
            scores[i] = dayProductivityWithLive(store, inputs, days[i], live);
        }
    }
    bars.reserve(days.size());
    for (std::size_t i = 0; i < days.size(); ++i) {
        const std::int64_t score = scores[i].score;
        bars.push_back(
            {QUuid::createUuid(), dayLabel(days[i]), static_cast<double>(score), score, QString()});
    }
    return bars;
}

}  // namespace kivo
