#include "desktop/gnome/gnome_desktop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <QThread>

#include "desktop/gnome/fake_focus_extension.h"
#include "desktop/xdg/desktop_fixtures.h"
#include "e2e/private_bus.h"

namespace kivo {
namespace {

using test::FakeFocusExtension;

class GnomeDesktopTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(bus_.isReady());
        const QString applications = data_.filePath(QStringLiteral("applications"));
        test::writeFixtureFile(applications + u"/org.gnome.TextEditor.desktop",
                               test::applicationEntry("Text Editor"));
        test::writeFixtureFile(applications + u"/foot.desktop",
                               test::applicationEntry("Foot", "StartupWMClass=foot\n"));
        catalog_.rescan();
        ASSERT_TRUE(client_.isConnected());
    }

    void TearDown() override { QDBusConnection::disconnectFromBus(QStringLiteral("kivo")); }

    std::unique_ptr<GnomeDesktop> open(QString& failure) {
        // An empty process folder: the test's made-up processes must not meet real ones.
        return GnomeDesktop::open({client_, &catalog_, data_.filePath(QStringLiteral("proc"))},
                                  failure);
    }

    // Lets the client's thread take in what the bus delivered.
    static void deliver() {
        for (const QDeadlineTimer deadline(300); !deadline.hasExpired(); QThread::msleep(10)) {
            QCoreApplication::processEvents();
        }
    }

