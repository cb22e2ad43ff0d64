#include "reports/project_bar_chart.h"

#include <gtest/gtest.h>

#include "reports/chart_days.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::localMoment;
using test::ScopedTimeZone;
using test::TreeHarness;

class ProjectBars : public testing::Test {
protected:
    ProjectBars() {
        work = h.records.project(QStringLiteral("Work"));
        hobby = h.records.project(QStringLiteral("Hobby"), true);
        home = h.records.project(QStringLiteral("Home"));
        code = h.records.filter(work, QStringLiteral("Code"));
        mail = h.records.filter(work, QStringLiteral("Mail"));
        guitar = h.records.filter(hobby, QStringLiteral("Guitar"));
        cook = h.records.filter(home, QStringLiteral("Cook"));
    }

    void build() {
        h.records.save();
        h.tree.buildTreeFromRecords();
    }

    ProjectBarChart chart(int daysAgo) {
        return computeProjectBarChart(*h.store, h.tree, h.today, daysAgo);
    }

    ScopedTimeZone zone{"America/New_York"};
    TreeHarness h{QDate(2026, 11, 2)};  // the day after clocks went back: 11/1 has 25 hours
    Project work, hobby, home;
    Filter code, mail, guitar, cook;
};

TEST_F(ProjectBars, OneSegmentPerCountedProjectAndDayWithTheTotalOnTheLast) {
    const QDate longDay(2026, 11, 1);
    h.records.tagUsage(code, 3600, localMoment(longDay, 0));
    h.records.tagUsage(mail, 1799, localMoment(longDay, 23, 59));
    h.records.tagUsage(cook, 1800, localMoment(longDay, 12));
    h.records.tagUsage(guitar, 99999, localMoment(longDay, 12));
    h.records.tagUsage(code, 7, localMoment(h.today, 0));
    build();

    const auto bars = chart(3);
    ASSERT_EQ(bars.dataSet.size(), 6u);
    const std::vector<QString> names{u"10/31"_qs, u"10/31"_qs, u"11/1"_qs,
                                     u"11/1"_qs,  u"11/2"_qs,  u"11/2"_qs};
    for (std::size_t i = 0; i < bars.dataSet.size(); ++i) {
        EXPECT_EQ(bars.dataSet[i].name, names[i]);
        EXPECT_EQ(bars.dataSet[i].projectName, i % 2 == 0 ? u"Work"_qs : u"Home"_qs);
    }
    EXPECT_EQ(bars.dataSet[0].value, 0.0);
    EXPECT_EQ(bars.dataSet[1].annotation, 0);
    EXPECT_DOUBLE_EQ(bars.dataSet[2].value, 5399.0 / 3600.0);
    EXPECT_EQ(bars.dataSet[2].annotation, 0);
    EXPECT_DOUBLE_EQ(bars.dataSet[3].value, 0.5);
    EXPECT_EQ(bars.dataSet[3].annotation, 7199);
    EXPECT_EQ(bars.dataSet[5].annotation, 7);
    EXPECT_EQ(bars.durationPerDay.value(u"11/1"_qs), 7199);
    EXPECT_EQ(bars.durationPerDay.value(u"10/31"_qs), 0);
    EXPECT_EQ(bars.durationPerDay.size(), 3);
    EXPECT_EQ(bars.durationPeriodMaxHour, 1);
}

TEST_F(ProjectBars, ToggledFilterOutsideTheCountedOnesAddsNothing) {
    h.records.tagUsage(code, 5399, localMoment(h.today, 9));
    h.records.tagUsage(mail, 100, localMoment(h.today, 9));
    h.records.tagUsage(guitar, 40000, localMoment(h.today, 9));
    build();
    h.tree.applySelection({code.id, guitar.id});

    auto bars = chart(1);
    ASSERT_EQ(bars.dataSet.size(), 2u);
    EXPECT_EQ(bars.dataSet[1].annotation, 5399);
    EXPECT_EQ(bars.durationPeriodMaxHour, 1);

    h.tree.setIsShowArchivedProject(true);
    bars = chart(1);
    ASSERT_EQ(bars.dataSet.size(), 3u);
    EXPECT_EQ(bars.dataSet[1].projectName, u"Hobby");
    EXPECT_EQ(bars.dataSet[2].annotation, 45399);
    EXPECT_EQ(bars.durationPeriodMaxHour, 12);
}

TEST_F(ProjectBars, WeekEndsTodayAndEmptyCountsGiveNoSegments) {
    build();
    const auto week = chart(7);
    EXPECT_EQ(week.dataSet.size(), 14u);
    EXPECT_EQ(week.dataSet.back().name, dayLabel(h.today));
    EXPECT_EQ(week.dataSet.front().name, dayLabel(h.today.addDays(-6)));

    const auto none = chart(0);
    EXPECT_TRUE(none.dataSet.empty());
    EXPECT_TRUE(none.durationPerDay.isEmpty());
    EXPECT_EQ(none.durationPeriodMaxHour, 0);

    h.tree.setProjects({});
    const auto noProjects = chart(2);
    EXPECT_TRUE(noProjects.dataSet.empty());
    EXPECT_EQ(noProjects.durationPerDay.size(), 2);
}

TEST_F(ProjectBars, LaterDayWithTheSameLabelOverwritesItsTotal) {
    h.records.tagUsage(code, 100, localMoment(h.today.addYears(-1), 9));
    h.records.tagUsage(code, 30, localMoment(h.today, 9));
    build();
    const auto bars = chart(366);
    EXPECT_EQ(bars.dataSet[1].annotation, 100);
    EXPECT_EQ(bars.durationPerDay.value(dayLabel(h.today)), 30);
    EXPECT_EQ(bars.durationPerDay.size(), 365);
    EXPECT_EQ(bars.durationPeriodMaxHour, 0);
}

}  // namespace
}  // namespace kivo
