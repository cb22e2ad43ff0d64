#include "reports/productivity.h"

#include <gtest/gtest.h>

#include "reports/productivity_score.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::localMoment;

class ProductivityScores : public testing::Test {
protected:
    ProductivityScores() {
        work = h.records.project(u"Work"_qs);
        focus = h.records.filter(work, u"Focus"_qs, 100);
        half = h.records.filter(work, u"Half"_qs, 50);
        waste = h.records.filter(work, u"Waste"_qs, -100);
    }

    DayProductivity on(QDate day) {
        return dayProductivity(*h.store, productivityInputs(*h.store, h.tree), day);
    }

    test::ScopedTimeZone zone{"Europe/Berlin"};
    test::TreeHarness h{QDate(2026, 3, 30)};  // the day after clocks went forward
    Instant morning = localMoment(h.today, 9);
    Project work;
    Filter focus, half, waste;
};

TEST_F(ProductivityScores, WeighsTheTimeOfCountedProjectsByRating) {
    const QDate yesterday = h.today.addDays(-1);
    h.records.tagUsage(focus, 600, morning);
    h.records.tagUsage(waste, 600, morning);
    h.records.tagUsage(focus, 1800, localMoment(yesterday, 9));
    h.records.tagUsage(half, 600, localMoment(yesterday, 10));
    const auto hobby = h.records.project(u"Hobby"_qs, true);
    h.records.tagUsage(h.records.filter(hobby, u"Guitar"_qs, 0), 2400, localMoment(yesterday, 9));
    h.records.remove(half);  // a deleted filter keeps its rating
    h.buildTree();
    EXPECT_EQ(on(h.today).score, 0);
    EXPECT_EQ(on(yesterday).score, 87);
    EXPECT_EQ(on(yesterday.addDays(-1)).score, 0);

    h.tree.setIsShowArchivedProject(true);
    EXPECT_EQ(on(yesterday).score, 43);
    auto projects = h.tree.projects();
    projects[0].isToggled = false;
    h.tree.setProjects(projects);
    h.tree.applySelection({});  // the filter selection plays no part
    EXPECT_EQ(on(yesterday).score, 0);
    EXPECT_EQ(on(yesterday).duration, 2400);
}

TEST_F(ProductivityScores, TotalOfAFilterWithoutRatingStops) {
    Filter unknown;
    unknown.id = QUuid::createUuid();
    unknown.projectId = work.id;
    h.records.tagUsage(unknown, 100, morning);
    h.buildTree();
    EXPECT_DEATH(on(h.today), "rating");
}

TEST_F(ProductivityScores, TodayIsRefreshedScoreFirstThenTime) {
    Productivity productivity;
    EXPECT_EQ(productivity.value(), 100);
    EXPECT_EQ(productivity.durationToday(), QString());
    // The menu-bar item redraws on the text; by then the score must be new as well.
    std::vector<std::int64_t> scoreSeenWithNewText;
    QObject::connect(&productivity, &Productivity::durationTodayChanged,
                     [&] { scoreSeenWithNewText.push_back(productivity.value()); });
    h.buildTree();
    refreshProductivity(productivity, *h.store, h.tree, h.today);
    EXPECT_EQ(productivity.value(), 0);

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
    h.buildTree();
    const auto bars = productivityBars(*h.store, h.tree, h.today, 3);
    ASSERT_EQ(bars.size(), 3u);
    const std::vector<std::pair<const char*, std::int64_t>> expected{
        {"3/28", 100}, {"3/29", -25}, {"3/30", 100}};
    for (std::size_t i = 0; i < bars.size(); ++i) {
        EXPECT_EQ(bars[i].name, QString::fromUtf8(expected[i].first));
        EXPECT_EQ(bars[i].annotation, expected[i].second);
        EXPECT_EQ(bars[i].value, static_cast<double>(expected[i].second));
    }
    EXPECT_TRUE(productivityBars(*h.store, h.tree, h.today, 0).empty());
    EXPECT_DEATH(productivityBars(*h.store, h.tree, h.today, -1), "negative");
}

}  // namespace
}  // namespace kivo
