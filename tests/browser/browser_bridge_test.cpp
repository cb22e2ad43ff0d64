// Kivo's bridge with a host played by a thread that answers its requests.
#include "browser/browser_bridge.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QElapsedTimer>
#include <QFile>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QtTest/QTest>

#include "model/instant.h"
#include "support/fake_browser_host.h"

namespace kivo::test {
namespace {

using namespace Qt::StringLiterals;
namespace protocol = browser_protocol;

constexpr qint64 browserPid = 4242;

class BrowserBridgeTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(runtime.isValid());
        QString failure;
        bridge = BrowserBridge::listen({socketPath(), &clock, std::chrono::milliseconds(1'500)},
                                       failure);
        ASSERT_TRUE(bridge) << failure.toStdString();
    }
    QString socketPath() const { return runtime.filePath(u"kivo-browser.socket"_s); }
    BrowserTabAnswer frontTab(const QString& title) {
        return bridge->frontTab({browserPid, u"chromium"_s, u"Chromium"_s, title});
    }

    QTemporaryDir runtime;
    SystemClock clock;
    std::unique_ptr<BrowserBridge> bridge;
};

TEST_F(BrowserBridgeTest, AsksTheBrowserWhenNothingFreshAnswersAndWaitsOnlyOncePerWindow) {
    EXPECT_TRUE(std::holds_alternative<BrowserNotConnected>(frontTab(u"News - Chromium"_s)));
    FakeBrowserHost host(socketPath(), browserPid, u"News"_s);
    // The hello arrives through the event loop; then the bridge asks and waits for the answer.
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return !std::holds_alternative<BrowserNotConnected>(frontTab(u"x"_s)); }, 20'000));
    const int asked = host.requests();
    const auto answer = frontTab(u"News - Chromium"_s);
    ASSERT_TRUE(std::holds_alternative<BrowserTab>(answer));
    EXPECT_EQ(std::get<BrowserTab>(answer).title, u"News"_s);
    EXPECT_EQ(std::get<BrowserTab>(answer).address, u"http://127.0.0.1/"_s);
    // Answered from the report that came back for "x"'s question: no new question.
    EXPECT_EQ(host.requests(), asked);

    // A window no tab matches is asked about once, then answered at once until its title changes.
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(std::holds_alternative<BrowserCannotAnswer>(frontTab(u"DevTools"_s)));
    EXPECT_GE(timer.elapsed(), 1'400);
    timer.restart();
    EXPECT_TRUE(std::holds_alternative<BrowserCannotAnswer>(frontTab(u"DevTools"_s)));
    EXPECT_LT(timer.elapsed(), 1'000);
}

TEST_F(BrowserBridgeTest, TheSocketIsTheUsersAloneAndASecondKivoLeavesItAlone) {
    struct stat status {};
    ASSERT_EQ(::stat(QFile::encodeName(socketPath()).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    EXPECT_EQ(protocol::socketRefusal(socketPath()), std::nullopt);
    QString failure;
    EXPECT_FALSE(BrowserBridge::listen({socketPath(), &clock}, failure));
    EXPECT_TRUE(failure.contains(u"another Kivo"_s)) << failure.toStdString();
    EXPECT_TRUE(QFile::exists(socketPath()));
}

}  // namespace
}  // namespace kivo::test
