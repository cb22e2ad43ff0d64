#pragma once

#include <QDate>
#include <QHash>
#include <QSet>
#include <QUuid>
#include <cstdint>
#include <vector>

#include "model/live_activities.h"
#include "reports/bar_chart_data.h"

namespace kivo {

class Productivity;
struct ReportSelection;
class RecordStore;
struct TagUsageDays;

// What a day's productivity is computed from: every filter's rating, deleted filters included,
// since old totals still point at them; and the projects the tree counts (toggled, and not
// archived unless archived projects are shown).
struct ProductivityInputs {
    QHash<QUuid, std::int64_t> ratingByFilter;
    QSet<QUuid> countedProjects;
};

ProductivityInputs productivityInputs(RecordStore& store, const ReportSelection& selection);

struct DayProductivity {
    // The rating-weighted share of the counted time, truncated; 0 when nothing was counted.
    std::int64_t score = 0;
    std::int64_t duration = 0;
};

// A total whose filter has no rating, an overflowing sum or a score out of range stops the program.
DayProductivity dayProductivity(RecordStore& store, const ProductivityInputs& inputs, QDate day);
// Each day from `first` to `last` in order, from one read of the whole range; none when `last` is
// before `first`.
std::vector<DayProductivity> productivityOfDays(RecordStore& store,
                                                const ProductivityInputs& inputs, QDate first,
                                                QDate last);
// The same, one per day of totals already read.
std::vector<DayProductivity> productivityOfDays(const TagUsageDays& days,
                                                const ProductivityInputs& inputs);

// Sets today's score, then today's duration text, with the live activities of today counted as
// their totals would be once written.
void refreshProductivity(Productivity& productivity, RecordStore& store,
                         const ReportSelection& selection, QDate today,
                         const LiveActivities& live = {});

// One bar per day of the `daysAgo` days ending with `today`, oldest first: the label, the score as
// `value` and as `annotation`; the live activities count on the days they started.
std::vector<BarChartData> productivityBars(RecordStore& store, const ReportSelection& selection,
                                           QDate today, int daysAgo,
                                           const LiveActivities& live = {});
// The same with the inputs already read, for a caller that scores other days with them too.
std::vector<BarChartData> productivityBars(RecordStore& store, const ProductivityInputs& inputs,
                                           QDate today, int daysAgo,
                                           const LiveActivities& live = {});

}  // namespace kivo
