#include "model/day_score_sums.h"

#include <cmath>
#include <string>
#include <string_view>

#include "model/local_day.h"
#include "model/record_store.h"
#include "model/score_summary.h"
#include "model/text_numbers.h"

namespace kivo {

namespace {

// Below this, every sum and every product in a day's score is an exact double.
constexpr std::int64_t exactLimit = std::int64_t{1} << 53;

// Whether the sums were made with the ratings the scores are computed with: the same filters, by
// text as the triggers look them up and by id as the scores do.
bool madeWithRatings(RecordStore& store, const QHash<QUuid, std::int64_t>& ratingByFilter) {
    static const std::string differing =
        "SELECT COUNT(*) FROM (" + score_summary::ratedOtherwiseSql() + ")";
    static const std::string held =
        std::string("SELECT filterId, rating FROM ") + score_summary::ratingsTable;
    bool isSame = true;
    store.read(differing, {}, [&](const RowCells& row) { isSame = row.integer(0) == 0; });
    if (!isSame) {
        return false;
    }
    store.read(held, {}, [&](const RowCells& row) {
        const auto rating = ratingByFilter.constFind(uuidOf(row.text(0)));
        isSame = isSame && rating != ratingByFilter.constEnd() && *rating == row.integer(1);
    });
    return isSame;
}

// Adds while the sum stays exact; says false once it does not.
bool addExactly(std::int64_t& sum, std::int64_t value) {
    if (value <= -exactLimit || value >= exactLimit) {
        return false;
    }
    sum += value;
    return sum > -exactLimit && sum < exactLimit;
}

struct DayQuarters {
    std::int64_t first = 0;  // the quarters [first, end)
    std::int64_t end = 0;
    bool isWhole = false;  // the day begins and ends on a quarter hour, after the epoch
};

DayQuarters quartersOf(double begin, double end) {
    constexpr double quarter = score_summary::quarterSeconds;
    DayQuarters quarters{static_cast<std::int64_t>(std::floor(begin / quarter)),
                         static_cast<std::int64_t>(std::ceil(end / quarter)), false};
    quarters.isWhole = begin >= 0 && begin < end && end < 1e15 && std::fmod(begin, quarter) == 0 &&
                       std::fmod(end, quarter) == 0;
    return quarters;
}

}  // namespace

std::vector<DayScoreSums> dayScoreSums(RecordStore& store, QDate first, QDate last,
                                       const QSet<QUuid>& countedProjects,
                                       const QHash<QUuid, std::int64_t>& ratingByFilter) {
    if (last < first || !store.hasUsageSummaries() || !madeWithRatings(store, ratingByFilter)) {
        return {};
    }
    std::vector<DayQuarters> quarters;
    std::vector<DayScoreSums> days;
    std::vector<std::int64_t> absDurations;
    // Each day ends where the next begins; asking the calendar once per day halves its cost.
    double begin = toEpochSeconds(localDayStart(first));
    for (QDate date = first; date <= last; date = date.addDays(1)) {
        const double end = toEpochSeconds(localDayStart(date.addDays(1)));
        quarters.push_back(quartersOf(begin, end));
        days.push_back({quarters.back().isWhole, 0, 0, 0, 0});
        absDurations.push_back(0);
        begin = end;
    }

    static const std::string sql =
        std::string(
            "SELECT quarter, projectId, duration, ratedDuration, absDuration, absRated, "
            "members, unrated FROM ") +
        score_summary::sumsTable + " WHERE quarter >= ? AND quarter < ? ORDER BY quarter";
    TextNumbers projects;
    std::vector<bool> isCounted;  // by project number, decided once per project
    std::size_t day = 0;
    store.read(sql, {quarters.front().first, quarters.back().end}, [&](const RowCells& row) {
        const std::int64_t quarter = row.integer(0);
        while (day < days.size() && quarter >= quarters[day].end) {
            ++day;
        }
        if (day == days.size() || quarter < quarters[day].first || !days[day].isKnown) {
            return;
        }
        const std::uint32_t project = projects.numberOf(row.text(1));
        if (project == isCounted.size()) {
            isCounted.push_back(countedProjects.contains(uuidOf(projects.text(project))));
        }
        if (!isCounted[project]) {
            return;
        }
        DayScoreSums& sums = days[day];
        // A hand-edited sum that is not an integer cannot be told exactly.
        const bool areIntegers =
            row.isInteger(2) && row.isInteger(3) && row.isInteger(4) && row.isInteger(5);
        sums.isKnown =
            areIntegers && row.integer(7) == 0 && addExactly(sums.duration, row.integer(2)) &&
            addExactly(sums.ratedDuration, row.integer(3)) &&
            addExactly(absDurations[day], row.integer(4)) &&
            addExactly(sums.absRated, row.integer(5)) && addExactly(sums.members, row.integer(6));
    });
    return days;
}

}  // namespace kivo
