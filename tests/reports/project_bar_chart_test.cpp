#include "reports/project_bar_chart.h"

#include <gtest/gtest.h>

#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::localMoment;

class ProjectBars : public testing::Test {
protected:
    ProjectBars() {
        work = h.records.project(u"Work"_qs);
        hobby = h.records.project(u"Hobby"_qs, true);
        home = h.records.project(u"Home"_qs);
        code = h.records.filter(work, u"Code"_qs);
        mail = h.records.filter(work, u"Mail"_qs);
        guitar = h.records.filter(hobby, u"Guitar"_qs);
        cook = h.records.filter(home, u"Cook"_qs);
    }

    ProjectBarChart chart(int daysAgo) {
        return computeProjectBarChart(*h.store, h.tree, h.today, daysAgo);
    }

    test::ScopedTimeZone zone{"America/New_York"};
    test::TreeHarness h{QDate(2026, 11, 2)};  // the day after clocks went back: 11/1 has 25 hours
    Project work, hobby, home;
    Filter code, mail, guitar, cook;
};

TEST_F(ProjectBars, OneSegmentPerCountedProjectAndDayWithTheDayTotalOnTheLast) {
    const QDate longDay(2026, 11, 1);
    h.records.tagUsage(code, 3600, localMoment(longDay, 0));
    h.records.tagUsage(mail, 1799, localMoment(longDay, 23, 59));
    h.records.tagUsage(cook, 1800, localMoment(longDay, 12));
    h.records.tagUsage(guitar, 99999, localMoment(longDay, 12));
    h.records.tagUsage(code, 7, localMoment(h.today, 0));
    h.buildTree();

    const auto bars = chart(3);
    const std::vector<std::tuple<const char*, const char*, double, std::int64_t>> expected{
        {"10/31", "Work", 0.0, 0},          {"10/31", "Home", 0.0, 0},
        {"11/1", "Work", 5399 / 3600.0, 0}, {"11/1", "Home", 0.5, 7199},
        {"11/2", "Work", 7 / 3600.0, 0},    {"11/2", "Home", 0.0, 7}};
    ASSERT_EQ(bars.dataSet.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const auto& [name, project, value, annotation] = expected[i];
        EXPECT_EQ(bars.dataSet[i].name, QString::fromUtf8(name));
        EXPECT_EQ(bars.dataSet[i].projectName, QString::fromUtf8(project));
        EXPECT_DOUBLE_EQ(bars.dataSet[i].value, value);
        EXPECT_EQ(bars.dataSet[i].annotation, annotation);
    }
    EXPECT_EQ(bars.durationPerDay.value(u"11/1"_qs), 7199);
    EXPECT_EQ(bars.durationPerDay.size(), 3);
    EXPECT_EQ(bars.durationPeriodMaxHour, 1);
    EXPECT_TRUE(chart(0).dataSet.empty());
}

TEST_F(ProjectBars, OnlyToggledFiltersTheTreeCountsAddTime) {
    h.records.tagUsage(code, 5399, localMoment(h.today, 9));
    h.records.tagUsage(mail, 100, localMoment(h.today, 9));
    h.records.tagUsage(guitar, 40000, localMoment(h.today, 9));
    h.buildTree();
    h.tree.applySelection({code.id, guitar.id});  // Guitar toggled, but its project is hidden
    auto bars = chart(1);
    ASSERT_EQ(bars.dataSet.size(), 2u);
    EXPECT_EQ(bars.dataSet[1].annotation, 5399);

    h.tree.setIsShowArchivedProject(true);
    bars = chart(1);
    ASSERT_EQ(bars.dataSet.size(), 3u);
    EXPECT_EQ(bars.dataSet[1].projectName, u"Hobby");
    EXPECT_EQ(bars.dataSet[2].annotation, 45399);
    EXPECT_EQ(bars.durationPeriodMaxHour, 12);
}

}  // namespace
}  // namespace kivo
