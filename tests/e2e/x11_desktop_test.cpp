#include "desktop/x11/x11_desktop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <memory>

#include "desktop/xdg/desktop_fixtures.h"
#include "e2e/fake_window_manager.h"
#include "e2e/xvfb_server.h"

namespace kivo {
namespace {

using test::FakeWindowManager;
using test::XvfbServer;

constexpr std::uint32_t xtermPid = 31337;

// The real backend on a private X server whose window manager the test plays; fixture /proc.
class X11DesktopTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(server_->isReady());
        manager_ = std::make_unique<FakeWindowManager>(server_->displayName());
        manager_->announce();
        test::writeFixtureFile(
            root_.filePath(QStringLiteral("data/applications/debian-xterm.desktop")),
            test::applicationEntry("XTerm",
                                   "Name[de]=X-Terminal\nStartupWMClass=XTerm\n"
                                   "Icon=mini.xterm\n"));
        catalog_.rescan();
        QString failure;
        desktop_ = X11Desktop::connect(
            {server_->displayName(), &catalog_, root_.filePath(QStringLiteral("proc"))}, failure);
        ASSERT_NE(desktop_, nullptr) << failure.toStdString();
    }

    // A window as xterm makes it (its process and class, no title), made the active one.
    xcb_window_t xtermWindow(std::uint32_t pid = xtermPid) {
        const xcb_window_t window = manager_->createWindow();
        manager_->setCardinal(window, "_NET_WM_PID", pid);
        manager_->setText(window, "WM_CLASS", "STRING", QByteArrayView("xterm\0XTerm\0", 12));
        manager_->setActiveWindow(window);
        return window;
    }

    std::optional<QString> sampledTitle() {
        const auto window = desktop_->focusedWindow();
        return window ? std::optional(window->title) : std::nullopt;
    }

    QTemporaryDir root_;
    XdgApplicationCatalog catalog_{{QString(), root_.filePath(QStringLiteral("data")),
                                    root_.filePath(QStringLiteral("no-system-data")),
                                    QStringLiteral("de_DE.UTF-8")}};
    std::unique_ptr<XvfbServer> server_ = std::make_unique<XvfbServer>();
    std::unique_ptr<FakeWindowManager> manager_;
    std::unique_ptr<X11Desktop> desktop_;
};

TEST_F(X11DesktopTest, NoActiveWindowOwnWindowOrUntitledWindowMeansNoSample) {
    EXPECT_FALSE(desktop_->focusedWindow());
    manager_->setActiveWindow(XCB_WINDOW_NONE);
    EXPECT_FALSE(desktop_->focusedWindow());
    manager_->setActiveWindow(0x00abcdef);  // a window that does not exist (any more)
    EXPECT_FALSE(desktop_->focusedWindow());
    const auto own = xtermWindow(static_cast<std::uint32_t>(::getpid()));
    manager_->setText(own, "WM_NAME", "STRING", "Kivo");
    EXPECT_FALSE(desktop_->focusedWindow());

    const auto window = xtermWindow();
    EXPECT_FALSE(desktop_->focusedWindow()) << "a window without a title";
    manager_->setText(window, "WM_CLASS", "STRING", QByteArrayView("tool\0Tool\0", 10));
    manager_->setText(window, "WM_NAME", "STRING", "t");
    EXPECT_FALSE(desktop_->focusedWindow()) << "an application without a desktop entry";
}

TEST_F(X11DesktopTest, ReportsTheApplicationAndTheTitleInEachEncodingUntilTheServerIsLost) {
    const auto window = xtermWindow();
    manager_->setText(window, "WM_NAME", "STRING", "Caf\xe9");
    const auto focused = desktop_->focusedWindow();
    ASSERT_TRUE(focused);
    EXPECT_EQ(focused->processId, xtermPid);
    EXPECT_EQ(focused->bundleId, QStringLiteral("debian-xterm"));
    EXPECT_EQ(focused->name, QStringLiteral("X-Terminal"));
    EXPECT_EQ(focused->title, QStringLiteral("Café"));
    EXPECT_EQ(catalog_.iconName(focused->bundleId), QStringLiteral("mini.xterm"));

    // JIS X 0208 in the right half, announced by its escape sequence.
    manager_->setText(window, "WM_NAME", "COMPOUND_TEXT", "A\xe9 \x1b$)B\xc6\xfc\xcb\xdc");
    EXPECT_EQ(sampledTitle(), QStringLiteral("Aé 日本"));
    manager_->setText(window, "_NET_WM_NAME", "UTF8_STRING", "Caf\xc3\xa9 \xe2\x80\x94");
    EXPECT_EQ(sampledTitle(), QStringLiteral("Café —")) << "_NET_WM_NAME comes first";
    manager_->setText(window, "_NET_WM_NAME", "CARDINAL", "????");
    EXPECT_EQ(sampledTitle(), QStringLiteral("Aé 日本"));

    const int display = server_->displayNumber();
    manager_.reset();
    server_.reset();
    for (int tick = 0; tick < 3; ++tick) {
        EXPECT_FALSE(desktop_->focusedWindow());
    }
    server_ = std::make_unique<XvfbServer>(display);
    ASSERT_TRUE(server_->isReady());
    manager_ = std::make_unique<FakeWindowManager>(server_->displayName());
    manager_->announce();
    manager_->setText(xtermWindow(), "WM_NAME", "COMPOUND_TEXT", "\x1b$)B\xcb\xdc");
    EXPECT_EQ(sampledTitle(), QStringLiteral("本"));
}

}  // namespace
}  // namespace kivo
