#include "desktop/wlroots/wlroots_desktop.h"

#include <gtest/gtest.h>

#include "e2e/sway_session.h"
#include "e2e/sway_terminal.h"

namespace kivo {
namespace {

using test::SwaySession;
using test::SwayTerminal;

// The real backend against a private headless sway with foot windows; foot's desktop entry comes
// from the system's applications folder.
class WlrootsDesktopTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(session_->isReady()) << logOf(*session_);
        catalog_.rescan();
        ASSERT_NE(catalog_.index().find(QStringLiteral("foot")), nullptr);
        QString failure;
        desktop_ = WlrootsDesktop::connect(
            {session_->displayPath(), &catalog_, QStringLiteral("/proc"), session_->swaySocket()},
            failure);
        ASSERT_NE(desktop_, nullptr) << failure.toStdString();
    }

    static std::string logOf(const SwaySession& session) {
        QFile log(session.logFile());
        return log.open(QIODevice::ReadOnly) ? log.readAll().toStdString() : std::string();
    }

    // Samples until the focused window's title is `title` (nothing: until there is no sample);
    // the last sample.
    std::optional<FocusedWindow> sampleUntil(const std::optional<QString>& title) {
        std::optional<FocusedWindow> window;
        for (const QDeadlineTimer deadline(20'000); !deadline.hasExpired(); QThread::msleep(50)) {
            window = desktop_->focusedWindow();
            if ((window ? std::optional(window->title) : std::nullopt) == title) {
                break;
            }
        }
        return window;
    }

    // Samples until the window titled `title` is in front; it must be `terminal`'s, named by its
    // desktop entry and, through sway's IPC, its process.
    void expectInFront(const QString& title, const SwayTerminal& terminal) {
        const auto window = sampleUntil(title);
        ASSERT_TRUE(window && window->title == title)
            << title.toStdString() << " never came to the front:\n"
            << logOf(*session_);
        EXPECT_EQ(window->bundleId, QStringLiteral("foot"));
        EXPECT_EQ(window->name, QStringLiteral("Foot"));
        EXPECT_EQ(window->processId, terminal.processId());
    }

    std::unique_ptr<SwaySession> session_ = std::make_unique<SwaySession>();
    XdgApplicationCatalog catalog_{
        XdgEnvironment{QString(), QString(), QStringLiteral("/usr/share"), QStringLiteral("C")}};
    std::unique_ptr<WlrootsDesktop> desktop_;
};

TEST_F(WlrootsDesktopTest, FollowsTheActivatedToplevelThroughOpeningRetitlingFocusAndClosing) {
    EXPECT_FALSE(desktop_->focusedWindow()) << "an empty desktop";

    SwayTerminal one(*session_, QStringLiteral("kivo-one"));
    expectInFront(QStringLiteral("kivo-one"), one);
    SwayTerminal two(*session_, QStringLiteral("kivo-two"));
    expectInFront(QStringLiteral("kivo-two"), two);

    ASSERT_TRUE(two.retitle(QStringLiteral("kivo-two-renamed")));
    expectInFront(QStringLiteral("kivo-two-renamed"), two);

    ASSERT_TRUE(session_->swaymsg({QStringLiteral("[title=\"^kivo-one$\"] focus")}));
    expectInFront(QStringLiteral("kivo-one"), one);

    one.close();
    expectInFront(QStringLiteral("kivo-two-renamed"), two);  // sway focuses the window left

    two.close();
    EXPECT_FALSE(sampleUntil(std::nullopt)) << "no window, no sample";
}

// An X client under XWayland is a toplevel like any other: its WM_CLASS names the application
// through the desktop entry's StartupWMClass, and sway's IPC gives its process.
TEST_F(WlrootsDesktopTest, NamesAnXWaylandWindowByItsDesktopEntry) {
    const QString display = session_->xwaylandDisplay();
    ASSERT_FALSE(display.isEmpty()) << logOf(*session_);
    ASSERT_NE(catalog_.index().find(QStringLiteral("debian-xterm")), nullptr);
    const auto xterm =
        session_->startClient(QStringLiteral("env"),
                              {QStringLiteral("DISPLAY=") + display, QStringLiteral("xterm"),
                               QStringLiteral("-T"), QStringLiteral("kivo-x"), QStringLiteral("-e"),
                               QStringLiteral("sleep"), QStringLiteral("600")});
    const auto window = sampleUntil(QStringLiteral("kivo-x"));
    ASSERT_TRUE(window && window->title == QStringLiteral("kivo-x")) << logOf(*session_);
    EXPECT_EQ(window->bundleId, QStringLiteral("debian-xterm"));
    EXPECT_EQ(window->name, QStringLiteral("XTerm"));
    EXPECT_EQ(window->processId, xterm->process().processId());
}

TEST_F(WlrootsDesktopTest, NoSampleOnceTheCompositorIsGone) {
    SwayTerminal one(*session_, QStringLiteral("kivo-one"));
    ASSERT_TRUE(sampleUntil(QStringLiteral("kivo-one")));
    session_.reset();
    // The broken connection is dropped and each tick tries again in vain, without failing.
    EXPECT_FALSE(sampleUntil(std::nullopt));
    for (int tick = 0; tick < 3; ++tick) {
        EXPECT_FALSE(desktop_->focusedWindow());
    }
}

}  // namespace
}  // namespace kivo
