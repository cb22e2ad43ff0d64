// Whether the user is there, as the real sources read it: an X server's screen saver on a private
// Xvfb, and logind and the desktop's services faked on private D-Bus daemons.
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <QDeadlineTimer>
#include <QThread>
#include <cstdlib>

#include "desktop/presence/session_presence.h"
#include "desktop/x11/x11_screen_saver.h"
#include "e2e/fake_session_services.h"
#include "e2e/private_bus.h"
#include "e2e/scoped_process.h"
#include "e2e/xvfb_server.h"
#include "support/fake_desktop.h"

namespace kivo {
namespace {

using namespace Qt::StringLiterals;
using test::FakeServices;
using test::Inhibitor;
using test::PrivateBus;

// The screen saver blanking the screen.
TEST(X11ScreenSaver, ARunningScreenSaverLocks) {
    test::XvfbServer server;
    ASSERT_TRUE(server.isReady());
    QString failure;
    const auto saver = X11ScreenSaver::connect(server.displayName(), failure);
    ASSERT_NE(saver, nullptr) << failure.toStdString();
    ASSERT_TRUE(saver->idleTime().has_value());

    xcb_connection_t* other = xcb_connect(server.displayName().constData(), nullptr);
    const auto force = [other](std::uint8_t mode) {
        xcb_force_screen_saver(other, mode);
        std::free(xcb_get_input_focus_reply(other, xcb_get_input_focus(other), nullptr));
    };
    EXPECT_FALSE(saver->isLocked());
    force(XCB_SCREEN_SAVER_ACTIVE);
    EXPECT_TRUE(saver->isLocked());
    force(XCB_SCREEN_SAVER_RESET);
    EXPECT_FALSE(saver->isLocked());
    xcb_disconnect(other);
}

// The idle time is the server's count, as xprintidle shows it, and the pointer resets it.
TEST(X11ScreenSaver, IdleTimeIsTheServersCountAndInputResetsIt) {
    test::XvfbServer server;
    ASSERT_TRUE(server.isReady());
    QString failure;
    const auto saver = X11ScreenSaver::connect(server.displayName(), failure);
    ASSERT_NE(saver, nullptr) << failure.toStdString();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_s, QString::fromLatin1(server.displayName()));
    // The output of `program`, or nothing when it failed.
    const auto run = [&environment](const QString& program, const QStringList& arguments) {
        test::ScopedProcess command(program, arguments, environment);
        QProcess& process = command.process();
        const bool isDone = process.waitForFinished(30'000) &&
                            process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
        return isDone ? std::optional(process.readAllStandardOutput()) : std::nullopt;
    };
    // xprintidle's count in seconds; below 0 when it failed.
    const auto printedIdle = [&run] {
        bool isNumber = false;
        const auto output = run(u"xprintidle"_s, {});
        const double milliseconds = output ? output->trimmed().toDouble(&isNumber) : 0.0;
        return isNumber ? milliseconds / 1000.0 : -1.0;
    };

    double before = 0.0;
    for (const QDeadlineTimer deadline(20'000); (before = printedIdle()) < 1.5;
         QThread::msleep(100)) {
        ASSERT_GE(before, 0.0) << "xprintidle failed";
        ASSERT_FALSE(deadline.hasExpired()) << "the idle count never grew";
    }
    const auto idle = saver->idleTime();
    const double after = printedIdle();
    ASSERT_TRUE(idle.has_value());
    EXPECT_GE(idle->count(), before);
    EXPECT_LE(idle->count(), after);

    ASSERT_TRUE(run(u"xdotool"_s, {u"mousemove"_s, u"10"_s, u"20"_s}));
    const auto reset = saver->idleTime();
    ASSERT_TRUE(reset.has_value());
    EXPECT_LT(reset->count(), 1.0);
    const double printed = printedIdle();
    EXPECT_GE(printed, 0.0);
    EXPECT_LT(printed, before);
}

// Fake logind on a private "system" bus and fake desktop services on a private "session" bus.
class SessionPresenceTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(systemBus_.isReady() && sessionBus_.isReady());
        ASSERT_TRUE(system_.isConnected() && session_.isConnected());
    }
    void TearDown() override {
        QDBusConnection::disconnectFromBus(u"kivo-test-system"_s);
        QDBusConnection::disconnectFromBus(u"kivo-test-session"_s);
    }

