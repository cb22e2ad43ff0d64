#include "capture/recorder.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <chrono>
#include <functional>
#include <limits>
#include <map>

#include "model/local_day.h"
#include "model/unassigned_entries.h"
#include "support/captured_diagnostics.h"
#include "support/fake_desktop.h"
#include "support/manual_clock.h"
#include "support/temp_home.h"

namespace kivo::test {
namespace {

using namespace Qt::StringLiterals;

// A recorder on a fresh store and settings, with a scripted desktop and a clock the test moves.
class RecorderTest : public testing::Test {
protected:
    RecorderTest() { recorder.setInstalledApplications({editorId, chromeId, u"terminal"_s}); }

    void tickAfter(double seconds, int times = 1) {
        for (int tick = 0; tick < times; ++tick) {
            clock.advance(seconds);
            recorder.captureTick();
        }
    }
    // The editor shows `title` for `seconds` samples, one a second: the seconds are its once the
    // next sample comes.
    void useEditor(const QString& title, int seconds) {
        desktop.showEditor(title);
        tickAfter(1.0, seconds);
    }
    // Moves to a terminal `after` seconds past the last sample, then stays there for longer than
    // the default gap, so that earlier captures are written.
    void leaveForLongerThanTheGap(double after = 1.0) {
        desktop.show(u"terminal"_s, u"Terminal"_s, u"~"_s);
        tickAfter(after);
        tickAfter(61.0);
    }
    std::vector<Activity> activities() { return store->fetch<Activity>(live()); }
    template <class Total>
    std::vector<Total> totalsOn(QDate date) {
        return store->fetch<Total>(liveCreatedWithin(localDay(date)));
    }

