#include "desktop/hyprland/hyprland_desktop.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QThread>

#include "desktop/hyprland/scripted_hyprland.h"
#include "desktop/xdg/desktop_fixtures.h"

namespace kivo {
namespace {

using test::ScriptedHyprland;

TEST(HyprlandEventsTest, ActiveWindowFollowsTheEventsThatNameIt) {
    const struct {
        const char* line;
        const char* windowClass;  // nullptr: no active window afterwards
        const char* title;
        const char* address;
    } steps[] = {
        {"activewindow>>foot,~/src: make, then test", "foot", "~/src: make, then test", ""},
        {"activewindowv2>>55d2c0", "foot", "~/src: make, then test", "55d2c0"},
        {"windowtitle>>55d2c0", "foot", "~/src: make, then test", "55d2c0"},
        // A new title of the same window keeps its address; another class does not.
        {"activewindow>>foot,vim", "foot", "vim", "55d2c0"},
        {"activewindow>>firefox,Start", "firefox", "Start", ""},
        {"activewindowv2>>0x77aa", "firefox", "Start", "77aa"},
        {"closewindow>>55d2c0", "firefox", "Start", "77aa"},
        {"workspace>>2", "firefox", "Start", "77aa"},
        {"not an event", "firefox", "Start", "77aa"},
        {"closewindow>>77aa", nullptr, nullptr, nullptr},
        {"activewindow>>foot,", "foot", "", ""},
        {"activewindow>>,", nullptr, nullptr, nullptr},
        {"activewindow>>foot,a", "foot", "a", ""},
        {"activewindowv2>>,", nullptr, nullptr, nullptr},
    };
    std::optional<HyprlandActiveWindow> active;
    for (const auto& [line, windowClass, title, address] : steps) {
        SCOPED_TRACE(line);
        applyHyprlandEvent(line, active);
        ASSERT_EQ(active.has_value(), windowClass != nullptr);
        if (active) {
            EXPECT_EQ(active->windowClass, QString::fromUtf8(windowClass));
            EXPECT_EQ(active->title, QString::fromUtf8(title));
            EXPECT_EQ(active->address, QByteArray(address));
        }
    }
}

// The real backend against sockets the test plays Hyprland on; fixture desktop entries.
class HyprlandDesktopTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(hyprland_->isListening());
        const QString applications = root_.filePath(QStringLiteral("data/applications/"));
        test::writeFixtureFile(applications + QStringLiteral("foot.desktop"),
                               test::applicationEntry("Foot"));
        test::writeFixtureFile(applications + QStringLiteral("debian-xterm.desktop"),
                               test::applicationEntry("XTerm", "StartupWMClass=XTerm\n"));
        catalog_.rescan();
    }

    std::unique_ptr<HyprlandDesktop> connect() {
        QString failure;
        auto desktop = HyprlandDesktop::connect(
            {root_.path(), &catalog_, root_.filePath(QStringLiteral("proc"))}, failure);
        EXPECT_NE(desktop, nullptr) << failure.toStdString();
        return desktop;
    }

    QTemporaryDir root_;
    XdgApplicationCatalog catalog_{{QString(), root_.filePath(QStringLiteral("data")),
                                    root_.filePath(QStringLiteral("no-system-data")),
                                    QStringLiteral("C")}};
    std::unique_ptr<ScriptedHyprland> hyprland_ = std::make_unique<ScriptedHyprland>(root_.path());
};

TEST_F(HyprlandDesktopTest, FollowsTheEventsAndAsksForEachNewWindowsProcessOnce) {
    hyprland_->setActiveWindowReply(
        R"({"address":"0xaaa","class":"foot","title":"one","pid":4001})");
    const auto desktop = connect();
    ASSERT_NE(desktop, nullptr);
    const struct {
        QByteArray events;
        QByteArray reply;   // the request socket's answer from then on; empty: unchanged
        const char* title;  // nullptr: no sample
        const char* bundleId;
        std::int64_t processId;
        int requests;  // made so far
    } steps[] = {
        {"", "", "one", "foot", 4001, 1},
        {"activewindow>>XTerm,two\nactivewindowv2>>bbb\n",
         R"({"address":"0xbbb","class":"XTerm","title":"two","pid":4002})", "two", "debian-xterm",
         4002, 2},
        {"windowtitle>>bbb\nactivewindow>>XTerm,two, renamed\nactivewindowv2>>bbb\n", "",
         "two, renamed", "debian-xterm", 4002, 2},
        // A line that is not complete yet waits for its end.
        {"activewindow>>foot,thr", "", "two, renamed", "debian-xterm", 4002, 2},
        {"ee\nactivewindowv2>>ccc\n",
         R"({"address":"0xccc","class":"foot","title":"three","pid":4003})", "three", "foot", 4003,
         3},
        // The request socket names another window by now: no process rather than a wrong one.
        {"activewindow>>foot,four\nactivewindowv2>>ddd\n", "", "four", "foot", 0, 4},
        {"activewindow>>Unknown,tool\nactivewindowv2>>eee\n", "", nullptr, nullptr, 0, 5},
        {"activewindow>>,\nactivewindowv2>>,\n", "", nullptr, nullptr, 0, 5},
    };
    int number = 0;
    for (const auto& step : steps) {
        SCOPED_TRACE(++number);
        if (!step.reply.isEmpty()) {
            hyprland_->setActiveWindowReply(step.reply);
        }
        ASSERT_TRUE(step.events.isEmpty() || hyprland_->sendEvents(step.events));
        // The events are on their way through the socket; a few tries let them land.
        std::optional<FocusedWindow> window;
        for (int tries = 0; tries < 100; ++tries) {
            window = desktop->focusedWindow();
            if ((window ? window->title.toUtf8() : QByteArray()) ==
                (step.title ? QByteArray(step.title) : QByteArray())) {
                break;
            }
            QThread::msleep(10);
        }
        ASSERT_EQ(window.has_value(), step.title != nullptr);
        if (window) {
            EXPECT_EQ(window->title, QString::fromUtf8(step.title));
            EXPECT_EQ(window->bundleId, QString::fromUtf8(step.bundleId));
            EXPECT_EQ(window->processId, step.processId);
        }
        EXPECT_EQ(hyprland_->requestCount(), step.requests);
    }
}

TEST_F(HyprlandDesktopTest, NoSampleWhileHyprlandIsGoneAndAnswersAgainWhenItIsBack) {
    hyprland_->setActiveWindowReply(R"({"address":"0xaaa","class":"foot","title":"one","pid":7})");
    const auto desktop = connect();
    ASSERT_NE(desktop, nullptr);
    ASSERT_TRUE(desktop->focusedWindow());
    hyprland_.reset();
    for (int tick = 0; tick < 3; ++tick) {
        EXPECT_FALSE(desktop->focusedWindow());
    }
    hyprland_ = std::make_unique<ScriptedHyprland>(root_.path());
    hyprland_->setActiveWindowReply(R"({"address":"0xb","class":"XTerm","title":"back","pid":8})");
    const auto window = desktop->focusedWindow();
    ASSERT_TRUE(window);
    EXPECT_EQ(window->title, QStringLiteral("back"));

    QString failure;
    hyprland_.reset();
    EXPECT_FALSE(HyprlandDesktop::connect({root_.path(), &catalog_, QString()}, failure));
    EXPECT_TRUE(failure.contains(root_.path())) << failure.toStdString();
}

}  // namespace
}  // namespace kivo
