// The real `kivo` binary recording foot windows in a private headless sway, and the store it
// leaves.
#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <numeric>

#include "e2e/private_bus.h"
#include "e2e/sway_session.h"
#include "e2e/sway_terminal.h"
#include "model/application_settings.h"
#include "model/record_store.h"

namespace kivo {
namespace {

using test::ScopedProcess;
using test::SwaySession;
using test::SwayTerminal;

// When a scripted change happened: some time between the command's start and its end.
struct Moment {
    double before = 0.0;
    double after = 0.0;
};

double now() {
    return toEpochSeconds(SystemClock().now());
}

template <class Record>
std::int64_t totalDuration(const std::vector<Record>& records) {
    return std::accumulate(records.begin(), records.end(), std::int64_t{0},
                           [](std::int64_t sum, const Record& r) { return sum + r.duration; });
}

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

TEST(SwayRecordingTest, RecordsWhatTheUserLookedAtAndForHowLong) {
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    SwaySession session;
    ASSERT_TRUE(session.isReady());
    SwayTerminal one(session, QStringLiteral("kivo-e2e-one"));
    ASSERT_TRUE(session.waitForFocus(QStringLiteral("kivo-e2e-one")));
    SwayTerminal two(session, QStringLiteral("kivo-e2e-two"));
    ASSERT_TRUE(session.waitForFocus(QStringLiteral("kivo-e2e-two")));
    const auto focus = [&session](const char* title, Moment& moment) {
        moment.before = now();
        EXPECT_TRUE(session.swaymsg(
            {QStringLiteral("[title=\"^%1$\"] focus").arg(QString::fromLatin1(title))}));
        moment.after = now();
    };
    Moment ignored;
    focus("kivo-e2e-one", ignored);
    ApplicationSettings::openFile(home.filePath(QStringLiteral("config/Kivo/Kivo.conf")))
        ->setMaximumGapLength(2.0);

    const QString storePath = home.filePath(QStringLiteral("data/Kivo/kivo.sqlite"));
    ScopedProcess kivo(
        QStringLiteral(KIVO_BINARY), {QStringLiteral("record")},
        kivoEnvironment(home, session.displayPath(), session.swaySocket(), QStringLiteral("sway")));
    // Kivo prepares its store just before it starts ticking; it may be half-created for a while.
    for (const QDeadlineTimer deadline(30'000);; QThread::msleep(100)) {
        try {
            if (QFile::exists(storePath) &&
                !RecordStore::open(storePath, RecordStore::Mode::ReadOnly)
                     ->fetch<Filter>()
                     .empty()) {
                break;
            }
        } catch (const StoreError&) {
        }
        ASSERT_FALSE(deadline.hasExpired()) << "Kivo prepared no store";
    }
    const double ready = now();
    QThread::msleep(3'000);
    ASSERT_EQ(session.focusedTitle(), QStringLiteral("kivo-e2e-one"));
    Moment toTwo, renamed, backToOne;
    focus("kivo-e2e-two", toTwo);
    QThread::msleep(3'000);
    renamed.before = now();
    ASSERT_TRUE(two.retitle(QStringLiteral("kivo-e2e-two-renamed")));
    ASSERT_TRUE(session.waitForFocus(QStringLiteral("kivo-e2e-two-renamed")));
    renamed.after = now();
    QThread::msleep(3'000);
    focus("kivo-e2e-one", backToOne);
    // Long enough for the renamed capture to be unseen for more than the gap of 2 s.
    QThread::msleep(4'500);
    Moment stopped;
    stopped.before = now();
    EXPECT_EQ(kivo.stop(SIGTERM), 0) << kivo.process().readAllStandardError().toStdString();
    stopped.after = now();

    // The second stretch of "one" is still open when Kivo ends cleanly: it is recorded too.
    const auto store = RecordStore::open(storePath, RecordStore::Mode::ReadOnly);
    const auto activities = store->fetch<Activity>({"", {}, "startAt"});
    ASSERT_EQ(activities.size(), 4u);
    const struct {
        const char* title;
        Moment from;
        Moment to;
    } expected[] = {{"kivo-e2e-one", {ready - 1.0, ready}, toTwo},
                    {"kivo-e2e-two", toTwo, renamed},
                    {"kivo-e2e-two-renamed", renamed, backToOne},
                    {"kivo-e2e-one", backToOne, stopped}};
    // Each edge is seen up to a tick (1 s) late; a busy machine adds a little everywhere.
    constexpr double lateness = 2.0;
    for (std::size_t i = 0; i < activities.size(); ++i) {
        const Activity& activity = activities[i];
        const auto& [title, from, to] = expected[i];
        SCOPED_TRACE(title);
        EXPECT_EQ(activity.title, QString::fromLatin1(title));
        EXPECT_EQ(activity.appBundleId, QStringLiteral("foot"));
        EXPECT_EQ(activity.appName, QStringLiteral("Foot"));
        const double startAt = toEpochSeconds(activity.startAt);
        const double endAt = toEpochSeconds(activity.endAt);
        EXPECT_GE(startAt, from.before);
        EXPECT_LE(startAt, from.after + lateness + (i == 0 ? 1.5 : 0.0));
        EXPECT_GE(endAt, to.before - lateness);
        EXPECT_LE(endAt, to.after);
        EXPECT_GE(activity.duration, 1);
    }
    const std::int64_t recorded = totalDuration(activities);
    EXPECT_EQ(totalDuration(store->fetch<AppUsage>()), recorded);
    EXPECT_EQ(totalDuration(store->fetch<TagUsage>()), recorded);
}

TEST(SwayRecordingTest, OnAWaylandDesktopItCannotReadSaysSoInOneLineAndNeverFallsBackToX11) {
    QTemporaryDir home;
    test::PrivateBus sessionBus;
    ASSERT_TRUE(sessionBus.isReady());
    const std::pair<const char*, const char*> cases[] = {
        {"sway", "cannot connect to the Wayland display"},
        // Kivo installs and enables its GNOME Shell extension, which the shell loads at login.
        {"GNOME", "log out and in once"},
        {"KDE", "Plasma (X11)"},
    };
    for (const auto& [desktop, message] : cases) {
        SCOPED_TRACE(desktop);
        QProcessEnvironment environment =
            kivoEnvironment(home, home.filePath(QStringLiteral("no-such-display")).toLocal8Bit(),
                            QByteArray(), QString::fromLatin1(desktop));
        // An X display beside the Wayland one is XWayland's, which sees only X clients.
        environment.insert(QStringLiteral("DISPLAY"), QStringLiteral(":0"));
        // A session bus of the test's own: the GNOME case must not enable its extension in the
        // settings of whoever runs the tests.
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
