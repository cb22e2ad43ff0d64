#include "ui/platform/x11_desktop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <memory>

#include "e2e/fake_window_manager.h"
#include "e2e/xvfb_server.h"
#include "ui/platform/desktop_fixtures.h"

namespace kivo {
namespace {

using test::FakeWindowManager;
using test::XvfbServer;

constexpr std::uint32_t xtermPid = 31337;

// The real backend against a private X server whose window manager the test plays, with
// applications and a /proc of the test's own making.
class X11DesktopTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(server_->isReady());
        manager_ = std::make_unique<FakeWindowManager>(server_->displayName());
        ASSERT_TRUE(manager_->isConnected());
        manager_->announce();
        test::writeFixtureFile(
            root_.filePath(QStringLiteral("data/applications/debian-xterm.desktop")),
            test::applicationEntry("XTerm",
                                   "Name[de]=X-Terminal\nStartupWMClass=XTerm\n"
                                   "Icon=mini.xterm\n"));
        desktop_ = connect();
        ASSERT_NE(desktop_, nullptr) << failure_.toStdString();
        desktop_->installedApplicationBundleIds();
    }

    std::unique_ptr<X11Desktop> connect() {
        return X11Desktop::connect(
            {server_->displayName(),
             {QString(), root_.filePath(QStringLiteral("data")),
              root_.filePath(QStringLiteral("no-system-data")), QStringLiteral("de_DE.UTF-8")},
             root_.filePath(QStringLiteral("proc"))},
            failure_);
    }

    // A window as xterm makes it: its process, its class, and the given title property.
    xcb_window_t xtermWindow(std::uint32_t pid = xtermPid) {
        const xcb_window_t window = manager_->createWindow();
        manager_->setCardinal(window, "_NET_WM_PID", pid);
        manager_->setText(window, "WM_CLASS", "STRING", QByteArrayView("xterm\0XTerm\0", 12));
        manager_->setActiveWindow(window);
        return window;
    }

    std::optional<QString> sampledTitle() {
        const auto application = desktop_->frontmostApplication();
        return application ? desktop_->focusedWindowTitle(*application) : std::nullopt;
    }

    QTemporaryDir root_;
    std::unique_ptr<XvfbServer> server_ = std::make_unique<XvfbServer>();
    std::unique_ptr<FakeWindowManager> manager_;
    std::unique_ptr<X11Desktop> desktop_;
    QString failure_;
};

TEST_F(X11DesktopTest, ReportsTheActiveWindowsApplicationAndTitle) {
    const auto window = xtermWindow();
    manager_->setText(window, "_NET_WM_NAME", "UTF8_STRING", "Café — 日本");
    manager_->setText(window, "WM_NAME", "STRING", "Not this one");
    manager_->sync();

    const auto application = desktop_->frontmostApplication();
    ASSERT_TRUE(application);
    EXPECT_EQ(application->processId, xtermPid);
    EXPECT_EQ(application->bundleId, QStringLiteral("debian-xterm"));
    EXPECT_EQ(application->localizedName, QStringLiteral("X-Terminal"));
    EXPECT_EQ(desktop_->focusedWindowTitle(*application), QStringLiteral("Café — 日本"));
    EXPECT_EQ(desktop_->applicationIconName(QStringLiteral("debian-xterm")),
              QStringLiteral("mini.xterm"));
}

TEST_F(X11DesktopTest, TitleFallsBackToWmNameInEachEncoding) {
    const auto window = xtermWindow();
    manager_->setText(window, "WM_NAME", "STRING", "Caf\xe9");
    manager_->sync();
    EXPECT_EQ(sampledTitle(), QStringLiteral("Café"));

    // JIS X 0208 in the right half, announced by its escape sequence.
    manager_->setText(window, "WM_NAME", "COMPOUND_TEXT", "A\xe9 \x1b$)B\xc6\xfc\xcb\xdc");
    manager_->sync();
    EXPECT_EQ(sampledTitle(), QStringLiteral("Aé 日本"));

    manager_->setText(window, "_NET_WM_NAME", "STRING", "Written by a tool \xbb");
    manager_->sync();
    EXPECT_EQ(sampledTitle(), QStringLiteral("Written by a tool »"));

    manager_->setText(window, "_NET_WM_NAME", "CARDINAL", "????");
    manager_->sync();
    EXPECT_EQ(sampledTitle(), QStringLiteral("Aé 日本"));
}