    // The presence Kivo would build here; `display` stands in for the X server.
    SessionPresence presence() {
        const auto system =
            QDBusConnection::connectToBus(systemBus_.address(), u"kivo-test-system"_s);
        const auto session =
            QDBusConnection::connectToBus(sessionBus_.address(), u"kivo-test-session"_s);
        auto display = std::make_unique<test::FakePresence>();
        display_ = display.get();
        return SessionPresence(std::move(display), LogindSession::find(system, 4242),
                               SessionServices(session));
    }
    void addLogind() {
        manager_ = &system_.add<test::FakeLogindManager>(u"org.freedesktop.login1"_s,
                                                         u"/org/freedesktop/login1"_s);
        logindSession_ = &system_.add<test::FakeLogindSession>(u"org.freedesktop.login1"_s,
                                                               test::fakeSessionPath);
    }

    PrivateBus systemBus_;
    PrivateBus sessionBus_;
    FakeServices system_{systemBus_.address()};
    FakeServices session_{sessionBus_.address()};
    test::FakeLogindManager* manager_ = nullptr;
    test::FakeLogindSession* logindSession_ = nullptr;
    test::FakeScreenSaver& screenSaver_ = session_.add<test::FakeScreenSaver>(
        u"org.freedesktop.ScreenSaver"_s, u"/org/freedesktop/ScreenSaver"_s);
    test::FakePresence* display_ = nullptr;
};

TEST_F(SessionPresenceTest, LogindLocksWhereItHasTheSessionElseTheScreenSaverService) {
    {
        auto withoutLogind = presence();
        EXPECT_FALSE(withoutLogind.isLocked());
        screenSaver_.isActive = true;
        EXPECT_TRUE(withoutLogind.isLocked());
    }
    addLogind();
    auto withLogind = presence();
    EXPECT_FALSE(withLogind.isLocked()) << "the screen saver is not asked where logind answers";
    const struct {
        bool locked, active, displaySaver, expected;
    } cases[] = {{true, true, false, true},
                 {false, false, false, true},
                 {false, true, true, true},
                 {false, true, false, false}};
    for (const auto& c : cases) {
        logindSession_->isLocked = c.locked;
        logindSession_->isActive = c.active;
        display_->locked = c.displaySaver;
        EXPECT_EQ(withLogind.isLocked(), c.expected)
            << "locked " << c.locked << " active " << c.active << " saver " << c.displaySaver;
    }
}

TEST_F(SessionPresenceTest, IdleTimeFromTheDesktopWhereItCountsElseFromTheDisplay) {
    auto idle = presence();
    display_->idle = Seconds{12.0};
    EXPECT_EQ(idle.idleTime(), Seconds{12.0});
    auto& plasma = session_.add<test::FakeSessionIdleTime>(u"org.freedesktop.ScreenSaver"_s,
                                                           u"/ScreenSaver"_s);
    plasma.idleSeconds = 30;
    EXPECT_EQ(idle.idleTime(), Seconds{30.0});
    auto& monitor = session_.add<test::FakeIdleMonitor>(u"org.gnome.Mutter.IdleMonitor"_s,
                                                        u"/org/gnome/Mutter/IdleMonitor/Core"_s);
    monitor.idleMs = 420'500;
    EXPECT_EQ(idle.idleTime(), Seconds{420.5});
}

TEST_F(SessionPresenceTest, IdleInhibitorsAndPlayingMediaKeepTheUserPresent) {
    addLogind();
    auto& player = session_.add<test::FakePlayer>(u"org.mpris.MediaPlayer2.vlc"_s,
                                                  u"/org/mpris/MediaPlayer2"_s);
    auto inhibited = presence();
    const struct {
        QList<Inhibitor> inhibitors;
        bool playing;
        bool expected;
    } cases[] = {
        {{}, false, false},
        {{{u"sleep:idle"_s, u"Video"_s, u"Playing"_s, u"block"_s, 1000, 7}}, false, true},
        {{{u"idle"_s, u"Video"_s, u"Playing"_s, u"delay"_s, 1000, 7},
          {u"sleep:shutdown"_s, u"Updates"_s, u"Busy"_s, u"block"_s, 0, 1}},
         false,
         false},
        {{}, true, true},
    };
    for (const auto& c : cases) {
        manager_->setInhibitors(c.inhibitors);
        player.isPlaying = c.playing;
        EXPECT_EQ(inhibited.isIdleInhibited(), c.expected)
            << c.inhibitors.size() << " inhibitors, playing " << c.playing;
    }
}

}  // namespace
}  // namespace kivo
