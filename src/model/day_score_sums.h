#pragma once

#include <QDate>
#include <QHash>
#include <QSet>
#include <QUuid>
#include <cstdint>
#include <vector>

namespace kivo {

class RecordStore;

// A local day's tag totals of the counted projects, summed from the score summary: exact
// integers, so that a score can be told without adding the totals one by one.
struct DayScoreSums {
    // False when the summary cannot tell this day exactly (a midnight off the quarter hours, a sum
    // beyond exact doubles, a total whose filter has no rating): its totals must be read instead.
    bool isKnown = false;
    std::int64_t duration = 0;
    std::int64_t ratedDuration = 0;  // the sum of duration × rating (a percentage)
    std::int64_t absRated = 0;       // the sum of |duration × rating|
    std::int64_t members = 0;        // how many totals
};

// One per day from `first` to `last`; empty when the summary cannot be read at all: the store has
// none that is current, or it was made with other ratings than `ratingByFilter`.
std::vector<DayScoreSums> dayScoreSums(RecordStore& store, QDate first, QDate last,
                                       const QSet<QUuid>& countedProjects,
                                       const QHash<QUuid, std::int64_t>& ratingByFilter);

}  // namespace kivo