TEST_F(X11DesktopTest, WindowWithoutTitleHasNoTitle) {
    xtermWindow();
    const auto application = desktop_->frontmostApplication();
    ASSERT_TRUE(application);
    EXPECT_FALSE(desktop_->focusedWindowTitle(*application));
}

TEST_F(X11DesktopTest, TitleBelongsToTheSampledProcessOnly) {
    const auto window = xtermWindow();
    manager_->setText(window, "_NET_WM_NAME", "UTF8_STRING", "Shell");
    manager_->sync();
    auto application = desktop_->frontmostApplication();
    ASSERT_TRUE(application);
    application->processId += 1;
    EXPECT_FALSE(desktop_->focusedWindowTitle(*application));
}

TEST_F(X11DesktopTest, NoActiveWindowMeansNoSample) {
    EXPECT_FALSE(desktop_->frontmostApplication());
    manager_->setActiveWindow(XCB_WINDOW_NONE);
    EXPECT_FALSE(desktop_->frontmostApplication());

    const auto window = xtermWindow();
    manager_->destroyWindow(window);
    EXPECT_FALSE(desktop_->frontmostApplication());
}

TEST_F(X11DesktopTest, OwnWindowsAreNeverReported) {
    xtermWindow(static_cast<std::uint32_t>(::getpid()));
    EXPECT_FALSE(desktop_->frontmostApplication());
}

TEST_F(X11DesktopTest, UnknownApplicationHasNoIdentifier) {
    const auto window = manager_->createWindow();
    manager_->setText(window, "WM_CLASS", "STRING", QByteArrayView("tool\0Tool\0", 10));
    manager_->setText(window, "WM_NAME", "STRING", "Tool");
    manager_->setActiveWindow(window);

    const auto application = desktop_->frontmostApplication();
    ASSERT_TRUE(application);
    EXPECT_FALSE(application->bundleId);
    EXPECT_FALSE(application->localizedName);
}

TEST_F(X11DesktopTest, ProcessFactsComeBeforeTheWindowClass) {
    test::writeFixtureFile(
        root_.filePath(QStringLiteral("data/applications/org.gnome.Terminal.desktop")),
        test::applicationEntry("Terminal"));
    test::writeFixtureFile(
        root_.filePath(QStringLiteral("proc/%1/cgroup").arg(xtermPid)),
        "0::/user.slice/user@1000.service/app.slice/app-gnome-org.gnome.Terminal-9.scope\n");
    desktop_->installedApplicationBundleIds();
    xtermWindow();
    const auto application = desktop_->frontmostApplication();
    ASSERT_TRUE(application);
    EXPECT_EQ(application->bundleId, QStringLiteral("org.gnome.Terminal"));
}

TEST_F(X11DesktopTest, RequiresAnEwmhWindowManager) {
    XvfbServer bare;
    ASSERT_TRUE(bare.isReady());
    QString failure;
    EXPECT_EQ(X11Desktop::connect({bare.displayName(), {}, QStringLiteral("/proc")}, failure),
              nullptr);
    EXPECT_TRUE(failure.contains(QStringLiteral("no EWMH window manager")))
        << failure.toStdString();

    // Above the numbers the fixture's servers draw from.
    const QByteArray unused = ":39999";
    EXPECT_EQ(X11Desktop::connect({unused, {}, QStringLiteral("/proc")}, failure), nullptr);
    EXPECT_TRUE(failure.contains(QStringLiteral("cannot connect"))) << failure.toStdString();
}

TEST_F(X11DesktopTest, LostServerMeansNoSamplesUntilItComesBack) {
    const auto window = xtermWindow();
    manager_->setText(window, "WM_NAME", "COMPOUND_TEXT", "\x1b$)B\xc6\xfc");
    manager_->sync();
    ASSERT_EQ(sampledTitle(), QStringLiteral("日"));

    const int display = server_->displayNumber();
    manager_.reset();
    server_.reset();
    for (int tick = 0; tick < 3; ++tick) {
        EXPECT_FALSE(desktop_->frontmostApplication());
    }

    server_ = std::make_unique<XvfbServer>(display);
    ASSERT_TRUE(server_->isReady());
    manager_ = std::make_unique<FakeWindowManager>(server_->displayName());
    manager_->announce();
    const auto again = xtermWindow();
    manager_->setText(again, "WM_NAME", "COMPOUND_TEXT", "\x1b$)B\xcb\xdc");
    manager_->sync();
    EXPECT_EQ(sampledTitle(), QStringLiteral("本"));
}

}  // namespace
}  // namespace kivo
