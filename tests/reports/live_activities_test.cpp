// The open captures shown before they are written: every report must count them exactly as it
// will count their records once written, and nothing more.
#include "model/live_activities.h"

#include <gtest/gtest.h>

#include "capture/daily_totals.h"
#include "reports/activity_list.h"
#include "reports/productivity.h"
#include "reports/productivity_score.h"
#include "reports/usage_report.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::localMoment;

Activity activityOf(const Filter& filter, const QString& bundleId, const QString& domain,
                    std::int64_t duration, Instant startAt, Instant now) {
    auto activity = newRecord<Activity>(now);
    activity.projectId = filter.projectId;
    activity.filterId = filter.id;
    activity.appName = bundleId + u" app"_qs;
    activity.appBundleId = bundleId;
    activity.title = bundleId + u" window"_qs;
    activity.url = domain.isEmpty() ? QString() : u"https://"_qs + domain + u"/"_qs;
    activity.domainName = domain;
    activity.duration = duration;
    activity.startAt = startAt;
    activity.endAt = startAt + Seconds(duration);
    return activity;
}

QString nameOf(const AppDisplayItem& row) {
    return row.appName;
}
QString nameOf(const WebDisplayItem& row) {
    return row.domainName;
}
QString nameOf(const TagDisplayItem& row) {
    return row.tagName;
}
QString nameOf(const ProjectDisplayItem& row) {
    return row.projectName;
}

template <class Row>
QStringList rowsOf(const UsageReport<Row>& report) {
    QStringList rows;
    for (const Row& row : report.tableDataSet) {
        rows << u"%1 %2"_qs.arg(nameOf(row)).arg(row.duration);
    }
    rows << u"total %1"_qs.arg(report.durationTotal);
    return rows;
}

// Everything the window shows for the days from `first` to today, a line each.
std::string everythingShown(test::TreeHarness& h, QDate first, const LiveActivities& live) {
    QStringList shown;
    const auto groups = h.tree.recomputeTreeDurations(first, h.today, live);
    const ReportSelection selection = h.tree.reportSelection();
    shown << u"tree %1"_qs.arg(h.tree.durationTotal());
    for (const auto& project : h.tree.projects()) {
        for (const auto& filter : project.filters) {
            shown << u"%1 %2"_qs.arg(filter.name).arg(filter.duration);
        }
    }
    shown << rowsOf(computeApplicationReport(*h.store, selection, first, h.today, live));
    shown << rowsOf(computeWebsiteReport(*h.store, selection, first, h.today, live));
    shown << rowsOf(computeFilterReport(*h.store, selection, first, h.today, live));
    shown << rowsOf(computeProjectReport(*h.store, selection, first, h.today, live));
    shown << rowsOf(computeProjectReportFromTree(groups, selection));

    Productivity productivity;
    refreshProductivity(productivity, *h.store, selection, h.today, live);
    shown << u"score %1 over %2"_qs.arg(productivity.value()).arg(productivity.durationToday());

    ActivityListQuery query;
    query.minDate = first;
    query.maxDate = h.today;
    query.countedFilters = {selection.enableFilters.begin(), selection.enableFilters.end()};
    query.live = live;
    for (const ActivityGroup& group : listActivities(*h.store, query).groups) {
        shown << u"%1 %2 %3"_qs.arg(group.title).arg(group.duration).arg(group.entries.size());
    }
    return shown.join(u'\n').toStdString();
}

TEST(LiveActivities, CountAsTheirRecordsOnceWrittenOnlyForCountedFiltersAndShownDays) {
    test::TreeHarness h("Europe/Berlin", QDate(2026, 3, 30));
    const Instant now = h.clock.now();
    const QDate yesterday = h.today.addDays(-1);
    // Stored: the editor under Code and a page under Cook this morning, the editor yesterday.
    for (const Activity& stored :
         {activityOf(h.s.code, u"editor"_qs, {}, 600, localMoment(h.today, 9), now),
          activityOf(h.s.cook, u"browser"_qs, u"recipes.org"_qs, 300, localMoment(h.today, 10),
                     now),
          activityOf(h.s.code, u"editor"_qs, {}, 900, localMoment(yesterday, 9), now)}) {
        h.store->insert(stored);
        addToDailyTotals(*h.store, stored, now);
    }
    h.buildTree();
    h.tree.applySelection({h.s.code.id, h.s.cook.id, h.s.guitar.id});  // Mail is not counted

    // Open: more of the editor under Code (a group that exists) started before a stored one, a
    // new page under Cook, a terminal under the uncounted Mail, and a capture begun yesterday.
    const LiveActivities live{
        {activityOf(h.s.code, u"editor"_qs, {}, 45, localMoment(h.today, 8), now),
         activityOf(h.s.cook, u"browser"_qs, u"news.org"_qs, 30, localMoment(h.today, 11), now),
         activityOf(h.s.mail, u"terminal"_qs, {}, 700, localMoment(h.today, 11), now),
         activityOf(h.s.code, u"editor"_qs, {}, 80, localMoment(yesterday, 23, 59), now)}};

    const std::string todayLive = everythingShown(h, h.today, live);
    const std::string bothDaysLive = everythingShown(h, yesterday, live);
    EXPECT_NE(todayLive, everythingShown(h, h.today, {}));

    for (const Activity& written : live.activities) {
        h.store->insert(written);
        addToDailyTotals(*h.store, written, now);
    }
    h.store->save();
    EXPECT_EQ(todayLive, everythingShown(h, h.today, {}));
    EXPECT_EQ(bothDaysLive, everythingShown(h, yesterday, {}));
}

}  // namespace
}  // namespace kivo