    TempHome home;
    std::unique_ptr<RecordStore> store = home.openStore();
    std::unique_ptr<ApplicationSettings> settings = home.openSettings();
    ManualClock clock;
    FakeDesktop desktop;
    Recorder recorder{desktop.focus, desktop.tabs, *store, *settings, clock};
    const Filter unassigned = [this] {
        ensureUnassignedEntries(*store, clock.now());
        return store->fetch<Filter>(live()).front();
    }();
};

TEST_F(RecorderTest, TabInFrontForTenTicksIsWrittenAsTenSecondsOnceUnseenPastTheGap) {
    const Instant opened = clock.now() + Seconds{1.0};
    desktop.showTab(u"News"_s, u"https://a.example/"_s);
    tickAfter(1.0, 10);
    desktop.showTab(u"News"_s,
                    u"https://b.example/"_s);  // the same title elsewhere: another capture
    tickAfter(1.0);
    tickAfter(60.0);
    EXPECT_EQ(recorder.pendingCaptures().size(), 2u) << "a gap of exactly 60 s keeps it open";
    tickAfter(1.0);
    const auto written = activities();
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(written[0].duration, 10) << "the tenth second came with the next sample";
    EXPECT_EQ(written[0].startAt, opened);
    EXPECT_EQ(written[0].endAt, opened + Seconds{10.0});
    EXPECT_EQ(written[0].url, u"https://a.example/"_s);
    EXPECT_EQ(written[0].filterId, unassigned.id);
}

TEST_F(RecorderTest, SwitchGivesTheTimeBetweenTwoSamplesToTheWindowInFrontAtTheFirst) {
    useEditor(u"a.txt"_s, 3);
    useEditor(u"b.txt"_s, 2);
    useEditor(u"a.txt"_s, 2);  // back within the gap: the same capture, nothing for the return
    ASSERT_EQ(recorder.pendingCaptures().size(), 2u);
    EXPECT_EQ(recorder.pendingCaptures()[0].duration, 3.0 + 1.0) << "its last second is to come";
    EXPECT_EQ(recorder.pendingCaptures()[1].duration, 2.0) << "the second of the return";
    // A sample a little early or late, as a timer delivers them, is counted as it came; the
    // written seconds are the nearest whole ones.
    QSettings(home.settingsPath(), QSettings::NativeFormat)
        .setValue(u"minimumDurationToRecord"_s, 0.3);
    desktop.showEditor(u"c.txt"_s);
    tickAfter(0.6);
    leaveForLongerThanTheGap(0.4);
    const auto written = activities();
    ASSERT_EQ(written.size(), 3u);
    EXPECT_EQ(written[0].duration, 5) << "4.6 s";
    EXPECT_EQ(written[1].duration, 2);
    EXPECT_EQ(written[2].duration, 0) << "0.4 s, written with the minimum at 0.3 s";
}

TEST_F(RecorderTest, SecondsBeforeABrowserSaysItsTabAreTheTabsOrDroppedWhenAnotherWindowCame) {
    useEditor(u"notes.txt"_s, 2);
    const Instant browserCame = clock.now() + Seconds{1.0};
    desktop.show(chromeId, u"Google Chrome"_s, u"Mail - Google Chrome"_s);
    desktop.tabs.answer = BrowserCannotAnswer{};
    tickAfter(1.0, 3);
    desktop.tabs.answer = BrowserTab{u"Mail"_s, u"https://mail.example/"_s};
    tickAfter(1.0, 4);
    // Another tab, left before the browser could say which.
    desktop.show(chromeId, u"Google Chrome"_s, u"Bank - Google Chrome"_s);
    desktop.tabs.answer = BrowserCannotAnswer{};
    tickAfter(1.0, 2);
    leaveForLongerThanTheGap();
    const auto written = activities();
    ASSERT_EQ(written.size(), 2u);
    EXPECT_EQ(written[0].duration, 2);
    EXPECT_EQ(written[1].title, u"Mail"_s);
    EXPECT_EQ(written[1].duration, 3 + 4) << "three seconds waiting for the answer";
    EXPECT_EQ(written[1].startAt, browserCame);
}

TEST_F(RecorderTest, LateTickCountsInFullUpToOneAndAHalfIntervalsAndAnAbsenceOneInterval) {
    settings->setTimerInterval(5.0);
    useEditor(u"notes.txt"_s, 1);
    // Later than 7.5 s counts one interval; a clock set back adds nothing.
    const std::pair<double, double> lateAndTotal[] = {{7, 7}, {8, 12}, {7.5, 19.5}, {-100, 19.5}};
    for (const auto& [late, total] : lateAndTotal) {
        tickAfter(late);
        EXPECT_EQ(recorder.pendingCaptures()[0].duration, total) << "late by " << late;
    }
    useEditor(u"other.txt"_s, 1);
    desktop.focus.window.reset();
    tickAfter(1.0, 120);
    EXPECT_EQ(recorder.pendingCaptures().size(), 2u) << "nothing ends while nothing is sampled";
    useEditor(u"notes.txt"_s, 1);
    ASSERT_EQ(recorder.pendingCaptures().size(), 1u) << "other.txt was unseen past the gap";
    EXPECT_EQ(recorder.pendingCaptures()[0].duration, 20.5) << "the return adds nothing";
    ASSERT_EQ(activities().size(), 1u);
    EXPECT_EQ(activities()[0].duration, 5) << "121 s without a sample count one interval";
}

TEST_F(RecorderTest, MinimumDurationDecidesWhatIsKept) {
    // The minimum, written as by hand past the setter's floor (0 reads as the default of 1 s), and
    // how many activities there are once a capture of 0.9 s has ended.
    const std::pair<double, std::size_t> cases[] = {{1.0, 0}, {0.0, 0}, {0.5, 1}};
    for (const auto& [minimum, count] : cases) {
        QSettings(home.settingsPath(), QSettings::NativeFormat)
            .setValue(u"minimumDurationToRecord"_s, minimum);
        useEditor(u"notes.txt"_s, 1);
        leaveForLongerThanTheGap(0.9);
        EXPECT_EQ(activities().size(), count) << "minimum " << minimum;
    }
    EXPECT_EQ(activities().at(0).duration, 1) << "rounded";
}

TEST_F(RecorderTest, EveryAcceptingFilterGetsAnActivityAndWithoutUnassignedEntriesTheRestIsLost) {
    CapturedDiagnostics diagnostics;
    Filter deleted = unassigned;
    deleted.isDeleted = true;
    store->update(deleted);
    // In order: cuts the title; deleted; the editor's "notes"; needs the cut title and cuts the
    // address; needs "Work", which the first filter cut away.
    std::vector<Filter> filters(5, newRecord<Filter>(clock.now()));
    for (Filter& filter : filters) {
        filter.id = QUuid::createUuid();
        filter.projectId = QUuid::createUuid();
        filter.appBundleId = chromeId;
    }
    filters[0].isPreprocessTitleOn = true;
    filters[0].regexOfPreprocessTitle = u"[^-]+"_s;
    filters[1].isDeleted = true;
    filters[2].appBundleId = editorId;
    filters[2].appName = u"Notes"_s;
    filters[2].matchExpressionOfTitle = u"notes"_s;
    filters[3].matchExpressionOfTitle = u"Inbox "_s;
    filters[3].isPreprocessUrlOn = true;
    filters[3].regexOfPreprocessUrl = u"^https://[^.]+"_s;
    filters[4].matchExpressionOfTitle = u"Work"_s;
    for (const Filter& filter : filters) {
        store->insert(filter);
    }
    desktop.showTab(u"Inbox - Work - Mail"_s, u"https://mail.example.com/u/0"_s);
    tickAfter(1.0, 6);
    useEditor(u"notes.txt"_s, 2);
    useEditor(u"todo.txt"_s, 2);
    leaveForLongerThanTheGap();

    const auto written = activities();
    ASSERT_EQ(written.size(), 3u);
    EXPECT_EQ(written[0].filterId, filters[0].id);
    EXPECT_EQ(written[0].projectId, filters[0].projectId);
    EXPECT_EQ(written[0].url, u"https://mail.example.com/u/0"_s);
    EXPECT_EQ(written[1].filterId, filters[3].id);
    EXPECT_EQ(written[1].url, u"https://mail"_s);
    for (const Activity& browsing : {written[0], written[1]}) {
        EXPECT_EQ(browsing.title, u"Inbox "_s);
        EXPECT_EQ(browsing.domainName, u"mail.example.com"_s) << "taken before cutting";
    }
    EXPECT_EQ(written[2].filterId, filters[2].id);
    EXPECT_EQ(written[2].appName, u"Notes"_s) << "a filter's activity carries its app name";
    EXPECT_EQ(diagnostics.lines, QStringList(u"Fatal error: no unassigned project/filter"_s));
    EXPECT_EQ(recorder.pendingCaptures().size(), 1u) << "the unclaimed capture is gone too";
}

TEST_F(RecorderTest, DailyTotalsAddUpPerKeyOnTheDayTheCaptureStarted) {
    ScopedTimeZone tokyo("Asia/Tokyo");
    const QDate first(2024, 3, 10);
    clock.set(fromEpochSeconds(QDateTime(first, QTime(23, 59)).toSecsSinceEpoch()));
    desktop.showTab(u"A"_s, u"https://a.example/1"_s);
    tickAfter(1.0, 4);
    desktop.showTab(u"A"_s, u"https://a.example/2"_s);
    tickAfter(1.0, 61);  // runs past midnight
    leaveForLongerThanTheGap();
    useEditor(u"notes.txt"_s, 5);  // starts on the next day
    leaveForLongerThanTheGap();
    EXPECT_EQ(totalsOn<TagUsage>(first).at(0).duration, 4 + 61);
    EXPECT_EQ(totalsOn<AppUsage>(first).at(0).duration, 65);
    const auto webs = totalsOn<WebUsage>(first);
    EXPECT_EQ(webs.at(0).domainName, u"a.example"_s);
    EXPECT_EQ(webs.at(0).duration, 65) << "one total for both addresses";
    EXPECT_EQ(totalsOn<TagUsage>(first.addDays(1)).at(0).duration, 5);
}

TEST_F(RecorderTest, DayOfTwentyFiveHoursKeepsItsLastHour) {
    ScopedTimeZone berlin("Europe/Berlin");
    const QDate longDay(2023, 10, 29);
    clock.set(fromEpochSeconds(QDateTime(longDay, QTime(23, 30)).toSecsSinceEpoch()));
    useEditor(u"notes.txt"_s, 10);
    leaveForLongerThanTheGap();
    useEditor(u"notes.txt"_s, 10);
    leaveForLongerThanTheGap();
    ASSERT_EQ(totalsOn<TagUsage>(longDay).size(), 1u) << "the 25th hour finds its own total";
    EXPECT_EQ(totalsOn<TagUsage>(longDay)[0].duration, 20);
}

TEST_F(RecorderTest, FailedWriteIsRolledBackAndRetriedWithoutLoss) {
    CapturedDiagnostics diagnostics;
    SQLite::Database other(home.storePath().toStdString(), SQLite::OPEN_READWRITE);
    other.exec("CREATE TRIGGER no BEFORE INSERT ON TagUsage BEGIN SELECT RAISE(ABORT, 'x'); END");
    useEditor(u"notes.txt"_s, 3);
    leaveForLongerThanTheGap();
    EXPECT_TRUE(activities().empty()) << "the activity went with the failed total";
    ASSERT_EQ(diagnostics.lines.size(), 1);
    EXPECT_TRUE(diagnostics.lines[0].startsWith(u"Could not write"_s));

    other.exec("DROP TRIGGER no");
    // Retried at every tick until the store takes it; a store may need one more tick to recover.
    tickAfter(1.0, 2);
    ASSERT_EQ(activities().size(), 1u);
    EXPECT_EQ(activities()[0].duration, 3);
    EXPECT_EQ(totalsOn<TagUsage>(localDateOf(clock.now())).at(0).duration, 3);
    EXPECT_EQ(recorder.pendingCaptures().size(), 1u);
}

TEST_F(RecorderTest, CleanEndRecordsTheOpenCapturesThatLastedLongEnough) {
    // Two minutes among three windows with the default gap of 60 s: nothing has ended yet.
    for (int round = 0; round < 4; ++round) {
        for (const QString& title : {u"a.txt"_s, u"b.txt"_s, u"c.txt"_s}) {
            useEditor(title, 9);
        }
    }
    desktop.showEditor(u"just opened"_s);
    tickAfter(1.0);
    desktop.showEditor(u"opened last"_s);
    tickAfter(0.9);
    ASSERT_TRUE(activities().empty());
    ASSERT_EQ(recorder.pendingCaptures().size(), 5u);

    clock.advance(1.4);  // the end comes between two samples
    recorder.finish();
    std::map<QString, std::int64_t> durations;
    for (const Activity& activity : activities()) {
        durations[activity.title] += activity.duration;
    }
    const std::map<QString, std::int64_t> expected{
        {u"a.txt"_s, 4 * 9}, {u"b.txt"_s, 4 * 9}, {u"c.txt"_s, 4 * 9}, {u"opened last"_s, 1}};
    EXPECT_EQ(durations, expected) << "the capture of 0.9 s is too short";
    EXPECT_EQ(totalsOn<TagUsage>(localDateOf(clock.now())).at(0).duration, 109);
    EXPECT_TRUE(recorder.pendingCaptures().empty());
}

TEST_F(RecorderTest, HandWrittenSettingsThatCouldStopOrUnboundTheRecordingReadAsDefaults) {
    QFile file(home.settingsPath());
    ASSERT_TRUE(QDir().mkpath(QFileInfo(file).path()) && file.open(QIODevice::WriteOnly));
    file.write(
        "[General]\ntimerInterval=-1e308\nminimumDurationToRecord=nan\n"
        "maximumGapLength=1e308\n");
    file.close();
    useEditor(u"notes.txt"_s, 4);
    desktop.showEditor(u"short"_s);
    tickAfter(1.0);
    leaveForLongerThanTheGap(0.5);
    ASSERT_EQ(activities().size(), 1u) << "closed after 60 s; 0.5 s is below the 1 s minimum";
    EXPECT_EQ(activities()[0].duration, 4);
}

TEST_F(RecorderTest, WriteLockOfAnotherProgramCostsATickLittleAndLosesNothing) {
    CapturedDiagnostics diagnostics;
    useEditor(u"notes.txt"_s, 3);
    SQLite::Database other(home.storePath().toStdString(), SQLite::OPEN_READWRITE);
    other.exec("BEGIN IMMEDIATE");
    const auto started = std::chrono::steady_clock::now();
    leaveForLongerThanTheGap();
    // Generous for a loaded machine; a tick used to wait out a busy timeout of 5 s.
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(3));
    tickAfter(1.0, 3);
    EXPECT_EQ(recorder.pendingCaptures().size(), 2u) << "the ended capture waits in memory";
    EXPECT_EQ(diagnostics.lines.size(), 1) << "said once while it lasts";
    other.exec("COMMIT");
    tickAfter(1.0);
    ASSERT_EQ(activities().size(), 1u);
    EXPECT_EQ(activities()[0].duration, 3);
    EXPECT_EQ(recorder.pendingCaptures().size(), 1u);
}

TEST_F(RecorderTest, AfterAFailedWriteTheBacklogIsWrittenOneCaptureAtATime) {
    // Room for one more activity only, as on a disk that is nearly full.
    SQLite::Database other(home.storePath().toStdString(), SQLite::OPEN_READWRITE);
    other.exec(
        "CREATE TRIGGER full BEFORE INSERT ON Activity WHEN (SELECT count(*) FROM Activity) >= 1 "
        "BEGIN SELECT RAISE(ABORT, 'database or disk is full'); END");
    for (const QString& title : {u"a.txt"_s, u"b.txt"_s, u"c.txt"_s}) {
        useEditor(title, 2);
    }
    desktop.show(u"terminal"_s, u"Terminal"_s, u"~"_s);
    tickAfter(70.0);
    EXPECT_TRUE(activities().empty()) << "the tick's three captures did not fit together";
    tickAfter(1.0);
    ASSERT_EQ(activities().size(), 1u) << "the first fits on its own";
    EXPECT_EQ(activities()[0].title, u"a.txt"_s);
    EXPECT_EQ(recorder.pendingCaptures().size(), 3u);

    other.exec("DROP TRIGGER full");
    tickAfter(1.0);
    EXPECT_EQ(activities().size(), 3u);
    EXPECT_EQ(recorder.pendingCaptures().size(), 1u);
}

TEST_F(RecorderTest, ThousandSlowPatternsCostATickItsMatchingBudgetOnly) {
    CapturedDiagnostics diagnostics;
    auto claiming = newRecord<Filter>(clock.now());
    claiming.appBundleId = editorId;
    claiming.matchExpressionOfTitle = u"aaa"_s;
    store->insert(claiming);
    for (int i = 0; i < 1000; ++i) {
        auto slow = newRecord<Filter>(clock.now());
        slow.appBundleId = editorId;
        slow.matchExpressionOfTitle = u"(a+)+(%1)?$"_s.arg(i);
        slow.isTitleRegexOn = true;
        store->insert(slow);
    }
    store->save();
    const QString title = QString(36, u'a') + u'!';
    useEditor(title, 2);
    useEditor(title + u'!', 2);
    desktop.show(u"terminal"_s, u"Terminal"_s, u"~"_s);
    clock.advance(62.0);  // the one counted second and a gap of 61 s
    const auto started = std::chrono::steady_clock::now();
    recorder.captureTick();
    // Generous for a loaded machine; matching every pattern in full took seconds.
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(3));

