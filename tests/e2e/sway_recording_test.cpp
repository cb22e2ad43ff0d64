// The real `kivo` binary recording foot windows in a private headless sway, and the store it
// leaves; away from the desk, sway's idle notifications pause it.
#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "e2e/fake_session_services.h"
#include "e2e/output_watch.h"
#include "e2e/private_bus.h"
#include "e2e/recorded_store.h"
#include "e2e/sway_session.h"
#include "e2e/sway_terminal.h"
#include "e2e/wayland_idle_inhibitor.h"
#include "model/application_settings.h"
#include "model/record_store.h"

namespace kivo {
namespace {

using test::OutputWatch;
using test::PrivateBus;
using test::ScopedProcess;
using test::SwaySession;
using test::SwayTerminal;

using test::expectActivities;
using test::ExpectedActivity;
using test::now;
using test::totalDuration;
using test::waitForStore;

// Kivo's environment in a sway session: its own home, the session's display and IPC socket,
// and nothing of an X server.
QProcessEnvironment kivoEnvironment(const QTemporaryDir& home, const QByteArray& display,
                                    const QByteArray& swaySocket, const QString& desktop) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    environment.insert(QStringLiteral("WAYLAND_DISPLAY"), QString::fromLocal8Bit(display));
    environment.insert(QStringLiteral("SWAYSOCK"), QString::fromLocal8Bit(swaySocket));
    environment.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
    environment.insert(QStringLiteral("XDG_CURRENT_DESKTOP"), desktop);
    environment.insert(QStringLiteral("HOME"), home.path());
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_DATA_DIRS"), QStringLiteral("/usr/share"));
    return environment;
}

TEST(SwayRecordingTest, EverySecondInFrontIsRecordedOnceUpToTheEnd) {
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    SwaySession session;
    ASSERT_TRUE(session.isReady());
    SwayTerminal one(session, QStringLiteral("kivo-e2e-one"));
    ASSERT_TRUE(session.waitForFocus(QStringLiteral("kivo-e2e-one")));
    SwayTerminal two(session, QStringLiteral("kivo-e2e-two"));
    ASSERT_TRUE(session.waitForFocus(QStringLiteral("kivo-e2e-two")));
    SwayTerminal three(session, QStringLiteral("kivo-e2e-three"));
    ASSERT_TRUE(session.waitForFocus(QStringLiteral("kivo-e2e-three")));
    const auto focus = [&session](const char* title) {
        return session
            .swaymsg({QStringLiteral("[title=\"^%1$\"] focus").arg(QString::fromLatin1(title))})
            .has_value();
    };
    ASSERT_TRUE(focus("kivo-e2e-one"));
    ApplicationSettings::openFile(home.filePath(QStringLiteral("config/Kivo/Kivo.conf")))
        ->setMaximumGapLength(2.0);

    const QString storePath = home.filePath(QStringLiteral("data/Kivo/kivo.sqlite"));
    ScopedProcess kivo(
        QStringLiteral(KIVO_BINARY), {QStringLiteral("record")},
        kivoEnvironment(home, session.displayPath(), session.swaySocket(), QStringLiteral("sway")));
    ASSERT_TRUE(waitForStore(storePath));
    const double ready = now();
    QThread::msleep(3'000);
    ASSERT_EQ(session.focusedTitle(), QStringLiteral("kivo-e2e-one"));

    // Every stretch outlasts the gap of 2 s, so that each is an activity of its own.
    const auto terminal = [&focus](const char* title, int dwellMs) {
        return test::Stretch{title, "foot", "Foot", [&focus, title] { return focus(title); },
                             dwellMs};
    };
    const auto rename = [&](SwayTerminal& window, const char* title, int dwellMs) {
        return test::Stretch{title, "foot", "Foot",
                             [&session, &window, title] {
                                 return window.retitle(QString::fromLatin1(title)) &&
                                        session.waitForFocus(QString::fromLatin1(title));
                             },
                             dwellMs};
    };
    auto expected = test::runSchedule({
        terminal("kivo-e2e-two", 6'000),
        terminal("kivo-e2e-three", 4'000),
        terminal("kivo-e2e-one", 8'000),
        terminal("kivo-e2e-two", 3'000),
        rename(two, "kivo-e2e-two-renamed", 7'000),
        terminal("kivo-e2e-three", 12'000),
        terminal("kivo-e2e-one", 5'000),
        terminal("kivo-e2e-two-renamed", 4'000),
        terminal("kivo-e2e-one", 10'000),
        terminal("kivo-e2e-three", 3'000),
    });
    // The last stretch ends with the signal; how long Kivo then takes to exit is no time in front.
    const double signalled = now();
    EXPECT_EQ(kivo.stop(SIGTERM), 0) << kivo.process().readAllStandardError().toStdString();
    expected.back().to = {signalled, signalled};
    expected.insert(expected.begin(),
                    {"kivo-e2e-one", "foot", "Foot", {ready - 1.0, ready}, expected.front().from});

    // The last stretch is still open when Kivo ends cleanly: it is recorded too.
    const auto store = RecordStore::open(storePath, RecordStore::Mode::ReadOnly);
    const auto activities = store->fetch<Activity>({"", {}, "startAt"});
    // Each edge is seen up to a tick (1 s) late; a busy machine adds a little everywhere.
    constexpr double lateness = 2.0;
    expectActivities(activities, expected, lateness);
    test::expectTimeInFront(activities, expected);
    const std::int64_t recorded = totalDuration(activities);
    EXPECT_EQ(totalDuration(store->fetch<AppUsage>()), recorded);
    EXPECT_EQ(totalDuration(store->fetch<TagUsage>()), recorded);
}

TEST(SwayRecordingTest, TimeAwayOrLockedAddsNothingAndAnIdleInhibitorKeepsTimeCounting) {
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    SwaySession session;
    ASSERT_TRUE(session.isReady());
    SwayTerminal terminal(session, QStringLiteral("kivo-e2e-idle"));
    ASSERT_TRUE(session.waitForFocus(QStringLiteral("kivo-e2e-idle")));
    const auto settings =
        ApplicationSettings::openFile(home.filePath(QStringLiteral("config/Kivo/Kivo.conf")));
    settings->setMaximumGapLength(2.0);
    // Long enough that input every few hundred milliseconds on a busy machine never looks idle.
    settings->setIdleTimeout(4.0);
    // Private buses, so that the session the tests run in (its lock, its idle time) plays no part.
    PrivateBus systemBus;
    PrivateBus sessionBus;
    ASSERT_TRUE(systemBus.isReady() && sessionBus.isReady());
    test::FakeServices logind(systemBus.address());
    logind.add<test::FakeLogindManager>(QStringLiteral("org.freedesktop.login1"),
                                        QStringLiteral("/org/freedesktop/login1"));
    auto& logindSession = logind.add<test::FakeLogindSession>(
        QStringLiteral("org.freedesktop.login1"), test::fakeSessionPath);
    QProcessEnvironment environment =
        kivoEnvironment(home, session.displayPath(), session.swaySocket(), QStringLiteral("sway"));
    environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), systemBus.address());
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), sessionBus.address());
    environment.remove(QStringLiteral("XDG_SESSION_ID"));

    // sway's own pointer command counts as input; each nudge waits a little after it.
    const auto nudge = [&session] {
        session.swaymsg({QStringLiteral("seat"), QStringLiteral("-"), QStringLiteral("cursor"),
                         QStringLiteral("move"), QStringLiteral("1"), QStringLiteral("1")});
        QThread::msleep(300);
    };
    const auto nudgeFor = [&](int ms) {
        for (const QDeadlineTimer deadline(ms); !deadline.hasExpired();) {
            nudge();
        }
    };
    nudge();
    const QString storePath = home.filePath(QStringLiteral("data/Kivo/kivo.sqlite"));
    ScopedProcess kivo(QStringLiteral(KIVO_BINARY), {QStringLiteral("record")}, environment);
    ASSERT_TRUE(waitForStore(storePath));
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
    nudgeFor(2'000);

    // Idle past the timeout, then three seconds more; the pointer brings the user back.
    ASSERT_TRUE(waitFor("Paused: away", 1, false));
    const double idlePaused = now();
    QThread::msleep(3'000);
    const double idleBack = now();
    ASSERT_TRUE(waitFor("Recording again", 1, true));
    nudgeFor(2'000);

    // Locked while the pointer keeps moving: the compositor leaves the window focused.
    logindSession.setLocked(true);
    ASSERT_TRUE(waitFor("Paused: away", 2, true));
    const double lockPaused = now();
    nudgeFor(3'000);
    const double unlocked = now();
    logindSession.setLocked(false);
    ASSERT_TRUE(waitFor("Recording again", 2, true));
    nudgeFor(2'000);

    // Without input for well beyond the timeout, but a client inhibits idleness.
    {
        test::WaylandIdleInhibitor inhibitor(session.displayPath());
        ASSERT_TRUE(inhibitor.isHolding());
        nudge();
        QThread::msleep(7'000);
        EXPECT_EQ(output.count("Paused: away"), 2) << "away although an idle inhibitor held";
    }
    nudgeFor(1'000);
    EXPECT_EQ(kivo.stop(SIGTERM), 0) << kivo.process().readAllStandardError().toStdString();

    // One capture from start to end, recorded at the clean end.
    const auto store = RecordStore::open(storePath, RecordStore::Mode::ReadOnly);
    const auto activities = store->fetch<Activity>({"", {}, "startAt"});
    ASSERT_EQ(activities.size(), 1u) << "the absences outlasted the gap, yet the capture ended";
    const Activity& activity = activities[0];
    EXPECT_EQ(activity.title, QStringLiteral("kivo-e2e-idle"));
    // Each absence was at least as long as seen here and adds one period on the return; how much
    // longer it was depends on when this test saw Kivo pause and return, hence a wide lower bound.
    const double span = toEpochSeconds(activity.endAt) - toEpochSeconds(activity.startAt);
    const double away = (idleBack - idlePaused) + (unlocked - lockPaused);
    const double duration = static_cast<double>(activity.duration);
    EXPECT_LE(duration, span - away + 2 * 1.0 + 1.0) << "span " << span << ", away " << away;
    EXPECT_GE(duration, span - away - 2 * 3.0 - 1.0) << "span " << span << ", away " << away;
    EXPECT_EQ(totalDuration(store->fetch<AppUsage>()), activity.duration);
}

TEST(SwayRecordingTest, OnAWaylandDesktopItCannotReadSaysSoInOneLineAndNeverFallsBackToX11) {
    QTemporaryDir home;
    test::PrivateBus sessionBus;
    ASSERT_TRUE(sessionBus.isReady());
    const std::pair<const char*, const char*> cases[] = {
        {"sway", "cannot connect to the Wayland display"},
        // Kivo installs and enables its GNOME Shell extension, which the shell loads at login.
        {"GNOME", "log out and in once"},
        {"KDE", "start Kivo from within the Plasma session"},
    };
    for (const auto& [desktop, message] : cases) {
        SCOPED_TRACE(desktop);
        QProcessEnvironment environment =
            kivoEnvironment(home, home.filePath(QStringLiteral("no-such-display")).toLocal8Bit(),
                            QByteArray(), QString::fromLatin1(desktop));
        // An X display beside the Wayland one is XWayland's, which sees only X clients.
        environment.insert(QStringLiteral("DISPLAY"), QStringLiteral(":0"));
        // A session bus of the test's own: the GNOME case must not enable its extension in the
        // settings of whoever runs the tests, and KWin is not on it.
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), sessionBus.address());
        ScopedProcess kivo(QStringLiteral(KIVO_BINARY), {QStringLiteral("record")}, environment);
        ASSERT_TRUE(kivo.process().waitForFinished(30'000));
        EXPECT_NE(kivo.process().exitCode(), 0);
        const QByteArray error = kivo.process().readAllStandardError();
        EXPECT_EQ(error.count('\n'), 1) << error.toStdString();
        EXPECT_TRUE(error.contains(message)) << error.toStdString();
        EXPECT_FALSE(QFile::exists(home.filePath(QStringLiteral("data/Kivo/kivo.sqlite"))));
    }
}

}  // namespace
}  // namespace kivo
