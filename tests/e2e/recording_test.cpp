// The real `kivo` binary recording real terminals in a private X session, and the store it leaves.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include "e2e/fake_session_services.h"
#include "e2e/fake_window_manager.h"
#include "e2e/output_watch.h"
#include "e2e/private_bus.h"
#include "e2e/recorded_store.h"
#include "e2e/xvfb_server.h"
#include "model/application_settings.h"
#include "model/record_store.h"

namespace kivo {
namespace {

using test::OutputWatch;
using test::ScopedProcess;

using namespace Qt::StringLiterals;
using test::totalDuration;

// A fresh home with its own store, settings and X session; everything started here ends with it.
class RecordingTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(home_.isValid());
        ASSERT_TRUE(server_.isReady());
        // Run from a Wayland session, the tests still mean the private X server.
        ASSERT_TRUE(systemBus_.isReady() && sessionBus_.isReady());
        environment_.remove(QStringLiteral("WAYLAND_DISPLAY"));
        environment_.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("x11"));
        environment_.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(server_.displayName()));
        environment_.insert(QStringLiteral("HOME"), home_.path());
        environment_.insert(QStringLiteral("XDG_DATA_HOME"),
                            home_.filePath(QStringLiteral("data")));
        environment_.insert(QStringLiteral("XDG_CONFIG_HOME"),
                            home_.filePath(QStringLiteral("config")));
        // Where the xterm package puts debian-xterm.desktop.
        environment_.insert(QStringLiteral("XDG_DATA_DIRS"), QStringLiteral("/usr/share"));
        // Private buses, so that the session the tests run in (its lock, its idle time) plays no
        // part; a test may put fake services on them.
        environment_.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), systemBus_.address());
        environment_.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), sessionBus_.address());
        environment_.remove(QStringLiteral("XDG_SESSION_ID"));
    }

    bool waitForStore() { return test::waitForStore(storePath()); }

    QString storePath() const { return home_.filePath(QStringLiteral("data/Kivo/kivo.sqlite")); }
    QString logFile() const { return home_.filePath(QStringLiteral("session.log")); }

    // Starts `command` (space-separated) with its output going to the session log.
    void start(const QString& command) {
        const QStringList words = command.split(u' ');
        started_.push_back(
            std::make_unique<ScopedProcess>(words[0], words.mid(1), environment_, logFile()));
        EXPECT_TRUE(started_.back()->isRunning()) << command.toStdString();
    }

    // Runs xdotool with space-separated `arguments` and returns its output.
    QString xdotool(const QString& arguments) {
        ScopedProcess command(QStringLiteral("xdotool"), arguments.split(u' '), environment_);
        QProcess& process = command.process();
        EXPECT_TRUE(process.waitForFinished(30'000) &&
                    process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
            << arguments.toStdString() << ": " << process.readAllStandardError().toStdString();
        return QString::fromLatin1(process.readAllStandardOutput().trimmed());
    }

    bool startWindowManager() {
        start(QStringLiteral("openbox --sm-disable"));
        test::FakeWindowManager probe(server_.displayName());
        for (const QDeadlineTimer deadline(20'000); !probe.isManaged(); QThread::msleep(50)) {
            if (deadline.hasExpired()) {
                QFile log(logFile());
                ADD_FAILURE() << "openbox " << (started_[0]->isRunning() ? "runs" : "ended")
                              << ":\n"
                              << (log.open(QIODevice::ReadOnly) ? log.readAll().toStdString() : "");
                return false;
            }
        }
        return true;
    }

    // Opens an xterm titled `title`; returns its window once it is mapped and has the focus.
    QString openTerminal(const QString& title) {
        start(QStringLiteral("xterm -T %1 -e sleep 600").arg(title));
        return xdotool(QStringLiteral("search --sync --onlyvisible --name ^%1$").arg(title));
    }

    QTemporaryDir home_;
    test::XvfbServer server_;
    test::PrivateBus systemBus_;
    test::PrivateBus sessionBus_;
    QProcessEnvironment environment_ = QProcessEnvironment::systemEnvironment();
    std::vector<std::unique_ptr<ScopedProcess>> started_;
};

TEST_F(RecordingTest, EverySecondInFrontIsRecordedOnceUpToTheEnd) {
    ASSERT_TRUE(startWindowManager());
    const QString one = openTerminal(QStringLiteral("kivo-e2e-one"));
    const QString two = openTerminal(QStringLiteral("kivo-e2e-two"));
    const QString three = openTerminal(QStringLiteral("kivo-e2e-three"));
    ApplicationSettings::openFile(home_.filePath(QStringLiteral("config/Kivo/Kivo.conf")))
        ->setMaximumGapLength(2.0);
    {
        // A rule with a faulty pattern makes Kivo print a line for every capture it writes.
        auto faulty = newRecord<Filter>(SystemClock().now());
        faulty.appBundleId = QStringLiteral("debian-xterm");
        faulty.matchExpressionOfTitle = QStringLiteral("(");
        faulty.isTitleRegexOn = true;
        const auto store = RecordStore::open(storePath());
        store->insert(faulty);
        store->save();
    }

    xdotool(QStringLiteral("windowactivate --sync ") + one);
    // Kivo's standard output is a pipe whose reader has gone before it starts.
    int output[2];
    ASSERT_EQ(::pipe2(output, O_CLOEXEC), 0);
    ::close(output[0]);
    ScopedProcess kivo(QStringLiteral(KIVO_BINARY), {QStringLiteral("record")}, environment_,
                       QString(), [writeEnd = output[1]] { ::dup2(writeEnd, STDOUT_FILENO); });
    ::close(output[1]);
    ASSERT_TRUE(waitForStore());
    // The first tick may come before this poll has seen the store.
    const double ready = toEpochSeconds(SystemClock().now());
    QThread::msleep(3'000);
    ASSERT_EQ(xdotool(QStringLiteral("getactivewindow")), one)
        << "the window manager moved the focus during the warm-up";

    // Every stretch outlasts the gap of 2 s, so that each is an activity of its own.
    const auto terminal = [this](const char* title, const QString& window, int dwellMs) {
        return test::Stretch{title, "debian-xterm", "XTerm",
                             [this, window] {
                                 xdotool(u"windowactivate --sync "_s + window);
                                 return true;  // xdotool says what failed
                             },
                             dwellMs};
    };
    const auto rename = [this](const char* title, const QString& window, int dwellMs) {
        return test::Stretch{
            title, "debian-xterm", "XTerm",
            [this, title, window] {
                xdotool(u"set_window --name %1 %2"_s.arg(QString::fromLatin1(title), window));
                return true;
            },
            dwellMs};
    };
    auto expected = test::runSchedule({
        terminal("kivo-e2e-two", two, 6'000),
        terminal("kivo-e2e-three", three, 4'000),
        terminal("kivo-e2e-one", one, 8'000),
        terminal("kivo-e2e-two", two, 3'000),
        rename("kivo-e2e-two-renamed", two, 7'000),
        terminal("kivo-e2e-three", three, 12'000),
        terminal("kivo-e2e-one", one, 5'000),
        terminal("kivo-e2e-two-renamed", two, 4'000),
        terminal("kivo-e2e-one", one, 10'000),
        terminal("kivo-e2e-three", three, 3'000),
    });
    // A closed terminal ends Kivo cleanly; the diagnostics nobody could read cost it nothing.
    // The last stretch ends with the signal; how long Kivo then takes to exit is no time in front.
    const double signalled = toEpochSeconds(SystemClock().now());
    EXPECT_EQ(kivo.stop(SIGHUP), 0) << kivo.process().readAllStandardError().toStdString();
    expected.back().to = {signalled, signalled};
    expected.insert(
        expected.begin(),
        {"kivo-e2e-one", "debian-xterm", "XTerm", {ready - 1.0, ready}, expected.front().from});

    // The last stretch was still open at the end, and is recorded all the same.
    const auto store = RecordStore::open(storePath(), RecordStore::Mode::ReadOnly);
    const auto activities = store->fetch<Activity>({"", {}, "startAt"});
    // A tick comes once a second, so each edge is seen up to a tick late; a busy machine adds a
    // little everywhere.
    test::expectActivities(activities, expected, 1.5);
    test::expectTimeInFront(activities, expected);

    // The daily totals add up to the activities.
    const std::int64_t recorded = totalDuration(activities);
    EXPECT_EQ(totalDuration(store->fetch<AppUsage>()), recorded);
    EXPECT_EQ(totalDuration(store->fetch<TagUsage>()), recorded);
    EXPECT_EQ(totalDuration(store->fetch<WebUsage>()), recorded);
}

TEST_F(RecordingTest, SecondTrackerOfAStoreSaysSoInOneLineAndLeavesTheFirstRecording) {
    ASSERT_TRUE(startWindowManager());
    const QString other = openTerminal(QStringLiteral("kivo-e2e-other"));
    const QString solo = openTerminal(QStringLiteral("kivo-e2e-solo"));
    ApplicationSettings::openFile(home_.filePath(QStringLiteral("config/Kivo/Kivo.conf")))
        ->setMaximumGapLength(1.0);
    std::vector<std::unique_ptr<ScopedProcess>> trackers;
    for (int started = 0; started < 2; ++started) {  // at the same moment
        trackers.push_back(std::make_unique<ScopedProcess>(
            QStringLiteral(KIVO_BINARY), QStringList{QStringLiteral("record")}, environment_));
    }
    const auto refusedOne = [&]() -> ScopedProcess* {
        for (const auto& tracker : trackers) {
            // Waiting lets the process object notice that its program has ended.
            if (!tracker->isRunning() || tracker->process().waitForFinished(50)) {
                return tracker.get();
            }
        }
        return nullptr;
    };
    for (const QDeadlineTimer deadline(30'000); refusedOne() == nullptr; QThread::msleep(100)) {
        ASSERT_FALSE(deadline.hasExpired()) << "both trackers run";
    }
    ASSERT_TRUE(waitForStore());
    // One started while the first records is refused the same way.
    trackers.push_back(std::make_unique<ScopedProcess>(
        QStringLiteral(KIVO_BINARY), QStringList{QStringLiteral("record")}, environment_));
    ASSERT_TRUE(trackers.back()->process().waitForFinished(30'000));
    // Stretches of the solo window, each written once it is left for longer than the gap, until
    // one is in the store (a loaded machine may start ticking late).
    const auto activities = [this] {
        return RecordStore::open(storePath(), RecordStore::Mode::ReadOnly)
            ->fetch<Activity>({"", {}, "startAt"});
    };
    for (const QDeadlineTimer deadline(60'000); activities().empty();) {
        ASSERT_FALSE(deadline.hasExpired()) << "nothing recorded";
        QThread::msleep(2'500);
        xdotool(QStringLiteral("windowactivate --sync ") + other);
        // The gap counts from the sample that saw the switch: away for less than that and two
        // ticks, the solo window would continue its capture rather than start a new one.
        QThread::msleep(3'500);
        xdotool(QStringLiteral("windowactivate --sync ") + solo);
    }

    ScopedProcess* const refused = refusedOne();
    ScopedProcess* const recording =
        refused == trackers[0].get() ? trackers[1].get() : trackers[0].get();
    ASSERT_TRUE(recording->isRunning());
    for (ScopedProcess* second : {refused, trackers[2].get()}) {
        EXPECT_EQ(second->process().exitCode(), 1);
        const QByteArray error = second->process().readAllStandardError();
        EXPECT_EQ(error.count('\n'), 1) << error.toStdString();
        EXPECT_TRUE(error.contains("Kivo is already recording")) << error.toStdString();
    }
    EXPECT_EQ(recording->stop(SIGTERM), 0);

    const auto store = RecordStore::open(storePath(), RecordStore::Mode::ReadOnly);
    EXPECT_EQ(store->fetch<Project>().size(), 1u) << "one unassigned project";
    // One recorder: no span of time is written twice.
    const auto written = activities();
    for (std::size_t i = 1; i < written.size(); ++i) {
        EXPECT_GE(written[i].startAt, written[i - 1].endAt) << written[i].title.toStdString();
    }
}

TEST_F(RecordingTest, TimeAwayAddsNothingAndTheSameCaptureContinuesAfterwards) {
    test::FakeServices logind(systemBus_.address());
    logind.add<test::FakeLogindManager>(QStringLiteral("org.freedesktop.login1"),
                                        QStringLiteral("/org/freedesktop/login1"));
    auto& session = logind.add<test::FakeLogindSession>(QStringLiteral("org.freedesktop.login1"),
                                                        test::fakeSessionPath);
    ASSERT_TRUE(startWindowManager());
    const QString one = openTerminal(QStringLiteral("kivo-e2e-one"));
    const QString two = openTerminal(QStringLiteral("kivo-e2e-two"));
    const auto settings =
        ApplicationSettings::openFile(home_.filePath(QStringLiteral("config/Kivo/Kivo.conf")));
    settings->setMaximumGapLength(2.0);
    // Long enough that a slow pointer move on a busy machine never looks like idleness.
    settings->setIdleTimeout(5.0);
    xdotool(QStringLiteral("windowactivate --sync ") + one);

    // Pointer moves keep the X server's idle time short; each waits for a condition or a time.
    bool isLeft = false;
    const auto nudge = [&] {
        isLeft = !isLeft;
        xdotool(isLeft ? QStringLiteral("mousemove 100 100") : QStringLiteral("mousemove 200 200"));
        QThread::msleep(300);
    };
    const auto nudgeFor = [&](int ms) {
        for (const QDeadlineTimer deadline(ms); !deadline.hasExpired();) {
            nudge();
        }
    };
    nudge();
    ScopedProcess kivo(QStringLiteral(KIVO_BINARY), {QStringLiteral("record")}, environment_);
    ASSERT_TRUE(waitForStore());
    OutputWatch output(kivo);
    const auto waitFor = [&](const char* line, qsizetype times, bool isNudging) {
        for (const QDeadlineTimer deadline(30'000); output.count(line) < times;) {
            if (deadline.hasExpired()) {
                return false;
            }
            isNudging ? nudge() : QThread::msleep(100);
        }
        return true;
    };
    const auto now = [] { return toEpochSeconds(SystemClock().now()); };
    nudgeFor(3'000);

    // Idle past the timeout, then three seconds more; the pointer brings the user back.
    ASSERT_TRUE(waitFor("Paused: away", 1, false));
    const double idlePaused = now();
    QThread::msleep(3'000);
    const double idleBack = now();
    ASSERT_TRUE(waitFor("Recording again", 1, true));
    nudgeFor(2'000);

    // Locked while the pointer keeps moving.
    session.setLocked(true);
    ASSERT_TRUE(waitFor("Paused: away", 2, true));
    const double lockPaused = now();
    nudgeFor(3'000);
    const double unlocked = now();
    session.setLocked(false);
    ASSERT_TRUE(waitFor("Recording again", 2, true));
    nudgeFor(2'000);

    // Another window, long enough for the first one's capture to end and be written.
    xdotool(QStringLiteral("windowactivate --sync ") + two);
    nudgeFor(4'000);
    EXPECT_EQ(kivo.stop(SIGTERM), 0) << kivo.process().readAllStandardError().toStdString();

    const auto store = RecordStore::open(storePath(), RecordStore::Mode::ReadOnly);
    const auto activities = store->fetch<Activity>({"", {}, "startAt"});
    // The second window's capture is recorded at the clean end.
    ASSERT_EQ(activities.size(), 2u) << "both absences outlasted the gap, yet nothing ended";
    const Activity& first = activities[0];
    EXPECT_EQ(first.title, QStringLiteral("kivo-e2e-one"));
    EXPECT_EQ(activities[1].title, QStringLiteral("kivo-e2e-two"));
    // Each absence was at least as long as seen here and adds one period on the return; how
    // much longer it was depends on when this test saw Kivo pause, hence a wide lower bound.
    const double span = toEpochSeconds(first.endAt) - toEpochSeconds(first.startAt);
    const double away = (idleBack - idlePaused) + (unlocked - lockPaused);
    const double duration = static_cast<double>(first.duration);
    EXPECT_LE(duration, span - away + 2 * 1.0 + 1.0) << "span " << span << ", away " << away;
    EXPECT_GE(duration, span - away - 2 * 3.0 - 1.0) << "span " << span << ", away " << away;
    EXPECT_EQ(totalDuration(store->fetch<AppUsage>()), first.duration + activities[1].duration);
}

// Where GNOME is installed but not the desktop running, its screen saver is a service the session
// bus can start; a minute of recording, a tick a second, must not have the bus try once.
TEST_F(RecordingTest, AMinuteOfRecordingStartsNoDesktopService) {
    test::PrivateBus sessionBus({QStringLiteral("org.gnome.ScreenSaver")});
    ASSERT_TRUE(sessionBus.isReady());
    environment_.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), sessionBus.address());
    ASSERT_TRUE(startWindowManager());
    xdotool(QStringLiteral("windowactivate --sync ") +
            openTerminal(QStringLiteral("kivo-e2e-alone")));
    ScopedProcess kivo(QStringLiteral(KIVO_BINARY), {QStringLiteral("record")}, environment_);
    ASSERT_TRUE(waitForStore());
    QThread::msleep(60'000);
    EXPECT_EQ(kivo.stop(SIGTERM), 0) << kivo.process().readAllStandardError().toStdString();

    const QByteArray log = sessionBus.log();
    EXPECT_EQ(log.count("Activating service name='org.gnome.ScreenSaver'"), 0) << log.toStdString();
    // It did record all along.
    const auto activities = RecordStore::open(storePath(), RecordStore::Mode::ReadOnly)
                                ->fetch<Activity>({"", {}, "startAt"});
    ASSERT_EQ(activities.size(), 1u);
    EXPECT_GE(activities[0].duration, 50);
}

TEST_F(RecordingTest, WithoutADesktopToRecordSaysSoInOneLineAndRecordsNothing) {
    // :39999 is above the fixture's display numbers; no window manager runs on server_.
    const std::pair<QString, const char*> cases[] = {
        {QString(), "DISPLAY"},
        {QStringLiteral(":39999"), "cannot connect"},
        {QString::fromLatin1(server_.displayName()), "no EWMH window manager"}};
    for (const auto& [display, message] : cases) {
        SCOPED_TRACE(message);
        environment_.insert(QStringLiteral("DISPLAY"), display);
        ScopedProcess kivo(QStringLiteral(KIVO_BINARY), {QStringLiteral("record")}, environment_);
        ASSERT_TRUE(kivo.process().waitForFinished(30'000));
        EXPECT_NE(kivo.process().exitCode(), 0);
        const QByteArray error = kivo.process().readAllStandardError();
        EXPECT_EQ(error.count('\n'), 1) << error.toStdString();
        EXPECT_TRUE(error.contains(message)) << error.toStdString();
        EXPECT_FALSE(QFile::exists(storePath()));
    }
}

}  // namespace
}  // namespace kivo