    // The first capture is claimed by the filter tried before the slow ones; the budget is gone
    // before the second capture's turn, so it goes to the unassigned filter.
    const auto written = activities();
    ASSERT_EQ(written.size(), 2u);
    EXPECT_EQ(written[0].filterId, claiming.id);
    EXPECT_EQ(written[1].filterId, unassigned.id);
    const auto budgetLines = diagnostics.lines.filter(u"Matching ran out of its time"_s);
    ASSERT_EQ(budgetLines.size(), 2) << "one line per capture";
    EXPECT_TRUE(
        budgetLines[1].startsWith(u"Matching ran out of its time for this tick: 1002 of "
                                  u"1002 filters count as not matching"_s))
        << budgetLines[1].toStdString();
    EXPECT_LE(diagnostics.lines.size(), 2 + 10) << "a few patterns named, not a thousand";
}

TEST(Presence, LockedBeatsEverythingAndIdleNeedsATimeoutAnIdleTimeBeyondItAndNoInhibitor) {
    const struct {
        bool locked;
        std::optional<double> idle;
        bool inhibited;
        double timeout;
        Presence expected;
        int questions;  // asked lazily: a later question only when the earlier leave it open
    } cases[] = {
        {true, 900.0, true, 300.0, Presence::locked, 1},
        {false, 900.0, false, 0.0, Presence::present, 1},
        {false, 900.0, false, -1.0, Presence::present, 1},
        {false, 300.0, false, 300.0, Presence::present, 2},
        {false, std::nullopt, false, 300.0, Presence::present, 2},
        {false, 300.5, false, 300.0, Presence::idle, 3},
        {false, 300.5, true, 300.0, Presence::present, 3},
    };
    for (const auto& c : cases) {
        FakePresence presence;
        presence.locked = c.locked;
        if (c.idle) {
            presence.idle = Seconds{*c.idle};
        }
        presence.inhibited = c.inhibited;
        SCOPED_TRACE(testing::Message()
                     << "locked " << c.locked << " idle " << c.idle.value_or(-1) << " inhibited "
                     << c.inhibited << " timeout " << c.timeout);
        EXPECT_EQ(currentPresence(presence, c.timeout), c.expected);
        EXPECT_EQ(presence.questions, c.questions);
    }
}

