#include <SQLiteCpp/SQLiteCpp.h>

#include <QDateTime>
#include <limits>

#include "model/local_day.h"
#include "recorder_fixture.h"

namespace kivo::test {
namespace {

using CaptureRecording = RecorderTest;

Instant localMoment(QDate date, QTime time) {
    return fromEpochSeconds(static_cast<double>(QDateTime(date, time).toSecsSinceEpoch()));
}

TEST_F(CaptureRecording, MinimumDurationDecidesWhatIsKept) {
    unassignedFilter();
    const auto closeCaptureOf = [this](double seconds) {
        desktop.show(editorId, QStringLiteral("Text Editor"), QStringLiteral("notes.txt"));
        tickAfter(1.0);
        tickAfter(seconds);
        leaveForLongerThanTheGap();
    };
    closeCaptureOf(0.9);
    writeSetting(QStringLiteral("minimumDurationToRecord"), 0.0);
    closeCaptureOf(0.9);
    EXPECT_TRUE(activities().empty());
    closeCaptureOf(1.0);
    ASSERT_EQ(activities().size(), 1u);
    EXPECT_EQ(activities()[0].duration, 1);

    writeSetting(QStringLiteral("minimumDurationToRecord"), 0.5);
    closeCaptureOf(0.9);
    ASSERT_EQ(activities().size(), 2u);
    EXPECT_EQ(activities()[1].duration, 0);
}

TEST_F(CaptureRecording, WithoutUnassignedEntriesOnlyClaimedCapturesAreWritten) {
    CapturedDiagnostics diagnostics;
    const Filter notes = insertFilter(
        editorId, [](Filter& filter) { filter.matchExpressionOfTitle = QStringLiteral("notes"); });
    useEditor(QStringLiteral("notes.txt"), 3);
    useEditor(QStringLiteral("todo.txt"), 3);
    EXPECT_TRUE(diagnostics.lines().isEmpty()) << "nothing ended yet";
    leaveForLongerThanTheGap();

    const auto written = activities();
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(written[0].filterId, notes.id);
    EXPECT_EQ(written[0].appName, notes.appName) << "a filter's activity carries its app name";
    EXPECT_EQ(diagnostics.lines(),
              QStringList(QStringLiteral("Fatal error: no unassigned project/filter")));
    EXPECT_EQ(recorder.pendingCaptures().size(), 1u) << "the unclaimed capture is gone too";
}

TEST_F(CaptureRecording, EveryAcceptingFilterGetsAnActivityWithTheTextsCutBeforeIt) {
    unassignedFilter();
    const Filter cutsTitle = insertFilter(chromeId, [](Filter& filter) {
        filter.isPreprocessTitleOn = true;
        filter.regexOfPreprocessTitle = QStringLiteral("[^-]+");
    });
    insertFilter(chromeId, [](Filter& filter) { filter.isDeleted = true; });
    insertFilter(editorId);
    const Filter cutsAddress = insertFilter(chromeId, [](Filter& filter) {
        filter.matchExpressionOfTitle = QStringLiteral("Inbox ");
        filter.isPreprocessUrlOn = true;
        filter.regexOfPreprocessUrl = QStringLiteral("^https://[^.]+");
    });
    insertFilter(chromeId,
                 [](Filter& filter) { filter.matchExpressionOfTitle = QStringLiteral("Work"); });
    useBrowser(QStringLiteral("Inbox - Work - Mail"),
               QStringLiteral("https://mail.example.com/u/0"), 5);
    leaveForLongerThanTheGap();

    const auto written = activities();
    ASSERT_EQ(written.size(), 2u);
    EXPECT_EQ(written[0].filterId, cutsTitle.id);
    EXPECT_EQ(written[0].projectId, cutsTitle.projectId);
    EXPECT_EQ(written[0].title, QStringLiteral("Inbox "));
    EXPECT_EQ(written[0].url, QStringLiteral("https://mail.example.com/u/0"));
    EXPECT_EQ(written[1].filterId, cutsAddress.id);
    EXPECT_EQ(written[1].title, QStringLiteral("Inbox "));
    EXPECT_EQ(written[1].url, QStringLiteral("https://mail"));
    for (const Activity& activity : written) {
        EXPECT_EQ(activity.duration, 5);
        EXPECT_EQ(activity.domainName, QStringLiteral("mail.example.com"))
            << "taken before cutting";
    }
    const QDate today = localDateOf(clock.now());
    EXPECT_EQ(totalsOf<TagUsage>(today).size(), 2u);
    EXPECT_EQ(totalsOf<AppUsage>(today).size(), 2u);
    EXPECT_EQ(totalsOf<WebUsage>(today).size(), 2u);
}

TEST_F(CaptureRecording, DailyTotalsAddUpPerKey) {
    const Filter unassigned = unassignedFilter();
    useBrowser(QStringLiteral("A"), QStringLiteral("https://a.example/1"), 3);
    useBrowser(QStringLiteral("B"), QStringLiteral("https://b.example/"), 4);
    leaveForLongerThanTheGap();
    useBrowser(QStringLiteral("A"), QStringLiteral("https://a.example/2"), 2);
    leaveForLongerThanTheGap();

    const QDate today = localDateOf(clock.now());
    const auto tags = totalsOf<TagUsage>(today);
    ASSERT_EQ(tags.size(), 1u);
    EXPECT_EQ(tags[0].duration, 9);
    EXPECT_EQ(tags[0].filterId, unassigned.id);
    EXPECT_EQ(tags[0].projectId, unassigned.projectId);
    const auto apps = totalsOf<AppUsage>(today);
    ASSERT_EQ(apps.size(), 1u);
    EXPECT_EQ(apps[0].duration, 9);
    EXPECT_EQ(apps[0].appName, QStringLiteral("Google Chrome"));
    EXPECT_EQ(apps[0].appBundleId, chromeId);
    const auto webs = totalsOf<WebUsage>(today);
    ASSERT_EQ(webs.size(), 2u);
    EXPECT_EQ(webs[0].domainName, QStringLiteral("a.example"));
    EXPECT_EQ(webs[0].duration, 5);
    EXPECT_EQ(webs[1].domainName, QStringLiteral("b.example"));
    EXPECT_EQ(webs[1].duration, 4);
}

TEST_F(CaptureRecording, CaptureRunningPastMidnightCountsOnTheDayItStarted) {
    ScopedTimeZone tokyo("Asia/Tokyo");
    const QDate first(2024, 3, 10);
    clock.set(localMoment(first, QTime(23, 59, 29)));
    unassignedFilter();
    useEditor(QStringLiteral("notes.txt"), 60);
    leaveForLongerThanTheGap();
    ASSERT_EQ(totalsOf<TagUsage>(first).size(), 1u);
    EXPECT_EQ(totalsOf<TagUsage>(first)[0].duration, 60);
    EXPECT_EQ(totalsOf<AppUsage>(first).size(), 1u);
    EXPECT_EQ(totalsOf<WebUsage>(first).size(), 1u);
    EXPECT_TRUE(totalsOf<TagUsage>(first.addDays(1)).empty());

    useEditor(QStringLiteral("notes.txt"), 5);
    leaveForLongerThanTheGap();
    EXPECT_EQ(totalsOf<TagUsage>(first)[0].duration, 60);
    ASSERT_EQ(totalsOf<TagUsage>(first.addDays(1)).size(), 1u);
    EXPECT_EQ(totalsOf<TagUsage>(first.addDays(1))[0].duration, 5);
}

TEST_F(CaptureRecording, DayOfTwentyFiveHoursKeepsItsLastHour) {
    ScopedTimeZone berlin("Europe/Berlin");
    const QDate longDay(2023, 10, 29);
    clock.set(localMoment(longDay, QTime(23, 30)));
    unassignedFilter();
    useEditor(QStringLiteral("notes.txt"), 10);
    leaveForLongerThanTheGap();
    useEditor(QStringLiteral("notes.txt"), 10);
    leaveForLongerThanTheGap();

    ASSERT_EQ(totalsOf<TagUsage>(longDay).size(), 1u) << "the 25th hour finds its own total";
    EXPECT_EQ(totalsOf<TagUsage>(longDay)[0].duration, 20);
    EXPECT_TRUE(totalsOf<TagUsage>(longDay.addDays(1)).empty());
}

TEST_F(CaptureRecording, FailedWriteIsRolledBackAndRetriedWithoutLoss) {
    CapturedDiagnostics diagnostics;
    unassignedFilter();
    SQLite::Database other(home.storePath().toStdString(), SQLite::OPEN_READWRITE);
    other.exec(
        "CREATE TRIGGER refuse_totals BEFORE INSERT ON TagUsage BEGIN SELECT RAISE(ABORT, 'full'); "
        "END");
    useEditor(QStringLiteral("notes.txt"), 3);
    leaveForLongerThanTheGap();
    EXPECT_TRUE(activities().empty()) << "the activity went with the failed total";
    ASSERT_EQ(diagnostics.lines().size(), 1);
    EXPECT_TRUE(diagnostics.lines()[0].startsWith(QStringLiteral("Could not write")));
    ASSERT_EQ(recorder.pendingCaptures().size(), 2u);
    EXPECT_TRUE(recorder.pendingCaptures()[0].isEnd);

    other.exec("DROP TRIGGER refuse_totals");
    // Retried at every tick until the store takes it; a store may need one more tick to recover.
    tickAfter(1.0);
    tickAfter(1.0);
    ASSERT_EQ(activities().size(), 1u);
    EXPECT_EQ(activities()[0].duration, 3);
    EXPECT_EQ(activities()[0].title, QStringLiteral("notes.txt"));
    EXPECT_EQ(totalsOf<TagUsage>(localDateOf(clock.now())).at(0).duration, 3);
    EXPECT_EQ(recorder.pendingCaptures().size(), 1u);
}

using CaptureRecordingDeathTest = RecorderTest;

TEST_F(CaptureRecordingDeathTest, OverflowingTotalOrDurationStopsTheProgram) {
    const Filter unassigned = unassignedFilter();
    auto total = newRecord<TagUsage>(clock.now());
    total.projectId = unassigned.projectId;
    total.filterId = unassigned.id;
    total.duration = std::numeric_limits<std::int64_t>::max() - 2;
    store->insert(total);
    store->save();
    EXPECT_DEATH(
        {
            useEditor(QStringLiteral("notes.txt"), 3);
            leaveForLongerThanTheGap();
        },
        "kivo: fatal: a duration sum overflows");

    settings->setTimerInterval(1e30);
    EXPECT_DEATH(
        {
            useEditor(QStringLiteral("notes.txt"), 0);
            tickAfter(1e19);
            desktop.show(terminalId, QStringLiteral("Terminal"), QStringLiteral("~"));
            tickAfter(1e19);
        },
        "kivo: fatal: a duration is not finite or does not fit");
}

}  // namespace
}  // namespace kivo::test
