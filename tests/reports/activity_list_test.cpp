#include "reports/activity_list.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <QUrl>
#include <map>

#include "capture/daily_totals.h"
#include "classify/filter_match.h"
#include "model/activity_moves.h"
#include "model/local_day.h"
#include "model/record_store.h"
#include "reports/rule_preview.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::localMoment;

const QString editor = u"org.gnome.TextEditor"_qs;
const QString browser = u"firefox"_qs;

// A store recorded over three days: activities written with their daily totals the way the
// recorder writes them, on the sample tags and the unassigned tag.
struct ActivityStore : test::TreeHarness {
    ActivityStore() : TreeHarness("Europe/Berlin", QDate(2026, 3, 30)) {
        unassigned = newRecord<Filter>(clock.now());
        unassigned.projectId = s.home.id;
        unassigned.tagName = u"Unassigned"_qs;
        unassigned.isNameChangeOnly = true;
        store->insert(unassigned);
        buildTree();
    }

    Activity record(const Filter& filter, const QString& bundleId, const QString& title,
                    const QString& url, std::int64_t duration, Instant startAt) {
        auto activity = newRecord<Activity>(startAt);
        activity.projectId = filter.projectId;
        activity.filterId = filter.id;
        activity.appName = bundleId + u" app"_qs;
        activity.appBundleId = bundleId;
        activity.title = title;
        activity.url = url;
        activity.domainName = url.isEmpty() ? QString() : QUrl(url).host();
        activity.duration = duration;
        activity.startAt = startAt;
        activity.endAt = startAt + Seconds(duration);
        store->insert(activity);
        addToDailyTotals(*store, activity, clock.now());
        store->save();
        return activity;
    }

    ActivityListQuery everything() const {
        ActivityListQuery query;
        query.minDate = today.addDays(-2);
        query.maxDate = today;
        query.countedFilters = {s.code.id, s.mail.id, s.cook.id, s.guitar.id, unassigned.id};
        return query;
    }

    Filter unassigned;
};

// Every live total of every day, by kind and key, and the same sums taken from the live
// activities of the day they started on. Zero totals count as absent.
using DaySums = std::map<QString, std::int64_t>;

void addSum(DaySums& sums, const QString& key, std::int64_t seconds) {
    if ((sums[key] += seconds) == 0) {
        sums.erase(key);
    }
}

DaySums activitySums(RecordStore& store) {
    DaySums sums;
    for (const auto& a : store.fetch<Activity>(live())) {
        const QString day = localDateOf(a.startAt).toString(Qt::ISODate);
        addSum(sums, day + u" tag "_qs + a.projectId.toString() + a.filterId.toString(),
               a.duration);
        addSum(sums, day + u" app "_qs + a.filterId.toString() + a.appBundleId, a.duration);
        addSum(sums, day + u" web "_qs + a.filterId.toString() + a.domainName, a.duration);
    }
    return sums;
}

DaySums totalSums(RecordStore& store) {
    DaySums sums;
    for (const auto& t : store.fetch<TagUsage>(live())) {
        addSum(sums,
               localDateOf(t.createdAt).toString(Qt::ISODate) + u" tag "_qs +
                   t.projectId.toString() + t.filterId.toString(),
               t.duration);
    }
    for (const auto& t : store.fetch<AppUsage>(live())) {
        addSum(sums,
               localDateOf(t.createdAt).toString(Qt::ISODate) + u" app "_qs +
                   t.filterId.toString() + t.appBundleId,
               t.duration);
    }
    for (const auto& t : store.fetch<WebUsage>(live())) {
        addSum(sums,
               localDateOf(t.createdAt).toString(Qt::ISODate) + u" web "_qs +
                   t.filterId.toString() + t.domainName,
               t.duration);
    }
    return sums;
}

std::vector<QUuid> idsOf(const ActivityGroup& group) {
    std::vector<QUuid> ids;
    for (const auto& entry : group.entries) {
        ids.push_back(entry.id);
    }
    return ids;
}

QStringList titles(const ActivityList& list) {
    QStringList shown;
    for (const auto& group : list.groups) {
        shown << u"%1 %2x%3"_qs.arg(group.title).arg(group.entries.size()).arg(group.duration);
    }
    return shown;
}