// The same recorder, told whether the user is there.
class AwayTest : public RecorderTest {
protected:
    AwayTest() { recorder.watchPresence(presence, state); }

    // The editor shows other.txt, then notes.txt; the user leaves for ten minutes in the way
    // `goAway` sets, and comes back to notes.txt.
    void leaveAndReturn(const std::function<void()>& goAway) {
        useEditor(u"other.txt"_s, 1);
        useEditor(u"notes.txt"_s, 3);
        goAway();
        tickAfter(10.0, 60);
        EXPECT_TRUE(state.isAway());
        ASSERT_EQ(recorder.pendingCaptures().size(), 2u) << "nothing closes while away";
        EXPECT_EQ(recorder.pendingCaptures()[1].duration, 2.0) << "nothing is added";

        presence = FakePresence{};
        presence.idle = Seconds{0.5};
        tickAfter(1.0);
        EXPECT_FALSE(state.isAway());
        ASSERT_EQ(recorder.pendingCaptures().size(), 1u) << "other.txt ends on the return";
        EXPECT_EQ(recorder.pendingCaptures()[0].duration, 3.0) << "one period for the absence";
        leaveForLongerThanTheGap();
        const auto written = activities();
        ASSERT_EQ(written.size(), 2u);
        EXPECT_EQ(written[0].title, u"other.txt"_s);
        EXPECT_EQ(written[1].duration, 4);
    }

