#include "ui/platform/application_resolver.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "ui/platform/desktop_fixtures.h"

namespace kivo {
namespace {

using test::applicationEntry;
using test::writeFixtureFile;

constexpr std::int64_t pid = 4242;

// Installed entries for every way of finding an application, and a fake /proc for one process
// that each test fills with just the facts it needs.
class ApplicationResolverTest : public ::testing::Test {
protected:
    void SetUp() override {
        const QString folder = root_.filePath(QStringLiteral("applications"));
        for (const char* id : {"org.flatpak.Sandboxed", "snapname_appname", "org.gnome.Terminal",
                               "launched-by-gio", "google-chrome", "firefox-esr"}) {
            writeFixtureFile(folder + u'/' + QString::fromLatin1(id) + QStringLiteral(".desktop"),
                             applicationEntry(id));
        }
        writeFixtureFile(folder + QStringLiteral("/debian-xterm.desktop"),
                         applicationEntry("XTerm", "StartupWMClass=XTerm\n"));
        writeFixtureFile(folder + QStringLiteral("/chromium-profile.desktop"),
                         applicationEntry("Chromium profile",
                                          "StartupWMClass=chromium-browser (/home/me/p1)\n"));
        index_ = ApplicationIndex::scan({folder}, QString());
    }

    void writeProcessFile(const char* name, const QByteArray& contents) {
        writeFixtureFile(
            procRoot() + u'/' + QString::number(pid) + u'/' + QString::fromLatin1(name), contents);
    }

    QString procRoot() const { return root_.filePath(QStringLiteral("proc")); }

    std::optional<QString> resolve(const char* wmInstance = "", const char* wmClass = "",
                                   std::int64_t processId = pid) {
        return resolveApplicationId(
            {processId, QString::fromLatin1(wmInstance), QString::fromLatin1(wmClass)}, procRoot(),
            index_);
    }

    QTemporaryDir root_;
    ApplicationIndex index_;
};

constexpr const char* gnomeTerminalScope =
    "0::/user.slice/user-1000.slice/user@1000.service/app.slice/"
    "app-gnome-org.gnome.Terminal-1234.scope\n";

TEST_F(ApplicationResolverTest, FlatpakSandboxComesFirst) {
    writeProcessFile("root/.flatpak-info",
                     "[Instance]\nname=org.not.This\n[Application]\nname=org.flatpak.Sandboxed\n"
                     "runtime=runtime/org.gnome.Platform\n");
    writeProcessFile("cgroup", gnomeTerminalScope);
    EXPECT_EQ(resolve("xterm", "XTerm"), QStringLiteral("org.flatpak.Sandboxed"));
}

TEST_F(ApplicationResolverTest, SnapComesBeforeSystemdUnits) {
    writeProcessFile("cgroup",
                     "1:name=systemd:/user.slice/app-gnome-org.gnome.Terminal-77.scope\n"
                     "0::/user.slice/user@1000.service/app.slice/"
                     "snap.snapname.appname.6a0a5cf0-aaaa-bbbb.scope\n");
    EXPECT_EQ(resolve(), QStringLiteral("snapname_appname"));
}

TEST_F(ApplicationResolverTest, SystemdScopesAndServicesNameTheApplication) {
    writeProcessFile("cgroup", gnomeTerminalScope);
    EXPECT_EQ(resolve("xterm", "XTerm"), QStringLiteral("org.gnome.Terminal"));

    writeProcessFile("cgroup", "0::/user.slice/app.slice/app-org.gnome.Terminal@c0ffee.service\n");
    EXPECT_EQ(resolve(), QStringLiteral("org.gnome.Terminal"));

    writeProcessFile("cgroup", "0::/user.slice/app.slice/app-kde-firefox\\x2desr-99.scope\n");
    EXPECT_EQ(resolve(), QStringLiteral("firefox-esr"));
}

TEST_F(ApplicationResolverTest, InnermostUnitWins) {
    writeProcessFile("cgroup",
                     "0::/user.slice/app-firefox\\x2desr.service/"
                     "app-gnome-org.gnome.Terminal-5.scope\n");
    EXPECT_EQ(resolve(), QStringLiteral("org.gnome.Terminal"));
}

TEST_F(ApplicationResolverTest, UnitsOfUninstalledApplicationsGiveWay) {
    writeProcessFile("cgroup",
                     "0::/user.slice/app.slice/app-gnome-org.not.Installed-1.scope\n"
                     "0::/user.slice/snap.notinstalled.app.scope\n");
    EXPECT_EQ(resolve("xterm", "XTerm"), QStringLiteral("debian-xterm"));
}

TEST_F(ApplicationResolverTest, GioLaunchCountsOnlyForTheLaunchedProcess) {
    writeProcessFile("cgroup", "0::/user.slice/session-2.scope\n");
    const QByteArray launched =
        QByteArrayLiteral(
            "GIO_LAUNCHED_DESKTOP_FILE=/usr/share/applications/launched-by-gio.desktop") +
        '\0' + "CHROME_DESKTOP=google-chrome.desktop" + '\0';

    writeProcessFile("environ", launched + "GIO_LAUNCHED_DESKTOP_FILE_PID=4242" + '\0');
    EXPECT_EQ(resolve(), QStringLiteral("launched-by-gio"));

    // A child that inherited its parent's marks.
    writeProcessFile("environ", launched + "GIO_LAUNCHED_DESKTOP_FILE_PID=4000" + '\0');
    EXPECT_EQ(resolve(), QStringLiteral("google-chrome"));
}

TEST_F(ApplicationResolverTest, WindowClassIsTheLastResort) {
    writeProcessFile("environ", QByteArrayLiteral("CHROME_DESKTOP=not-installed.desktop") + '\0');
    EXPECT_EQ(resolve("xterm", "XTerm"), QStringLiteral("debian-xterm"));
    EXPECT_EQ(resolve("Chromium-browser (/home/me/p1)", "Chromium-browser"),
              QStringLiteral("chromium-profile"));
    EXPECT_EQ(resolve("Navigator", "Firefox-esr"), QStringLiteral("firefox-esr"));
    EXPECT_FALSE(resolve("navigator", "Unknown"));
}

TEST_F(ApplicationResolverTest, StartupWmClassMatchesTheClassBeforeTheInstance) {
    EXPECT_EQ(resolve("chromium-browser (/home/me/p1)", "XTerm"), QStringLiteral("debian-xterm"));
}

TEST_F(ApplicationResolverTest, WindowWithoutProcessOrProcessFilesUsesTheClass) {
    EXPECT_EQ(resolve("xterm", "XTerm", 0), QStringLiteral("debian-xterm"));
    EXPECT_EQ(resolve("xterm", "XTerm", 999999), QStringLiteral("debian-xterm"));
    EXPECT_FALSE(resolve("", "", 0));
}

TEST_F(ApplicationResolverTest, OddProcessFilesAreIgnored) {
    writeProcessFile("cgroup", "garbage\n:\n0::\n0::/app-.scope\n0::/app--.service\n0::/snap.\n");
    writeProcessFile("environ",
                     QByteArrayLiteral("no-equals\0=\0GIO_LAUNCHED_DESKTOP_FILE_PID=4242\0"));
    writeProcessFile("root/.flatpak-info", "[Application]\nname=\n");
    EXPECT_EQ(resolve("xterm", "XTerm"), QStringLiteral("debian-xterm"));
}

}  // namespace
}  // namespace kivo
