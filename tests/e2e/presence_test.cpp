// Whether the user is there, as the real sources read it: an X server's screen saver on a private
// Xvfb, and logind and the desktop's services faked on private D-Bus daemons.
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
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

// Asks `question` as the recorder's ticks do, with the event loop running in between, until it
// answers `expected`; false when it still did not after ten seconds.
template <class Question, class Answer>
bool answersSoon(Question question, const Answer& expected) {
    for (const QDeadlineTimer deadline(10'000); !deadline.hasExpired(); QThread::msleep(10)) {
        if (question() == expected) {
            return true;
        }
        QCoreApplication::processEvents();
    }
    return false;
}

// Fake logind on a private "system" bus and fake desktop services on a private "session" bus.
// Each check of an answer first waits for the opposite one, so that no answer left from before
// a change passes for one given after it.
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
        const auto isLocked = [&withoutLogind] { return withoutLogind.isLocked(); };
        screenSaver_.setActive(true);
        EXPECT_TRUE(answersSoon(isLocked, true));
        screenSaver_.setActive(false);
        EXPECT_TRUE(answersSoon(isLocked, false));
        screenSaver_.setActive(true);
    }
    // The screen saver stays active: where logind answers, it is not asked.
    addLogind();
    auto withLogind = presence();
    const auto isLocked = [&withLogind] { return withLogind.isLocked(); };
    const auto set = [this](bool locked, bool active, bool displaySaver) {
        logindSession_->setLocked(locked);
        logindSession_->setActive(active);
        display_->locked = displaySaver;
    };
    const struct {
        bool locked, active, displaySaver, expected;
    } cases[] = {{false, true, false, false},
                 {true, true, false, true},
                 {false, false, false, true},
                 {false, true, true, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "locked " << c.locked << " active " << c.active
                                        << " saver " << c.displaySaver);
        set(!c.expected, true, false);
        ASSERT_TRUE(answersSoon(isLocked, !c.expected));
        set(c.locked, c.active, c.displaySaver);
        EXPECT_TRUE(answersSoon(isLocked, c.expected));
    }
}

// The desktop's services come after Kivo started, as they do when it starts with the session.
TEST_F(SessionPresenceTest, IdleTimeFromTheDesktopWhereItCountsElseFromTheDisplay) {
    auto presence = this->presence();
    const auto idleTime = [&presence] { return presence.idleTime(); };
    display_->idle = Seconds{12.0};
    EXPECT_TRUE(answersSoon(idleTime, std::optional(Seconds{12.0})));
    auto& plasma = session_.add<test::FakeSessionIdleTime>(u"org.freedesktop.ScreenSaver"_s,
                                                           u"/ScreenSaver"_s);
    plasma.idleSeconds = 30;
    EXPECT_TRUE(answersSoon(idleTime, std::optional(Seconds{30.0})));
    plasma.idleSeconds = 31;
    EXPECT_TRUE(answersSoon(idleTime, std::optional(Seconds{31.0}))) << "asked again on each tick";
    FakeServices gnome(sessionBus_.address());
    auto& monitor = gnome.add<test::FakeIdleMonitor>(u"org.gnome.Mutter.IdleMonitor"_s,
                                                     u"/org/gnome/Mutter/IdleMonitor/Core"_s);
    monitor.idleMs = 420'500;
    EXPECT_TRUE(answersSoon(idleTime, std::optional(Seconds{420.5})));
}

TEST_F(SessionPresenceTest, IdleInhibitorsAndPlayingMediaKeepTheUserPresent) {
    addLogind();
    auto& player = session_.add<test::FakePlayer>(u"org.mpris.MediaPlayer2.vlc"_s,
                                                  u"/org/mpris/MediaPlayer2"_s);
    auto presence = this->presence();
    const auto isInhibited = [&presence] { return presence.isIdleInhibited(); };
    const auto set = [&](const QList<Inhibitor>& inhibitors, bool playing) {
        manager_->setInhibitors(inhibitors);
        player.setPlaying(playing);
    };
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
        SCOPED_TRACE(testing::Message()
                     << c.inhibitors.size() << " inhibitors, playing " << c.playing);
        set({}, !c.expected);
        ASSERT_TRUE(answersSoon(isInhibited, !c.expected));
        set(c.inhibitors, c.playing);
        EXPECT_TRUE(answersSoon(isInhibited, c.expected));
    }
    // A player that quits plays no more.
    player.setPlaying(true);
    ASSERT_TRUE(answersSoon(isInhibited, true));
    session_.unregister(u"org.mpris.MediaPlayer2.vlc"_s);
    EXPECT_TRUE(answersSoon(isInhibited, false));
}

// Services that own their names but never answer hold up no tick, and the others still answer.
TEST_F(SessionPresenceTest, AHungServiceKeepsNoTickWaiting) {
    FakeServices hung(sessionBus_.address());
    for (const auto& name : {u"org.gnome.ScreenSaver"_s, u"org.gnome.Mutter.IdleMonitor"_s,
                             u"org.gnome.SessionManager"_s, u"org.mpris.MediaPlayer2.stuck"_s}) {
        hung.addHung(name);
    }
    screenSaver_.setActive(true);
    auto presence = this->presence();
    qint64 longestTickMs = 0;
    const auto tick = [&] {
        QElapsedTimer timer;
        timer.start();
        const bool isLocked = presence.isLocked();
        presence.idleTime();
        presence.isIdleInhibited();
        longestTickMs = std::max(longestTickMs, timer.elapsed());
        return isLocked;
    };
    EXPECT_TRUE(answersSoon(tick, true));
    // A few ticks more, with calls to the hung services outstanding.
    for (int i = 0; i < 5; ++i) {
        tick();
        QCoreApplication::processEvents();
    }
    EXPECT_LT(longestTickMs, 50);
}

}  // namespace
}  // namespace kivo
