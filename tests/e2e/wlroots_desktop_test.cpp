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

    std::unique_ptr<SwaySession> session_ = std::make_unique<SwaySession>();
    XdgApplicationCatalog catalog_{
        XdgEnvironment{QString(), QString(), QStringLiteral("/usr/share"), QStringLiteral("C")}};
    std::unique_ptr<WlrootsDesktop> desktop_;
};

TEST_F(WlrootsDesktopTest, FollowsTheActivatedToplevelThroughOpeningRetitlingFocusAndClosing) {
    EXPECT_FALSE(desktop_->focusedWindow()) << "an empty desktop";

    SwayTerminal one(*session_, QStringLiteral("kivo-one"));
    auto window = sampleUntil(QStringLiteral("kivo-one"));
    ASSERT_TRUE(window) << logOf(*session_);
    EXPECT_EQ(window->title, QStringLiteral("kivo-one"));
    EXPECT_EQ(window->bundleId, QStringLiteral("foot"));
    EXPECT_EQ(window->name, QStringLiteral("Foot"));
    EXPECT_EQ(window->processId, one.processId()) << "sway's IPC names the process";

    SwayTerminal two(*session_, QStringLiteral("kivo-two"));
    EXPECT_EQ(sampleUntil(QStringLiteral("kivo-two"))->title, QStringLiteral("kivo-two"))
        << "a new window takes the focus";
    EXPECT_EQ(desktop_->focusedWindow()->processId, two.processId());

    ASSERT_TRUE(two.retitle(QStringLiteral("kivo-two-renamed")));
    EXPECT_EQ(sampleUntil(QStringLiteral("kivo-two-renamed"))->title,
              QStringLiteral("kivo-two-renamed"));

    ASSERT_TRUE(session_->swaymsg({QStringLiteral("[title=\"^kivo-one$\"] focus")}));
    window = sampleUntil(QStringLiteral("kivo-one"));
    ASSERT_TRUE(window);
    EXPECT_EQ(window->title, QStringLiteral("kivo-one"));
    EXPECT_EQ(window->processId, one.processId());

    one.close();
    window = sampleUntil(QStringLiteral("kivo-two-renamed"));
    ASSERT_TRUE(window) << "sway gives the focus to the window left";
    EXPECT_EQ(window->processId, two.processId());

    two.close();
    EXPECT_FALSE(sampleUntil(std::nullopt)) << "no window, no sample";
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