TEST(ActivityList, GroupsByApplicationTitleAddressAndTagLongestFirst) {
    ActivityStore h;
    const QDate day = h.today.addDays(-1);
    h.record(h.s.code, editor, u"main.cpp"_qs, {}, 300, localMoment(day, 9));
    h.record(h.s.code, editor, u"main.cpp"_qs, {}, 200, localMoment(day, 11));
    h.record(h.s.mail, editor, u"main.cpp"_qs, {}, 100, localMoment(day, 9));  // another tag
    h.record(h.s.code, editor, u"notes"_qs, {}, 450, localMoment(day, 10, 55));
    h.record(h.s.code, u"other"_qs, u"notes"_qs, {}, 1, localMoment(day, 12));
    h.record(h.s.code, editor, u"blink"_qs, {}, 0, localMoment(day, 12));
    h.record(h.s.cook, editor, u"outside"_qs, {}, 60, localMoment(day.addDays(-5), 12));

    auto query = h.everything();
    const ActivityList list = listActivities(*h.store, query);
    EXPECT_EQ(titles(list), (QStringList{u"main.cpp 2x500"_qs, u"notes 1x450"_qs,
                                         u"main.cpp 1x100"_qs, u"notes 1x1"_qs}));
    EXPECT_EQ(list.durationTotal, 1051);
    EXPECT_LT(list.groups[0].entries[0].startAt, list.groups[0].entries[1].startAt);
    // 9:00 300 + 100 s, 10:55 450 s runs into 11:00, 11:00 200 s, 12:00 1 s.
    EXPECT_DOUBLE_EQ(list.minutesPerHour[9], 400 / 60.0);
    EXPECT_DOUBLE_EQ(list.minutesPerHour[10], 5.0);
    EXPECT_DOUBLE_EQ(list.minutesPerHour[11], (150 + 200) / 60.0);
    EXPECT_DOUBLE_EQ(list.minutesPerHour[12], 1 / 60.0);

    query.minimumDuration = 200;
    EXPECT_EQ(titles(listActivities(*h.store, query)),
              (QStringList{u"main.cpp 2x500"_qs, u"notes 1x450"_qs}));
}

TEST(ActivityList, TheEarliestRowNamesItsGroupAndEqualGroupsKeepTheirFirstAppearance) {
    ActivityStore h;
    const QDate day = h.today;
    // Written out of order: the list goes by when rows started, not by when they were written.
    h.record(h.s.code, editor, u"alpha"_qs, {}, 120, localMoment(day, 13));
    Activity later = h.record(h.s.code, editor, u"main.cpp"_qs, {}, 60, localMoment(day, 10));
    later.appName = u"Renamed Editor"_qs;
    later.projectId = h.s.home.id;
    h.store->update(later);
    h.store->save();
    const Activity earlier =
        h.record(h.s.code, editor, u"main.cpp"_qs, {}, 60, localMoment(day, 9));
    h.record(h.s.code, editor, u"zeta"_qs, {}, 120, localMoment(day, 8));

    const ActivityList list = listActivities(*h.store, h.everything());
    EXPECT_EQ(titles(list),
              (QStringList{u"zeta 1x120"_qs, u"main.cpp 2x120"_qs, u"alpha 1x120"_qs}));
    const ActivityGroup& group = list.groups[1];
    EXPECT_EQ(group.appName, earlier.appName);
    EXPECT_EQ(group.projectId, earlier.projectId);
    EXPECT_EQ(idsOf(group), (std::vector<QUuid>{earlier.id, later.id}));
}

TEST(ActivityList, RowsAnotherToolWroteInOtherSpellingsShareTheirGroup) {
    ActivityStore h;
    const QDate day = h.today;
    h.record(h.s.code, editor, u"main.cpp"_qs, {}, 60, localMoment(day, 9));
    h.record(h.s.code, editor, u"main.cpp"_qs, {}, 40, localMoment(day, 10));
    h.record(h.s.code, editor, u"caf\u00e9"_qs, {}, 30, localMoment(day, 11));
    h.record(h.s.code, editor, u"caf\u00e9"_qs, {}, 20, localMoment(day, 12));
    {
        SQLite::Database other(h.home.storePath().toStdString(), SQLite::OPEN_READWRITE);
        // An id in capitals, and two different broken byte sequences that both read as one
        // replacement character.
        other.exec(
            "UPDATE Activity SET filterId = upper(filterId) WHERE title = 'main.cpp' AND "
            "duration = 40");
        other.exec("UPDATE Activity SET title = CAST(X'636166FF' AS TEXT) WHERE duration = 30");
        other.exec("UPDATE Activity SET title = CAST(X'636166FE' AS TEXT) WHERE duration = 20");
    }
    EXPECT_EQ(titles(listActivities(*h.store, h.everything())),
              (QStringList{u"main.cpp 2x100"_qs, u"caf\ufffd 2x50"_qs}));
}

