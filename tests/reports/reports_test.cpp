#include <gtest/gtest.h>

#include <limits>

#include "reports/percentage.h"
#include "reports/productivity.h"
#include "reports/productivity_score.h"
#include "reports/project_bar_chart.h"
#include "reports/usage_report.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::localMoment;

DayProductivity on(test::TreeHarness& h, QDate day) {
    return dayProductivity(*h.store, productivityInputs(*h.store, h.tree.reportSelection()), day);
}

TEST(Productivity, WeighsTheTimeOfCountedProjectsByRating) {
    test::TreeHarness h("Europe/Berlin", QDate(2026, 3, 30));
    const QDate yesterday = h.today.addDays(-1);
    h.records.tagUsage(h.s.code, 600, localMoment(h.today, 9));  // 100 and -100, equally long
    h.records.tagUsage(h.s.cook, 600, localMoment(h.today, 9));
    h.records.tagUsage(h.s.code, 1800, localMoment(yesterday, 9));  // 100 and 50 at 3:1
    h.records.tagUsage(h.s.mail, 600, localMoment(yesterday, 10));
    h.records.tagUsage(h.s.guitar, 2400, localMoment(yesterday, 9));
    h.records.remove(h.s.mail);  // a deleted filter keeps its rating
    h.buildTree();
    EXPECT_EQ(on(h, h.today).score, 0);
    EXPECT_EQ(on(h, yesterday).score, 87);

    h.tree.setIsShowArchivedProject(true);
    EXPECT_EQ(on(h, yesterday).score, 43);
    auto projects = h.tree.projects();
    projects[0].isToggled = false;
    h.tree.setProjects(projects);
    h.tree.applySelection({});  // the filter selection plays no part
    EXPECT_EQ(on(h, yesterday).score, 0);
    EXPECT_EQ(on(h, yesterday).duration, 2400);
}

// Day, project, value in seconds and annotation (the day's total, on its last segment).
QStringList segments(test::TreeHarness& h, int days) {
    QStringList shown;
    for (const auto& bar :
         computeProjectBarChart(*h.store, h.tree.reportSelection(), h.today, days).dataSet) {
        shown << u"%1 %2 %3 %4"_qs.arg(bar.name, bar.projectName)
                     .arg(qRound64(bar.value * 3600))
                     .arg(bar.annotation);
    }
    return shown;
}

TEST(DayBars, FollowTheLocalDaysAcrossTheClockChange) {
    test::TreeHarness h("America/New_York", QDate(2026, 11, 2));  // 11/1 has 25 hours
    const QDate longDay(2026, 11, 1);
    h.records.tagUsage(h.s.code, 3600, localMoment(longDay, 0));
    h.records.tagUsage(h.s.mail, 1799, localMoment(longDay, 23, 59));
    h.records.tagUsage(h.s.cook, 1800, localMoment(longDay, 12));
    h.records.tagUsage(h.s.guitar, 99999, localMoment(longDay, 12));
    h.records.tagUsage(h.s.code, 7, localMoment(h.today, 0));
    h.buildTree();
    EXPECT_EQ(segments(h, 3),
              (QStringList{u"10/31 Work 0 0"_qs, u"10/31 Home 0 0"_qs, u"11/1 Work 5399 0"_qs,
                           u"11/1 Home 1800 7199"_qs, u"11/2 Work 7 0"_qs, u"11/2 Home 0 7"_qs}));
    EXPECT_EQ(computeProjectBarChart(*h.store, h.tree.reportSelection(), h.today, 3)
                  .durationPeriodMaxHour,
              1);
    QStringList scores;  // day, score as annotation and as value
    for (const auto& bar : productivityBars(*h.store, h.tree.reportSelection(), h.today, 3)) {
        scores << u"%1 %2 %3"_qs.arg(bar.name).arg(bar.annotation).arg(bar.value);
    }
    EXPECT_EQ(scores, (QStringList{u"10/31 0 0"_qs, u"11/1 37 37"_qs, u"11/2 100 100"_qs}));
    EXPECT_TRUE(productivityBars(*h.store, h.tree.reportSelection(), h.today, 0).empty());
    EXPECT_DEATH(productivityBars(*h.store, h.tree.reportSelection(), h.today, -1), "negative");
}