    FakePresence presence;
    ApplicationState state;
};

TEST_F(AwayTest, LockedScreenAddsNothingClosesNothingAndTheReturnAddsOnePeriod) {
    presence.idle = Seconds{0.0};
    leaveAndReturn([this] { presence.locked = true; });
}

TEST_F(AwayTest, IdleBeyondTheTimeoutAddsNothingClosesNothingAndInputAddsOnePeriod) {
    presence.idle = Seconds{0.0};
    leaveAndReturn([this] { presence.idle = Seconds{301.0}; });
}

TEST_F(AwayTest, AnInhibitorOrAZeroTimeoutKeepsIdleTimeCounting) {
    presence.idle = Seconds{3600.0};
    presence.inhibited = true;
    useEditor(u"film.mkv"_s, 6);
    EXPECT_EQ(recorder.pendingCaptures()[0].duration, 5.0);
    presence.inhibited = false;
    settings->setIdleTimeout(0.0);
    tickAfter(1.0, 5);
    EXPECT_EQ(recorder.pendingCaptures()[0].duration, 10.0);
    EXPECT_FALSE(state.isAway());
    settings->setIdleTimeout(3600.0);
    tickAfter(1.0);
    EXPECT_EQ(recorder.pendingCaptures()[0].duration, 11.0) << "exactly the timeout is not beyond";
}

TEST_F(AwayTest, EightHoursOfSuspendCountOnePeriod) {
    useEditor(u"notes.txt"_s, 4);
    // The machine sleeps; the key that wakes it is fresh input.
    clock.advance(8 * 3600.0);
    presence.idle = Seconds{0.2};
    recorder.captureTick();
    ASSERT_EQ(recorder.pendingCaptures().size(), 1u);
    EXPECT_EQ(recorder.pendingCaptures()[0].duration, 4.0);
}

using RecorderDeathTest = RecorderTest;

TEST_F(RecorderDeathTest, OverflowingTotalStopsTheProgram) {
    auto total = newRecord<TagUsage>(clock.now());
    total.projectId = unassigned.projectId;
    total.filterId = unassigned.id;
    total.duration = std::numeric_limits<std::int64_t>::max() - 2;
    store->insert(total);
    useEditor(u"notes.txt"_s, 3);
    EXPECT_DEATH(leaveForLongerThanTheGap(), "kivo: fatal: a duration sum overflows");
}

}  // namespace
}  // namespace kivo::test