TEST(ActivityList, NarrowsBySelectionsSearchAndCountedFilters) {
    ActivityStore h;
    const QDate day = h.today;
    h.record(h.s.code, editor, u"Report draft"_qs, {}, 60, localMoment(day, 9));
    h.record(h.s.mail, browser, u"Inbox"_qs, u"https://mail.example.org/inbox"_qs, 50,
             localMoment(day, 9));
    h.record(h.s.cook, browser, u"Recipes"_qs, u"https://food.example.com/report"_qs, 40,
             localMoment(day, 9));
    h.record(h.unassigned, u"term"_qs, u"bash"_qs, {}, 30, localMoment(day, 9));

    struct Case {
        const char* name;
        void (*narrow)(ActivityListQuery&, const ActivityStore&);
        QStringList expected;
    };
    const std::vector<Case> cases = {
        {"nothing",
         [](ActivityListQuery&, const ActivityStore&) {},
         {u"Report draft"_qs, u"Inbox"_qs, u"Recipes"_qs, u"bash"_qs}},
        {"application",
         [](ActivityListQuery& q, const ActivityStore&) { q.applicationSelections = {browser}; },
         {u"Inbox"_qs, u"Recipes"_qs}},
        {"website",
         [](ActivityListQuery& q, const ActivityStore&) {
             q.websiteSelections = {u"food.example.com"_qs};
         },
         {u"Recipes"_qs}},
        {"filter",
         [](ActivityListQuery& q, const ActivityStore& s) {
             q.filterSelections = {s.s.code.id.toString(), s.unassigned.id.toString()};
         },
         {u"Report draft"_qs, u"bash"_qs}},
        {"project",
         [](ActivityListQuery& q, const ActivityStore& s) {
             q.projectSelections = {s.s.work.id.toString()};
         },
         {u"Report draft"_qs, u"Inbox"_qs}},
        {"project and application",
         [](ActivityListQuery& q, const ActivityStore& s) {
             q.projectSelections = {s.s.work.id.toString()};
             q.applicationSelections = {browser};
         },
         {u"Inbox"_qs}},
        {"search in title or address, any case",
         [](ActivityListQuery& q, const ActivityStore&) { q.searchText = u"REPORT"_qs; },
         {u"Report draft"_qs, u"Recipes"_qs}},
        {"counted filters",
         [](ActivityListQuery& q, const ActivityStore& s) { q.countedFilters = {s.s.mail.id}; },
         {u"Inbox"_qs}},
    };
    for (const auto& c : cases) {
        auto query = h.everything();
        c.narrow(query, h);
        QStringList shown;
        for (const auto& group : listActivities(*h.store, query).groups) {
            shown << group.title;
        }
        EXPECT_EQ(shown, c.expected) << c.name;
    }
}

// Three days, several tags, applications and domains, some days sharing totals.
void recordSeveralDays(ActivityStore& h) {
    for (int back = 0; back < 3; ++back) {
        const QDate day = h.today.addDays(-back);
        h.record(h.unassigned, browser, u"News"_qs, u"https://news.example.org/a"_qs, 100 + back,
                 localMoment(day, 8));
        h.record(h.unassigned, browser, u"News"_qs, u"https://news.example.org/a"_qs, 40,
                 localMoment(day, 23, 30));
        h.record(h.unassigned, browser, u"Docs - Kivo"_qs, u"https://docs.example.org/"_qs, 70,
                 localMoment(day, 10));
        h.record(h.s.mail, browser, u"Inbox"_qs, u"https://mail.example.org/"_qs, 90,
                 localMoment(day, 11));
        h.record(h.s.code, editor, u"main.cpp"_qs, {}, 300, localMoment(day, 9));
        h.record(h.unassigned, editor, u"untitled"_qs, {}, 20 * (back + 1), localMoment(day, 14));
    }
}

TEST(ActivityMoves, AssignAndDeleteKeepEveryDaysTotalsEqualToItsActivities) {
    ActivityStore h;
    recordSeveralDays(h);
    ASSERT_EQ(totalSums(*h.store), activitySums(*h.store));

    auto query = h.everything();
    query.searchText = u"news"_qs;
    const ActivityList news = listActivities(*h.store, query);
    ASSERT_EQ(news.groups.size(), 1U);
    ASSERT_EQ(news.groups[0].entries.size(), 6U);
    assignActivities(*h.store, idsOf(news.groups[0]), h.s.mail.projectId, h.s.mail.id,
                     h.clock.now());
    EXPECT_EQ(totalSums(*h.store), activitySums(*h.store));
    query.filterSelections = {h.s.mail.id.toString()};
    EXPECT_EQ(listActivities(*h.store, query).durationTotal, news.durationTotal);

    query = h.everything();
    query.applicationSelections = {editor};
    std::vector<QUuid> editorIds;
    for (const auto& group : listActivities(*h.store, query).groups) {
        const auto ids = idsOf(group);
        editorIds.insert(editorIds.end(), ids.begin(), ids.end());
    }
    deleteActivities(*h.store, editorIds, h.clock.now());
    EXPECT_EQ(totalSums(*h.store), activitySums(*h.store));
    EXPECT_TRUE(listActivities(*h.store, query).groups.empty());
    EXPECT_EQ(h.store->fetch<Activity>({"isDeleted = 1", {}, {}}).size(), editorIds.size());
}

