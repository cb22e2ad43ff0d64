#include <gtest/gtest.h>

#include "tree/duration_label.h"
#include "tree/list_move.h"
#include "tree/saved_tree_document.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::localMoment;
using test::ScopedTimeZone;
using test::TreeHarness;

class TreeDurations : public testing::Test {
protected:
    ScopedTimeZone zone{"Europe/Berlin"};
    TreeHarness h{QDate(2026, 3, 29)};  // clocks go forward: a 23-hour day
};

TEST_F(TreeDurations, RecordsCountUnderTheirFilterWithinTheDays) {
    const auto work = h.records.project(QStringLiteral("Work"));
    const auto code = h.records.filter(work, QStringLiteral("Code"));
    const auto mail = h.records.filter(work, QStringLiteral("Mail"));
    const QDate yesterday = h.today.addDays(-1);
    h.records.tagUsage(code, 100, localMoment(h.today, 0));
    h.records.tagUsage(code, 20, localMoment(h.today, 23, 59));
    h.records.tagUsage(mail, 3, localMoment(h.today, 8));
    h.records.tagUsage(mail, 1000, localMoment(yesterday, 23, 59));
    h.records.tagUsage(mail, 5000, localMoment(h.today.addDays(1), 0));
    h.records.save();

    h.tree.buildTreeFromRecords();  // fills the clock's day
    const auto& project = h.tree.projects().front();
    EXPECT_EQ(project.filters[0].duration, 120);
    EXPECT_EQ(project.filters[1].duration, 3);
    EXPECT_EQ(project.duration, 123);
    EXPECT_EQ(h.tree.durationTotal(), 123);

    h.tree.recomputeTreeDurations(yesterday, h.today);
    EXPECT_EQ(h.tree.projects().front().filters[1].duration, 1003);
    EXPECT_EQ(h.tree.durationTotal(), 1123);
}

TEST_F(TreeDurations, RecordsOfDeletedFiltersAndProjectsCountNowhere) {
    const auto work = h.records.project(QStringLiteral("Work"));
    const auto gone = h.records.project(QStringLiteral("Gone"));
    const auto code = h.records.filter(work, QStringLiteral("Code"));
    const auto old = h.records.filter(work, QStringLiteral("Old"));
    const auto orphan = h.records.filter(gone, QStringLiteral("Orphan"));
    h.records.remove(old);
    h.records.remove(gone);
    const Instant morning = localMoment(h.today, 9);
    h.records.tagUsage(code, 10, morning);
    h.records.tagUsage(old, 20, morning);
    h.records.tagUsage(orphan, 40, morning);
    h.records.save();

    h.tree.buildTreeFromRecords();
    const auto& projects = h.tree.projects();
    ASSERT_EQ(projects.size(), 2u);
    ASSERT_EQ(projects[0].filters.size(), 1u);
    EXPECT_EQ(projects[0].filters[0].id, code.id);
    EXPECT_EQ(projects[1].id, gone.id);
    EXPECT_TRUE(projects[1].filters.empty());
    EXPECT_EQ(projects[0].duration, 10);
    EXPECT_EQ(projects[1].duration, 0);
    EXPECT_EQ(h.tree.durationTotal(), 10);
}

TEST_F(TreeDurations, ArchivedProjectKeepsItsDurationButLeavesTheTotalWhileHidden) {
    const auto work = h.records.project(QStringLiteral("Work"));
    const auto hobby = h.records.project(QStringLiteral("Hobby"), true);
    h.records.tagUsage(h.records.filter(work, QStringLiteral("Code")), 60, localMoment(h.today, 9));
    h.records.tagUsage(h.records.filter(hobby, QStringLiteral("Guitar")), 600,
                       localMoment(h.today, 9));
    h.records.save();

    h.tree.buildTreeFromRecords();
    EXPECT_EQ(h.tree.projects()[1].duration, 600);
    EXPECT_EQ(h.tree.durationTotal(), 60);

    h.tree.setIsShowArchivedProject(true);
    h.tree.recomputeTreeDurations(h.today, h.today);
    EXPECT_EQ(h.tree.durationTotal(), 660);
}

