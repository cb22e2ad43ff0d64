// Firefox ESR, headless, with Kivo's extension beside its profile: the bridge learns its front tab
// through the real host. ESR honours a profile that lets unsigned extensions in.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "browser/browser_bridge.h"
#include "browser/browser_protocol.h"
#include "browser/host_manifests.h"
#include "e2e/firefox_profile.h"
#include "e2e/page_server.h"
#include "e2e/scoped_process.h"

namespace kivo {
namespace {

using namespace Qt::StringLiterals;

TEST(FirefoxBridgeTest, TheBridgeSeesTheFrontTabOfFirefoxEsr) {
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    const QString runtime = home.filePath(u"run"_s);
    ASSERT_TRUE(QDir().mkpath(runtime));
    ::chmod(QFile::encodeName(runtime).constData(), 0700);
    const SystemClock clock;
    QString failure;
    const auto bridge =
        BrowserBridge::listen({runtime + u"/kivo-browser.socket"_s, &clock}, failure);
    ASSERT_TRUE(bridge) << failure.toStdString();

    // Registered as Kivo does at start, once the browser's folder exists.
    ASSERT_TRUE(QDir().mkpath(home.filePath(u".mozilla"_s)));
    QStringList failures;
    ASSERT_EQ(writeHostManifests(QStringLiteral(KIVO_BROWSER_HOST),
                                 {home.filePath(u".config"_s), home.path()}, failures)
                  .size(),
              1);
    const QString profile = home.filePath(u"profile"_s);
    ASSERT_TRUE(test::writeFirefoxProfile(profile));

    test::PageServer pages;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"HOME"_s, home.path());
    environment.insert(u"XDG_RUNTIME_DIR"_s, runtime);
    environment.remove(u"DISPLAY"_s);
    test::ScopedProcess firefox(
        u"firefox-esr"_s,
        {u"--headless"_s, u"--no-remote"_s, u"--profile"_s, profile, pages.address(u"one"_s)},
        environment, home.filePath(u"firefox.log"_s));
    ASSERT_TRUE(firefox.isRunning());

    // No process named: the tab title in the window title decides.
    const FocusedWindow window{0, u"firefox-esr"_s, u"Firefox ESR"_s,
                               u"Page one — Mozilla Firefox"_s};
    BrowserTabAnswer answer = BrowserNotConnected{};
    for (const QDeadlineTimer deadline(90'000);
         !std::holds_alternative<BrowserTab>(answer) && !deadline.hasExpired();) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 200);
        answer = bridge->frontTab(window);
    }
    ASSERT_TRUE(std::holds_alternative<BrowserTab>(answer));
    EXPECT_EQ(std::get<BrowserTab>(answer).title, u"Page one"_s);
    EXPECT_EQ(std::get<BrowserTab>(answer).address, pages.address(u"one"_s));
}

}  // namespace
}  // namespace kivo
