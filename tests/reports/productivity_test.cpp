#include "reports/productivity.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

#include "reports/chart_days.h"
#include "reports/productivity_score.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::localMoment;
using test::ScopedTimeZone;
using test::TreeHarness;

class ProductivityScores : public testing::Test {
protected:
    ProductivityScores() {
        work = h.records.project(QStringLiteral("Work"));
        focus = h.records.filter(work, QStringLiteral("Focus"), 100);
        half = h.records.filter(work, QStringLiteral("Half"), 50);
        waste = h.records.filter(work, QStringLiteral("Waste"), -100);
    }

    std::int64_t scoreOf(QDate day) {
        h.records.save();
        h.tree.buildTreeFromRecords();
        return dayProductivity(*h.store, productivityInputs(*h.store, h.tree), day).score;
    }

    ScopedTimeZone zone{"Europe/Berlin"};
    TreeHarness h{QDate(2026, 3, 30)};  // the day after clocks went forward
    Instant morning = localMoment(h.today, 9);
    Project work;
    Filter focus, half, waste;
};

TEST_F(ProductivityScores, WeighsEachFiltersTimeByItsRating) {
    h.records.tagUsage(focus, 600, morning);
    h.records.tagUsage(waste, 600, morning);
    EXPECT_EQ(scoreOf(h.today), 0);

    const QDate yesterday = h.today.addDays(-1);
    h.records.tagUsage(focus, 3 * 600, localMoment(yesterday, 9));
    h.records.tagUsage(half, 600, localMoment(yesterday, 10));
    EXPECT_EQ(scoreOf(yesterday), 87);
    EXPECT_EQ(scoreOf(h.today.addDays(-2)), 0);
}

TEST_F(ProductivityScores, OnlyToggledProjectsShownInTheTreeCount) {
    const auto hobby = h.records.project(QStringLiteral("Hobby"), true);
    const auto idle = h.records.project(QStringLiteral("Idle"));
    h.records.tagUsage(focus, 100, morning);
    h.records.tagUsage(h.records.filter(hobby, QStringLiteral("Guitar"), 0), 100, morning);
    h.records.tagUsage(h.records.filter(idle, QStringLiteral("Nap"), 0), 100, morning);
    EXPECT_EQ(scoreOf(h.today), 50);

    auto projects = h.tree.projects();
    projects[2].isToggled = false;
    h.tree.setProjects(projects);
    // The filter selection does not matter, only the projects' own flags.
    h.tree.applySelection({});
    const auto inputs = productivityInputs(*h.store, h.tree);
    EXPECT_EQ(dayProductivity(*h.store, inputs, h.today).score, 100);
    h.tree.setIsShowArchivedProject(true);
    EXPECT_EQ(dayProductivity(*h.store, productivityInputs(*h.store, h.tree), h.today).duration,
              200);
}

TEST_F(ProductivityScores, DeletedFiltersKeepTheirRating) {
    h.records.tagUsage(half, 100, morning);
    h.records.remove(half);
    EXPECT_EQ(scoreOf(h.today), 50);
}

TEST_F(ProductivityScores, TotalOfAnUnknownFilterStops) {
    Filter unknown;
    unknown.id = QUuid::createUuid();
    unknown.projectId = work.id;
    h.records.tagUsage(unknown, 100, morning);
    EXPECT_DEATH(scoreOf(h.today), "rating");
}

TEST_F(ProductivityScores, TodayIsRefreshedScoreFirstThenTime) {
    Productivity productivity;
    EXPECT_EQ(productivity.value(), 100);
    EXPECT_EQ(productivity.durationToday(), QString());

    // The menu-bar item redraws on the text; by then the score must be new as well.
    std::vector<std::int64_t> scoreSeenWithNewText;
    QObject::connect(&productivity, &Productivity::durationTodayChanged,
                     [&] { scoreSeenWithNewText.push_back(productivity.value()); });
    h.records.save();
    h.tree.buildTreeFromRecords();
    refreshProductivity(productivity, *h.store, h.tree, h.today);
    EXPECT_EQ(productivity.value(), 0);
    EXPECT_EQ(productivity.durationToday(), QString());

    const std::vector<std::tuple<Filter, std::int64_t, const char*>> steps{
        {waste, 45, " <1m "}, {focus, 3599 - 45, " 59m "}, {focus, 1, " 1h 0m "}};
    for (const auto& [filter, added, text] : steps) {
        h.records.tagUsage(filter, added, morning);
        h.records.save();
        refreshProductivity(productivity, *h.store, h.tree, h.today);
        EXPECT_EQ(productivity.durationToday(), QString::fromUtf8(text));
    }
    EXPECT_EQ(scoreSeenWithNewText, (std::vector<std::int64_t>{-100, 97, 97}));
}

TEST_F(ProductivityScores, BarsFollowTheLocalDaysAcrossTheClockChange) {
    // 2026-03-29 has 23 hours in Berlin.
    h.records.tagUsage(focus, 60, localMoment(QDate(2026, 3, 28), 23, 59));
    h.records.tagUsage(waste, 60, localMoment(QDate(2026, 3, 29), 0, 0));
    h.records.tagUsage(half, 60, localMoment(QDate(2026, 3, 29), 23, 59));
    h.records.tagUsage(focus, 60, localMoment(QDate(2026, 3, 30), 0, 0));
    h.records.save();
    h.tree.buildTreeFromRecords();

    const auto bars = productivityBars(*h.store, h.tree, h.today, 3);
    ASSERT_EQ(bars.size(), 3u);
    EXPECT_EQ(bars[0].name, u"3/28");
    EXPECT_EQ(bars[1].name, u"3/29");
    EXPECT_EQ(bars[2].name, u"3/30");
    EXPECT_EQ(bars[0].annotation, 100);
    EXPECT_EQ(bars[1].annotation, -25);
    EXPECT_EQ(bars[1].value, -25.0);
    EXPECT_EQ(bars[2].annotation, 100);
    EXPECT_TRUE(bars[2].projectName.isEmpty());

    EXPECT_EQ(productivityBars(*h.store, h.tree, h.today, 7).back().name, dayLabel(h.today));
    EXPECT_TRUE(productivityBars(*h.store, h.tree, h.today, 0).empty());
    EXPECT_DEATH(productivityBars(*h.store, h.tree, h.today, -1), "negative");
}

TEST(ChartDays, EndTodayAndLabelWithoutLeadingZeros) {
    const auto days = chartDays(QDate(2026, 1, 2), 4);
    EXPECT_EQ(days, (std::vector<QDate>{QDate(2025, 12, 30), QDate(2025, 12, 31), QDate(2026, 1, 1),
                                        QDate(2026, 1, 2)}));
    EXPECT_EQ(dayLabel(QDate(2026, 3, 7)), u"3/7");
    EXPECT_EQ(dayLabel(QDate(2026, 11, 21)), u"11/21");
}

}  // namespace
}  // namespace kivo
