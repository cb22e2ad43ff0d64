#include <gtest/gtest.h>

#include "tree/duration_label.h"
#include "tree/list_move.h"
#include "tree/saved_tree_document.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::localMoment;

class TreeDurations : public testing::Test {
protected:
    test::ScopedTimeZone zone{"Europe/Berlin"};
    test::TreeHarness h{QDate(2026, 3, 29)};  // clocks go forward: a 23-hour day
};

TEST_F(TreeDurations, RecordsCountUnderTheirFilterNodeWithinTheDays) {
    const auto work = h.records.project(u"Work"_qs);
    const auto hobby = h.records.project(u"Hobby"_qs, true);
    const auto gone = h.records.project(u"Gone"_qs);
    const auto code = h.records.filter(work, u"Code"_qs);
    const auto old = h.records.filter(work, u"Old"_qs);
    const auto guitar = h.records.filter(hobby, u"Guitar"_qs);
    const auto orphan = h.records.filter(gone, u"Orphan"_qs);
    h.records.remove(old);
    h.records.remove(gone);
    const QDate yesterday = h.today.addDays(-1);
    h.records.tagUsage(code, 100, localMoment(h.today, 0));
    h.records.tagUsage(code, 20, localMoment(h.today, 23, 59));
    h.records.tagUsage(code, 1000, localMoment(yesterday, 23, 59));
    h.records.tagUsage(code, 5000, localMoment(h.today.addDays(1), 0));
    h.records.tagUsage(old, 7, localMoment(h.today, 9));
    h.records.tagUsage(orphan, 9, localMoment(h.today, 9));
    h.records.tagUsage(guitar, 600, localMoment(h.today, 9));
    h.buildTree();  // fills in the clock's day

    const auto& projects = h.tree.projects();
    ASSERT_EQ(projects.size(), 3u);
    ASSERT_EQ(projects[0].filters.size(), 1u);  // no node for the deleted filter
    EXPECT_EQ(projects[0].duration, 120);
    EXPECT_EQ(projects[1].duration, 600);
    EXPECT_TRUE(projects[2].filters.empty());  // the deleted project keeps an empty node
    EXPECT_EQ(h.tree.durationTotal(), 120);    // the archived project is hidden

    h.tree.setIsShowArchivedProject(true);
    h.tree.recomputeTreeDurations(yesterday, h.today);
    EXPECT_EQ(h.tree.projects()[0].filters[0].duration, 1120);
    EXPECT_EQ(h.tree.durationTotal(), 1720);
}

TEST_F(TreeDurations, OverflowingSumStopsTheProgram) {
    const auto code = h.records.filter(h.records.project(u"Work"_qs), u"Code"_qs);
    h.records.tagUsage(code, std::numeric_limits<std::int64_t>::max(), localMoment(h.today, 9));
    h.records.tagUsage(code, 1, localMoment(h.today, 10));
    EXPECT_DEATH(h.buildTree(), "overflow");
}

TEST_F(TreeDurations, MovesKeepFiltersInTheirProjectAndAreSaved) {
    const auto work = h.records.project(u"Work"_qs);
    const auto home = h.records.project(u"Home"_qs);
    const auto code = h.records.filter(work, u"Code"_qs);
    const auto mail = h.records.filter(work, u"Mail"_qs);
    const auto cook = h.records.filter(home, u"Cook"_qs);
    h.buildTree();

    h.tree.moveProjects({0}, 2);
    h.tree.moveFilters(work.id, {1}, 0);
    EXPECT_EQ(h.tree.enableFilters(), (std::vector<QUuid>{cook.id, mail.id, code.id}));
    EXPECT_EQ(decodeSavedTree(h.settings->savedProjectTree().value()), h.tree.projects());
    EXPECT_DEATH(h.tree.moveFilters(home.id, {1}, 0), "outside");
}

TEST(ListMove, MovesLikeDragAndDrop) {
    const auto moved = [](std::vector<std::size_t> offsets,
                          std::size_t destination) -> std::string {
        std::vector<char> list{'a', 'b', 'c', 'd', 'e'};
        return moveElements(list, std::move(offsets), destination)
                   ? std::string(list.begin(), list.end())
                   : "refused";
    };
    EXPECT_EQ(moved({0}, 5), "bcdea");
    EXPECT_EQ(moved({4}, 0), "eabcd");
    EXPECT_EQ(moved({3, 1}, 3), "acbde");
    EXPECT_EQ(moved({0, 4}, 2), "baecd");
    EXPECT_EQ(moved({2}, 3), "abcde");
    EXPECT_EQ(moved({5}, 0), "refused");
    EXPECT_EQ(moved({0}, 6), "refused");
}

TEST(DurationLabel, ShowsHoursAndMinutesWithBlanksAround) {
    const std::vector<std::pair<std::int64_t, const char*>> cases{
        {0, ""},         {1, " <1m "},      {59, " <1m "},     {60, " 1m "},
        {3599, " 59m "}, {3600, " 1h 0m "}, {3661, " 1h 1m "}, {90061, " 25h 1m "}};
    for (const auto& [seconds, label] : cases) {
        EXPECT_EQ(formatDurationLabel(seconds), QString::fromUtf8(label)) << seconds;
    }
}

}  // namespace
}  // namespace kivo