TEST(DayBars, SumOnlyTheCountedFiltersAndTheTreeOnlyItsOwn) {
    test::TreeHarness h("UTC", QDate(2026, 5, 4));
    const Instant morning = localMoment(h.today, 9);
    const std::int64_t half = std::numeric_limits<std::int64_t>::max() / 2 + 1;
    Filter notInTree = h.s.code;
    notInTree.id = QUuid::createUuid();
    h.records.tagUsage(h.s.code, 60, morning);
    for (int twice = 0; twice < 2; ++twice) {
        h.records.tagUsage(notInTree, half, morning);
    }
    h.buildTree();
    EXPECT_EQ(h.tree.durationTotal(), 60);
    // Records of the untoggled Mail and of the archived Hobby's Guitar would overflow a sum.
    h.tree.applySelection({h.s.code.id, h.s.guitar.id});
    for (const Filter& notCounted : {h.s.mail, h.s.guitar, h.s.mail, h.s.guitar}) {
        h.records.tagUsage(notCounted, half, morning);
    }
    h.records.save();
    EXPECT_EQ(segments(h, 1), (QStringList{u"5/4 Work 60 0"_qs, u"5/4 Home 0 60"_qs}));
}

// A group is pooled into "Misc." at 3 percent or less; a pool of at most 0.05 percent is dropped.
TEST(UsageReportChart, PoolsSmallGroupsAndDropsATinyPool) {
    const std::vector<std::pair<std::vector<std::int64_t>, QStringList>> cases{
        {{29, 20, 951}, {u"2 951"_qs, u"Misc. 49"_qs}},
        {std::vector<std::int64_t>(34, 10), {u"Misc. 340"_qs}},
        {{30, 970}, {u"1 970"_qs, u"Misc. 30"_qs}},
        {{1, 1999}, {u"1 1999"_qs}},
        {{2, 1998}, {u"1 1998"_qs, u"Misc. 2"_qs}},
        {{50, 550, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20},
         {u"1 550"_qs, u"Misc. 400"_qs, u"0 50"_qs}},
    };
    for (const auto& [durations, chart] : cases) {
        test::TreeHarness h("UTC", QDate(2026, 5, 4));
        for (std::size_t i = 0; i < durations.size(); ++i) {
            h.records.appUsage(h.s.code, QString::number(i), durations[i],
                               test::localMoment(h.today, 9));
        }
        h.buildTree();
        const auto report =
            computeApplicationReport(*h.store, h.tree.reportSelection(), h.today, h.today);
        QStringList shown;
        for (const auto& row : report.chartDataSet) {
            shown << u"%1 %2"_qs.arg(row.appName).arg(row.duration);
        }
        EXPECT_EQ(report.tableDataSet.size(), durations.size());
        EXPECT_EQ(shown, chart) << durations.size() << " groups";
    }
}

TEST(UsageReports, CountOnlyTheSelectedFilters) {
    test::TreeHarness h("Asia/Tokyo", QDate(2026, 5, 4));
    const auto& s = h.s;
    const Instant morning = test::localMoment(h.today, 9);
    // Applications are grouped by bundle id and named by the first record; empty rows go.
    h.records.appUsage(s.code, u"org.editor"_qs, 10, morning, u"Editor"_qs);
    h.records.appUsage(s.cook, u"org.editor"_qs, 15, morning, u"Editor (beta)"_qs);
    h.records.appUsage(s.cook, u"org.zero"_qs, 0, morning);
    h.records.tagUsage(s.mail, 30, morning);
    h.records.tagUsage(s.cook, 7, morning);
    h.records.webUsage(s.mail, u"example.org"_qs, 30, morning);
    h.records.webUsage(s.code, u"example.org"_qs, 12, morning);
    h.buildTree();
    const auto apps =
        computeApplicationReport(*h.store, h.tree.reportSelection(), h.today, h.today).tableDataSet;
    ASSERT_EQ(apps.size(), 1u);
    EXPECT_EQ(std::tuple(apps[0].appName, apps[0].filterId, apps[0].duration),
              std::tuple(u"Editor"_qs, s.code.id, std::int64_t{25}));

    h.tree.applySelection({s.mail.id, s.cook.id});
    const auto tags =
        computeFilterReport(*h.store, h.tree.reportSelection(), h.today, h.today).tableDataSet;
    ASSERT_EQ(tags.size(), 2u);
    EXPECT_EQ(tags[0].tagName + tags[0].projectName + tags[1].projectName, u"MailWorkHome");
    EXPECT_EQ(
        computeProjectReport(*h.store, h.tree.reportSelection(), h.today, h.today).durationTotal,
        37);
    EXPECT_EQ(
        computeWebsiteReport(*h.store, h.tree.reportSelection(), h.today, h.today).durationTotal,
        30);
}

TEST(PercentageText, TruncatesAndShowsSmallSharesAsBelowOne) {
    EXPECT_EQ(percentageText(9, 1000), u"<1%");
    EXPECT_EQ(percentageText(199, 10000), u"1%");
    EXPECT_EQ(percentageText(2, 3), u"66%");
    EXPECT_EQ(percentageText(1000, 1000), u"100%");
    EXPECT_DEATH(percentageText(1, 0), "percentage");
}

}  // namespace
}  // namespace kivo