    // Samples until `title` is in front; the last sample.
    static std::optional<FocusedWindow> sampleUntil(GnomeDesktop& desktop, const QString& title) {
        std::optional<FocusedWindow> sample;
        for (const QDeadlineTimer deadline(10'000); !deadline.hasExpired(); QThread::msleep(10)) {
            QCoreApplication::processEvents();
            sample = desktop.focusedWindow();
            if (sample && sample->title == title) {
                break;
            }
        }
        return sample;
    }

    test::PrivateBus bus_;
    QTemporaryDir data_;
    XdgApplicationCatalog catalog_{{QString(), data_.path(),
                                    data_.filePath(QStringLiteral("no-system-data")),
                                    QStringLiteral("C")}};
    QDBusConnection client_ = QDBusConnection::connectToBus(bus_.address(), QStringLiteral("kivo"));
};

TEST_F(GnomeDesktopTest, ResolvesWhatTheExtensionReportsToAnInstalledApplication) {
    FakeFocusExtension extension(bus_.address());
    ASSERT_TRUE(extension.publish());
    QString failure;
    auto desktop = open(failure);
    ASSERT_TRUE(desktop) << failure.toStdString();

    const struct {
        const char* appId;
        uint processId;
        std::optional<const char*> bundleId;  // nothing: no sample
    } cases[] = {
        // The window tracker's desktop ID, with its suffix.
        {"org.gnome.TextEditor.desktop", 4242, "org.gnome.TextEditor"},
        // A bare Wayland app_id or WM_CLASS, found through StartupWMClass.
        {"foot", 4243, "foot"},
        {"no.such.Application", 4244, std::nullopt},
        // No window has the focus.
        {"", 0, std::nullopt},
        // Kivo's own window is never a sample.
        {"foot", static_cast<uint>(::getpid()), std::nullopt},
    };
    const test::AnnouncementCounter announcements(client_);
    int change = 0;
    for (const auto& [appId, processId, bundleId] : cases) {
        SCOPED_TRACE(appId);
        const QString title = QStringLiteral("window %1").arg(++change);
        extension.setFocus(title, QString::fromLatin1(appId), processId, true);
        ASSERT_TRUE(announcements.waitFor(change));
        const auto sample = desktop->focusedWindow();
        if (!bundleId) {
            EXPECT_FALSE(sample) << sample->bundleId.toStdString();
            continue;
        }
        ASSERT_TRUE(sample);
        EXPECT_EQ(sample->bundleId, QString::fromLatin1(*bundleId));
        EXPECT_EQ(sample->title, title);
        EXPECT_EQ(sample->processId, processId);
        EXPECT_FALSE(sample->name.isEmpty());
    }
}

TEST_F(GnomeDesktopTest, AsksTheShellOnlyAfterItAnnouncedAChange) {
    FakeFocusExtension extension(bus_.address());
    extension.setFocus(QStringLiteral("first"), QStringLiteral("foot"), 7, false);
    ASSERT_TRUE(extension.publish());
    QString failure;
    auto desktop = open(failure);
    ASSERT_TRUE(desktop) << failure.toStdString();
    const int asked = extension.questions();

    // Unannounced, the change is not seen, and samples cost the shell nothing.
    extension.setFocus(QStringLiteral("second"), QStringLiteral("foot"), 7, false);
    deliver();
    for (int tick = 0; tick < 5; ++tick) {
        const auto sample = desktop->focusedWindow();
        ASSERT_TRUE(sample);
        EXPECT_EQ(sample->title, QStringLiteral("first"));
    }
    EXPECT_EQ(extension.questions(), asked);

    const test::AnnouncementCounter announcements(client_);
    extension.setFocus(QStringLiteral("third"), QStringLiteral("foot"), 7, true);
    ASSERT_TRUE(announcements.waitFor(1));
    for (int tick = 0; tick < 5; ++tick) {
        const auto sample = desktop->focusedWindow();
        ASSERT_TRUE(sample);
        EXPECT_EQ(sample->title, QStringLiteral("third"));
    }
    EXPECT_EQ(extension.questions(), asked + 1);
}

TEST_F(GnomeDesktopTest, ALateShellLeavesTheFocusKnownBeforeUntilItAnswers) {
    FakeFocusExtension extension(bus_.address());
    extension.setFocus(QStringLiteral("first"), QStringLiteral("foot"), 7, false);
    ASSERT_TRUE(extension.publish());
    QString failure;
    auto desktop = open(failure);
    ASSERT_TRUE(desktop) << failure.toStdString();

    extension.setAnswerDelay(std::chrono::milliseconds(400));
    const test::AnnouncementCounter announcements(client_);
    extension.setFocus(QStringLiteral("second"), QStringLiteral("foot"), 7, true);
    ASSERT_TRUE(announcements.waitFor(1));
    const auto waited = desktop->focusedWindow();
    ASSERT_TRUE(waited) << "a late answer is no reason to lose the sample";
    EXPECT_EQ(waited->title, QStringLiteral("first")) << "the tick did not wait for the answer";

    extension.setAnswerDelay(std::chrono::milliseconds(0));
    const auto answered = sampleUntil(*desktop, QStringLiteral("second"));
    ASSERT_TRUE(answered);
    EXPECT_EQ(answered->title, QStringLiteral("second")) << "asked again at a later tick";
}

TEST_F(GnomeDesktopTest, GivesNothingWhileTheExtensionIsAwayAndFollowsItWhenItReturns) {
    QString failure;
    EXPECT_FALSE(open(failure));
    EXPECT_TRUE(failure.contains(QLatin1String("extension does not answer")))
        << failure.toStdString();

    auto extension = std::make_unique<FakeFocusExtension>(bus_.address(), 3);
    extension->setFocus(QStringLiteral("editor"), QStringLiteral("foot"), 9, false);
    ASSERT_TRUE(extension->publish());
    auto desktop = open(failure);
    ASSERT_TRUE(desktop) << failure.toStdString();
    EXPECT_EQ(desktop->extensionVersion(), 3u);
    ASSERT_TRUE(sampleUntil(*desktop, QStringLiteral("editor")));

    // The shell restarts: while its extension is gone, nothing is in front.
    extension.reset();
    deliver();
    EXPECT_FALSE(desktop->focusedWindow());
    EXPECT_FALSE(desktop->extensionVersion());

    extension = std::make_unique<FakeFocusExtension>(bus_.address(), 4);
    extension->setFocus(QStringLiteral("after restart"), QStringLiteral("foot"), 10, false);
    ASSERT_TRUE(extension->publish());
    const auto sample = sampleUntil(*desktop, QStringLiteral("after restart"));
    ASSERT_TRUE(sample);
    EXPECT_EQ(sample->processId, 10);
    EXPECT_EQ(desktop->extensionVersion(), 4u);
}

}  // namespace
}  // namespace kivo
