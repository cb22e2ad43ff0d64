#include "desktop/kwin/kwin_desktop.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include "e2e/kwin_session.h"

namespace kivo {
namespace {

using test::KWinSession;

// The real backend and its script in a private KWin, with Qt windows on Wayland and an xterm
// through XWayland.
class KWinDesktopTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(session_->isReady()) << logOf(*session_);
        catalog_.rescan();
        ASSERT_NE(catalog_.index().find(QLatin1String(KWinSession::windowAppId)), nullptr);
        QString failure;
        desktop_ = KWinDesktop::connect(
            {session_->bus(), session_->scriptCopy(), &catalog_, QStringLiteral("/proc")}, failure);
        ASSERT_NE(desktop_, nullptr) << failure.toStdString() << logOf(*session_);
    }

    static std::string logOf(const KWinSession& session) {
        QFile log(session.logFile());
        return log.open(QIODevice::ReadOnly) ? log.readAll().toStdString() : std::string();
    }

    // Samples, letting the script's reports in between, until the focused window's title is
    // `title`; the last sample.
    std::optional<FocusedWindow> sampleUntil(const QString& title) {
        std::optional<FocusedWindow> window;
        for (const QDeadlineTimer deadline(30'000); !deadline.hasExpired(); QThread::msleep(50)) {
            QCoreApplication::processEvents();
            window = desktop_->focusedWindow();
            if (window && window->title == title) {
                break;
            }
        }
        return window;
    }

    // Samples until `owner`'s window is in front; nothing if it never comes.
    std::optional<FocusedWindow> sampleUntil(test::ScopedProcess& owner) {
        for (const QDeadlineTimer deadline(30'000); !deadline.hasExpired(); QThread::msleep(50)) {
            QCoreApplication::processEvents();
            auto window = desktop_->focusedWindow();
            if (window && window->processId == owner.process().processId()) {
                return window;
            }
        }
        return std::nullopt;
    }

    // The window titled `title` must come to the front, named by its desktop entry and owned by
    // `owner`'s process.
    void expectInFront(const QString& title, test::ScopedProcess& owner, const char* bundleId,
                       const char* name) {
        const auto window = sampleUntil(title);
        ASSERT_TRUE(window && window->title == title)
            << title.toStdString() << " never came to the front:\n"
            << logOf(*session_);
        EXPECT_EQ(window->bundleId, QLatin1String(bundleId));
        EXPECT_EQ(window->name, QLatin1String(name));
        EXPECT_EQ(window->processId, owner.process().processId());
    }

    void expectWaylandWindowInFront(const QString& title, test::ScopedProcess& owner) {
        expectInFront(title, owner, KWinSession::windowAppId, "Kivo Test Window");
    }

    std::unique_ptr<KWinSession> session_ = std::make_unique<KWinSession>();
    XdgApplicationCatalog catalog_{
        XdgEnvironment{QString(), QString(), session_->dataFolder() + QStringLiteral(":/usr/share"),
                       QStringLiteral("C")}};
    std::unique_ptr<KWinDesktop> desktop_;
};

TEST_F(KWinDesktopTest, FollowsTheActiveWindowThroughOpeningRetitlingFocusClosingAndXWayland) {
    QCoreApplication::processEvents();
    EXPECT_FALSE(desktop_->focusedWindow()) << "an empty desktop";

    const auto one = session_->startWaylandWindow(QStringLiteral("kivo-one"));
    expectWaylandWindowInFront(QStringLiteral("kivo-one"), *one);
    const auto two = session_->startWaylandWindow(QStringLiteral("kivo-two"));
    expectWaylandWindowInFront(QStringLiteral("kivo-two"), *two);

    two->process().write("kivo-two-renamed\n");
    expectWaylandWindowInFront(QStringLiteral("kivo-two-renamed"), *two);

    ASSERT_TRUE(session_->activate(QStringLiteral("kivo-one")));
    expectWaylandWindowInFront(QStringLiteral("kivo-one"), *one);

    // Closing the window in front hands the focus to the one left.
    one->stop(SIGTERM);
    expectWaylandWindowInFront(QStringLiteral("kivo-two-renamed"), *two);

    // A second window of the same title: KWin's caption tells them apart, the window's title not.
    const auto twin = session_->startWaylandWindow(QStringLiteral("kivo-two-renamed"));
    ASSERT_TRUE(twin->isRunning());
    const auto twinWindow = sampleUntil(*twin);
    ASSERT_TRUE(twinWindow) << logOf(*session_);
    EXPECT_EQ(twinWindow->title, QStringLiteral("kivo-two-renamed"));

    const auto xterm = session_->startXterm(QStringLiteral("kivo-xterm"));
    expectInFront(QStringLiteral("kivo-xterm"), *xterm, "debian-xterm", "XTerm");
}

}  // namespace
}  // namespace kivo