TEST(RulePreview, ShowsPerDayWhatApplyThenMovesAndNothingElse) {
    ActivityStore h;
    recordSeveralDays(h);
    auto rule = newRecord<Filter>(h.clock.now());
    rule.projectId = h.s.work.id;
    rule.tagName = u"Reading"_qs;
    rule.appName = u"Firefox"_qs;
    rule.appBundleId = browser;
    rule.matchExpressionOfTitle = u"News|Docs"_qs;
    rule.isTitleRegexOn = true;
    rule.isPreprocessTitleOn = true;
    rule.regexOfPreprocessTitle = u"^[^-]+"_qs;  // "Docs - Kivo" is stored as "Docs "
    h.store->insert(rule);
    h.store->save();

    const RulePreview preview =
        previewRule(*h.store, rule, h.unassigned.id, h.today.addDays(-1), h.today);
    ASSERT_EQ(preview.days.size(), 2U);  // the day before yesterday lies outside
    EXPECT_EQ(preview.days[0].date, h.today.addDays(-1));
    EXPECT_EQ(preview.days[0].activityCount, 3);
    EXPECT_EQ(preview.days[0].duration, 101 + 40 + 70);
    EXPECT_EQ(preview.days[1].duration, 100 + 40 + 70);
    EXPECT_EQ(preview.durationTotal, 421);
    // Nothing has changed yet.
    auto query = h.everything();
    query.filterSelections = {rule.id.toString()};
    query.countedFilters.insert(rule.id);
    EXPECT_TRUE(listActivities(*h.store, query).groups.empty());

    // One of the previewed activities is deleted meanwhile: it is left out.
    deleteActivities(*h.store, {preview.moves.front().before.id}, h.clock.now());
    EXPECT_EQ(applyRulePreview(*h.store, preview, h.clock.now()), preview.moves.size() - 1);
    EXPECT_EQ(totalSums(*h.store), activitySums(*h.store));

    const ActivityList moved = listActivities(*h.store, query);
    EXPECT_EQ(moved.durationTotal, preview.durationTotal - preview.moves.front().before.duration);
    QStringList shown;
    for (const auto& group : moved.groups) {
        shown << group.title + u" "_qs + group.appName;
    }
    EXPECT_EQ(shown, (QStringList{u"News Firefox"_qs, u"Docs  Firefox"_qs}));
    // The unassigned activities the rule does not accept stay where they were.
    query = h.everything();
    query.filterSelections = {h.unassigned.id.toString()};
    shown.clear();
    for (const auto& group : listActivities(*h.store, query).groups) {
        shown << group.title;
    }
    EXPECT_EQ(shown, (QStringList{u"News"_qs, u"untitled"_qs, u"Docs - Kivo"_qs}));
}

TEST(ActivityList, ATagMadeFromARowCarriesItsApplicationAndKeyword) {
    ActivityGroup page{u"Firefox"_qs,
                       browser,
                       u"Inbox"_qs,
                       u"https://mail.example.org/"_qs,
                       u"mail.example.org"_qs,
                       {},
                       {},
                       0,
                       {}};
    ActivityGroup window{u"Text Editor"_qs, editor, u"main.cpp"_qs, {}, {}, {}, {}, 0, {}};
    const QUuid project = QUuid::createUuid();
    const Filter fromPage = filterPrefilledFrom(page, project, Instant{});
    EXPECT_EQ(fromPage.appBundleId, browser);
    EXPECT_EQ(fromPage.appName, u"Firefox"_qs);
    EXPECT_EQ(fromPage.matchExpressionOfUrl, u"mail.example.org"_qs);
    EXPECT_TRUE(fromPage.matchExpressionOfTitle.isEmpty());
    EXPECT_EQ(fromPage.projectId, project);
    const Filter fromWindow = filterPrefilledFrom(window, project, Instant{});
    EXPECT_EQ(fromWindow.appBundleId, editor);
    EXPECT_EQ(fromWindow.matchExpressionOfTitle, u"main.cpp"_qs);
    EXPECT_TRUE(fromWindow.matchExpressionOfUrl.isEmpty());
    // The keyword makes the rule accept the row it came from.
    CaptureData capture{0, window.appName, editor, window.title, QString(), false, {}, {}};
    EXPECT_TRUE(matchFilter(capture, fromWindow));
}

}  // namespace
}  // namespace kivo
