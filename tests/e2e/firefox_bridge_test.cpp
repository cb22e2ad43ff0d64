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
#include "e2e/page_server.h"
#include "e2e/scoped_process.h"

namespace kivo {
namespace {

using namespace Qt::StringLiterals;

bool writeFile(const QString& path, const QByteArray& contents) {
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(contents) == contents.size();
}

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
    // The extension's folder named by a proxy file; unsigned extensions let in, none disabled.
    const QString profile = home.filePath(u"profile"_s);
    ASSERT_TRUE(writeFile(profile + u"/extensions/"_s + browser_protocol::firefoxExtensionId,
                          KIVO_EXTENSION_DIR));
    ASSERT_TRUE(writeFile(profile + u"/user.js"_s,
                          "user_pref(\"xpinstall.signatures.required\", false);\n"
                          "user_pref(\"extensions.autoDisableScopes\", 0);\n"
                          "user_pref(\"extensions.enabledScopes\", 15);\n"
                          "user_pref(\"browser.shell.checkDefaultBrowser\", false);\n"));

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
