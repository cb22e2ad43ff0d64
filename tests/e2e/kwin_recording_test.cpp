// The real `kivo` binary recording Qt windows in a private KWin, and the store it leaves.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include "desktop/kwin/kwin_desktop.h"
#include "e2e/kwin_session.h"
#include "e2e/recorded_store.h"
#include "model/application_settings.h"
#include "model/record_store.h"

namespace kivo {
namespace {

using test::KWinSession;
using test::ScopedProcess;

using test::expectActivities;
using test::ExpectedActivity;
using test::Moment;
using test::now;
using test::totalDuration;
using test::waitForStore;

// Kivo's environment in the KWin session: its own home, the session's bus and display, the
// session's data folder (the test window's entry and the script KWin's user can read), and
// nothing of an X server.
QProcessEnvironment kivoEnvironment(const QTemporaryDir& home, const KWinSession& session) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    environment.insert(QStringLiteral("WAYLAND_DISPLAY"),
                       QString::fromLocal8Bit(session.displayPath()));
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), session.busAddress());
    environment.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
    environment.insert(QStringLiteral("XDG_CURRENT_DESKTOP"), QStringLiteral("KDE"));
    environment.insert(QStringLiteral("HOME"), home.path());
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_DATA_DIRS"),
                       session.dataFolder() + QStringLiteral(":/usr/share"));
    return environment;
}

// Puts the window titled `title` in front and waits until KWin says it is, asking through Kivo's
// own backend (which gives the bus name back before Kivo starts); false after a generous deadline.
bool bringToFront(KWinSession& session, const QString& title) {
    XdgApplicationCatalog catalog(
        XdgEnvironment{QString(), QString(), session.dataFolder() + QStringLiteral(":/usr/share"),
                       QStringLiteral("C")});
    catalog.rescan();
    QString failure;
    const auto desktop =
        KWinDesktop::connect({session.bus(), session.scriptCopy(), &catalog}, failure);
    for (const QDeadlineTimer deadline(30'000); desktop && !deadline.hasExpired();
         QThread::msleep(100)) {
        QCoreApplication::processEvents();
        const auto window = desktop->focusedWindow();
        if (window && window->title == title) {
            return true;
        }
        // The window may not be mapped yet when first asked for.
        session.activate(title);
    }
    return false;
}

TEST(KWinRecordingTest, RecordsWhatTheUserLookedAtAndForHowLong) {
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    KWinSession session;
    ASSERT_TRUE(session.isReady());
    const auto one = session.startWaylandWindow(QStringLiteral("kivo-e2e-one"));
    const auto two = session.startWaylandWindow(QStringLiteral("kivo-e2e-two"));
    ASSERT_TRUE(bringToFront(session, QStringLiteral("kivo-e2e-two")));
    ASSERT_TRUE(bringToFront(session, QStringLiteral("kivo-e2e-one")));
    const auto focus = [&session](const char* title, Moment& moment) {
        moment.before = now();
        EXPECT_TRUE(session.activate(QString::fromLatin1(title)));
        moment.after = now();
    };
    ApplicationSettings::openFile(home.filePath(QStringLiteral("config/Kivo/Kivo.conf")))
        ->setMaximumGapLength(2.0);

    const QString storePath = home.filePath(QStringLiteral("data/Kivo/kivo.sqlite"));
    ScopedProcess kivo(QStringLiteral(KIVO_BINARY), {QStringLiteral("record")},
                       kivoEnvironment(home, session));
    ASSERT_TRUE(waitForStore(storePath)) << kivo.process().readAllStandardError().toStdString();
    const double ready = now();
    QThread::msleep(3'000);
    Moment toTwo, renamed, backToOne;
    focus("kivo-e2e-two", toTwo);
    QThread::msleep(3'000);
    renamed.before = now();
    ASSERT_GT(two->process().write("kivo-e2e-two-renamed\n"), 0);
    ASSERT_TRUE(two->process().waitForBytesWritten(5'000));
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
    const std::vector<ExpectedActivity> expected{
        {"kivo-e2e-one", KWinSession::windowAppId, "Kivo Test Window", {ready - 1.0, ready}, toTwo},
        {"kivo-e2e-two", KWinSession::windowAppId, "Kivo Test Window", toTwo, renamed},
        {"kivo-e2e-two-renamed", KWinSession::windowAppId, "Kivo Test Window", renamed, backToOne},
        {"kivo-e2e-one", KWinSession::windowAppId, "Kivo Test Window", backToOne, stopped}};
    // Each edge is seen up to a tick (1 s) late; a busy machine adds a little everywhere. The
    // title change travels through KWin and the script, so it may come later still.
    constexpr double lateness = 2.5;
    expectActivities(activities, expected, lateness);
    const std::int64_t recorded = totalDuration(activities);
    EXPECT_EQ(totalDuration(store->fetch<AppUsage>()), recorded);
    EXPECT_EQ(totalDuration(store->fetch<TagUsage>()), recorded);
}

}  // namespace
}  // namespace kivo