TEST_F(TreeDurations, EmptyTreeKeepsItsTotal) {
    h.records.tagUsage(Filter{}, 60, localMoment(h.today, 9));
    h.records.save();
    h.tree.recomputeTreeDurations(h.today, h.today);
    EXPECT_TRUE(h.tree.projects().empty());
    EXPECT_EQ(h.tree.durationTotal(), 0);
}

TEST_F(TreeDurations, OverflowingSumStopsTheProgram) {
    const auto work = h.records.project(QStringLiteral("Work"));
    const auto code = h.records.filter(work, QStringLiteral("Code"));
    h.records.tagUsage(code, std::numeric_limits<std::int64_t>::max(), localMoment(h.today, 9));
    h.records.tagUsage(code, 1, localMoment(h.today, 10));
    h.records.save();
    EXPECT_DEATH(h.tree.buildTreeFromRecords(), "overflow");
}

TEST(DurationLabel, ShowsHoursAndMinutesWithBlanksAround) {
    const std::vector<std::pair<std::int64_t, const char*>> cases{
        {0, ""},         {1, " <1m "},      {59, " <1m "},     {60, " 1m "},
        {3599, " 59m "}, {3600, " 1h 0m "}, {3661, " 1h 1m "}, {90061, " 25h 1m "},
    };
    for (const auto& [seconds, label] : cases) {
        EXPECT_EQ(formatDurationLabel(seconds), QString::fromUtf8(label)) << seconds;
    }
}

TEST(ListMove, MovesLikeDragAndDrop) {
    const std::vector<char> start{'a', 'b', 'c', 'd', 'e'};
    const auto moved = [&](std::vector<std::size_t> offsets, std::size_t destination) {
        auto list = start;
        EXPECT_TRUE(moveElements(list, std::move(offsets), destination));
        return std::string(list.begin(), list.end());
    };
    EXPECT_EQ(moved({0}, 5), "bcdea");
    EXPECT_EQ(moved({4}, 0), "eabcd");
    EXPECT_EQ(moved({3, 1}, 3), "acbde");
    EXPECT_EQ(moved({0, 4}, 2), "baecd");
    EXPECT_EQ(moved({2}, 2), "abcde");
    EXPECT_EQ(moved({2}, 3), "abcde");
    EXPECT_EQ(moved({}, 1), "abcde");

    auto list = start;
    EXPECT_FALSE(moveElements(list, {5}, 0));
    EXPECT_FALSE(moveElements(list, {0}, 6));
    EXPECT_EQ(list, start);
}

TEST_F(TreeDurations, MovesKeepFiltersWithTheirProjectAndAreSaved) {
    const auto work = h.records.project(QStringLiteral("Work"));
    const auto home = h.records.project(QStringLiteral("Home"));
    const auto code = h.records.filter(work, QStringLiteral("Code"));
    const auto mail = h.records.filter(work, QStringLiteral("Mail"));
    const auto cook = h.records.filter(home, QStringLiteral("Cook"));
    h.records.save();
    h.tree.buildTreeFromRecords();

    h.tree.moveProjects({0}, 2);
    ASSERT_EQ(h.tree.projects()[1].id, work.id);
    EXPECT_EQ(h.tree.projects()[1].filters.size(), 2u);
    EXPECT_EQ(h.tree.projects()[0].filters[0].id, cook.id);
    EXPECT_EQ(h.tree.projectNames().size(), 2);

    h.tree.moveFilters(work.id, {1}, 0);
    EXPECT_EQ(h.tree.projects()[1].filters[0].id, mail.id);
    EXPECT_EQ(h.tree.projects()[1].filters[1].id, code.id);
    EXPECT_EQ(h.tree.enableFilters(), (std::vector<QUuid>{cook.id, mail.id, code.id}));
    EXPECT_EQ(decodeSavedTree(*h.settings->savedProjectTree()), h.tree.projects());

    EXPECT_DEATH(h.tree.moveFilters(home.id, {1}, 0), "outside");
}

}  // namespace
}  // namespace kivo
