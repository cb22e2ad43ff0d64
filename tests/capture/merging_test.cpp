#include "recorder_fixture.h"

namespace kivo::test {
namespace {

using CaptureMerging = RecorderTest;

TEST_F(CaptureMerging, WindowInFrontForTenTicksIsWrittenAsNineSecondsOnceUnseenPastTheGap) {
    const Filter unassigned = unassignedFilter();
    desktop.show(editorId, QStringLiteral("Text Editor"), QStringLiteral("notes.txt"));
    const Instant opened = clock.now() + Seconds{1.0};
    tickEverySecond(10);
    ASSERT_EQ(recorder.pendingCaptures().size(), 1u);
    EXPECT_EQ(recorder.pendingCaptures()[0].duration, 9.0) << "the first tick only opens it";

    desktop.show(editorId, QStringLiteral("Text Editor"), QStringLiteral("other.txt"));
    tickAfter(60.0);
    EXPECT_EQ(recorder.pendingCaptures().size(), 2u) << "a gap of exactly 60 s keeps it open";
    EXPECT_TRUE(activities().empty());
    tickAfter(1.0);
    ASSERT_EQ(recorder.pendingCaptures().size(), 1u);
    EXPECT_EQ(recorder.pendingCaptures()[0].title, QStringLiteral("other.txt"));

    const auto written = activities();
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(written[0].duration, 9);
    EXPECT_EQ(written[0].startAt, opened);
    EXPECT_EQ(written[0].endAt, opened + Seconds{9.0});
    EXPECT_EQ(written[0].title, QStringLiteral("notes.txt"));
    EXPECT_EQ(written[0].url, QString());
    EXPECT_EQ(written[0].filterId, unassigned.id);
    EXPECT_EQ(written[0].projectId, unassigned.projectId);
    EXPECT_EQ(written[0].appName, QStringLiteral("Text Editor"));
    EXPECT_EQ(written[0].appBundleId, editorId);
}

TEST_F(CaptureMerging, ReturnAfterAnAbsenceContinuesWithOnePeriodAndAddressesTellCapturesApart) {
    useBrowser(QStringLiteral("News"), QStringLiteral("https://a.example/"), 2);
    desktop.show(editorId, QStringLiteral("Text Editor"), QStringLiteral("notes.txt"));
    tickAfter(30.0);
    useBrowser(QStringLiteral("News"), QStringLiteral("https://a.example/"), 1);
    useBrowser(QStringLiteral("News"), QStringLiteral("https://b.example/"), 1);

    const auto& pending = recorder.pendingCaptures();
    ASSERT_EQ(pending.size(), 3u);
    EXPECT_EQ(pending[0].duration, 2.0 + 1.0 + 1.0) << "30 s away count as one period";
    EXPECT_EQ(pending[2].url, QStringLiteral("https://b.example/"));
}

TEST_F(CaptureMerging, LateTickCountsInFullUpToOneAndAHalfIntervals) {
    settings->setTimerInterval(5.0);
    desktop.show(editorId, QStringLiteral("Text Editor"), QStringLiteral("notes.txt"));
    tickAfter(1.0);
    tickAfter(7.0);
    EXPECT_EQ(recorder.pendingCaptures()[0].duration, 7.0);
    tickAfter(8.0);
    EXPECT_EQ(recorder.pendingCaptures()[0].duration, 12.0);
    tickAfter(7.5);
    EXPECT_EQ(recorder.pendingCaptures()[0].duration, 19.5);
    tickAfter(-100.0);
    EXPECT_EQ(recorder.pendingCaptures()[0].duration, 19.5) << "a clock set back adds nothing";
}

TEST_F(CaptureMerging, NothingClosesWhileNothingCanBeSampled) {
    unassignedFilter();
    useEditor(QStringLiteral("notes.txt"), 1);
    useEditor(QStringLiteral("todo.txt"), 1);
    desktop.frontmost.reset();
    tickEverySecond(120);
    EXPECT_EQ(recorder.pendingCaptures().size(), 2u);
    EXPECT_TRUE(activities().empty());

    useEditor(QStringLiteral("notes.txt"), 1);
    ASSERT_EQ(recorder.pendingCaptures().size(), 1u);
    EXPECT_EQ(recorder.pendingCaptures()[0].duration, 3.0);
    ASSERT_EQ(activities().size(), 1u);
    EXPECT_EQ(activities()[0].title, QStringLiteral("todo.txt"));
}

}  // namespace
}  // namespace kivo::test
