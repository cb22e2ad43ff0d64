#include "desktop/xdg/application_resolver.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "desktop/xdg/desktop_fixtures.h"

namespace kivo {
namespace {

using test::writeFixtureFile;

constexpr const char* gnomeTerminalScope =
    "0::/user.slice/user@1000.service/app.slice/app-gnome-org.gnome.Terminal-1234.scope\n";

// One process's /proc files, its window's WM_CLASS and the application expected for it (nullptr:
// none).
struct Case {
    const char *cgroup, *environ, *flatpakInfo, *instance, *wmClass, *expected;
};

// Installed applications for every case, and a fixture /proc with one process per case.
class ApplicationResolverTest : public ::testing::Test {
protected:
    void SetUp() override {
        const QString folder = root_.filePath(QStringLiteral("applications"));
        for (const char* id : {"org.flatpak.Sandboxed", "snapname_appname", "org.gnome.Terminal",
                               "launched-by-gio", "google-chrome", "firefox-esr", "foot"}) {
            writeFixtureFile(folder + u'/' + QString::fromLatin1(id) + QStringLiteral(".desktop"),
                             test::applicationEntry(id));
        }
        writeFixtureFile(folder + QStringLiteral("/debian-xterm.desktop"),
                         test::applicationEntry("XTerm", "StartupWMClass=XTerm\n"));
        writeFixtureFile(folder + QStringLiteral("/chromium-profile.desktop"),
                         test::applicationEntry("Chromium profile",
                                                "StartupWMClass=chromium-browser (/home/me/p1)\n"));
        index_ = ApplicationIndex::scan({folder}, QString());
    }

    // A new process with these /proc files (empty ones are not written; in environ '|' stands
    // for NUL and %1 for the process id); its id.
    std::int64_t process(const char* cgroup, const char* environ, const char* flatpakInfo) {
        const QString folder = proc() + u'/' + QString::number(++lastPid_) + u'/';
        const std::pair<const char*, QByteArray> files[] = {
            {"cgroup", cgroup},
            {"environ",
             QByteArray(environ).replace("%1", QByteArray::number(lastPid_)).replace('|', '\0')},
            {"root/.flatpak-info", flatpakInfo}};
        for (const auto& [name, contents] : files) {
            if (!contents.isEmpty()) {
                writeFixtureFile(folder + QString::fromLatin1(name), contents);
            }
        }
        return lastPid_;
    }

    QString proc() const { return root_.filePath(QStringLiteral("proc")); }

    QTemporaryDir root_;
    ApplicationIndex index_;
    std::int64_t lastPid_ = 100;
};

std::optional<QString> expectedId(const char* id) {
    return id ? std::optional(QString::fromLatin1(id)) : std::nullopt;
}

TEST_F(ApplicationResolverTest, WindowTriesEachSourceInOrderAndSkipsUninstalledIds) {
    const Case cases[] = {
        {gnomeTerminalScope, "",
         "[Instance]\nname=org.not.This\n[Application]\nname=org.flatpak.Sandboxed\n", "xterm",
         "XTerm", "org.flatpak.Sandboxed"},
        {"1:name=systemd:/user.slice/app-gnome-org.gnome.Terminal-77.scope\n"
         "0::/user.slice/user@1000.service/app.slice/snap.snapname.appname.6a0a5cf0-aaaa.scope\n",
         "", "", "", "", "snapname_appname"},
        {gnomeTerminalScope, "", "", "xterm", "XTerm", "org.gnome.Terminal"},
        {"0::/user.slice/app.slice/app-org.gnome.Terminal@c0ffee.service\n", "", "", "", "",
         "org.gnome.Terminal"},
        {"0::/user.slice/app.slice/app-kde-firefox\\x2desr-99.scope\n", "", "", "", "",
         "firefox-esr"},
        // The innermost unit wins.
        {"0::/user.slice/app-firefox\\x2desr.service/app-gnome-org.gnome.Terminal-5.scope\n", "",
         "", "", "", "org.gnome.Terminal"},
        {"0::/user.slice/app.slice/app-gnome-org.not.Installed-1.scope\n"
         "0::/user.slice/snap.notinstalled.app.scope\n",
         "", "", "xterm", "XTerm", "debian-xterm"},
        // GIO's mark counts only for the process it launched, not for a child that inherited it.
        {"0::/user.slice/session-2.scope\n",
         "GIO_LAUNCHED_DESKTOP_FILE=/usr/share/applications/launched-by-gio.desktop|"
         "CHROME_DESKTOP=google-chrome.desktop|GIO_LAUNCHED_DESKTOP_FILE_PID=%1|",
         "", "", "", "launched-by-gio"},
        {"0::/user.slice/session-2.scope\n",
         "GIO_LAUNCHED_DESKTOP_FILE=/usr/share/applications/launched-by-gio.desktop|"
         "CHROME_DESKTOP=google-chrome.desktop|GIO_LAUNCHED_DESKTOP_FILE_PID=4000|",
         "", "", "", "google-chrome"},
        // The window class comes last: StartupWMClass (class, then instance), then the class as ID.
        {"", "CHROME_DESKTOP=not-installed.desktop|", "", "xterm", "XTerm", "debian-xterm"},
        {"", "", "", "chromium-browser (/home/me/p1)", "XTerm", "debian-xterm"},
        {"", "", "", "Chromium-browser (/home/me/p1)", "Chromium-browser", "chromium-profile"},
        {"", "", "", "Navigator", "Firefox-esr", "firefox-esr"},
        {"", "", "", "navigator", "Unknown", nullptr},
        {"garbage\n:\n0::\n0::/app-.scope\n0::/app--.service\n0::/snap.\n",
         "no-equals|=|GIO_LAUNCHED_DESKTOP_FILE_PID=%1|", "[Application]\nname=\n", "xterm",
         "XTerm", "debian-xterm"},
    };
    int number = 0;
    for (const Case& c : cases) {
        const std::int64_t pid = process(c.cgroup, c.environ, c.flatpakInfo);
        const auto id = resolveApplicationId(
            {pid, QString::fromLatin1(c.instance), QString::fromLatin1(c.wmClass)}, proc(), index_);
        EXPECT_EQ(id, expectedId(c.expected))
            << "case " << ++number << ": " << c.cgroup << c.instance;
    }
    // Without a process only the class counts.
    EXPECT_EQ(
        resolveApplicationId({0, QStringLiteral("xterm"), QStringLiteral("XTerm")}, proc(), index_),
        QStringLiteral("debian-xterm"));
    EXPECT_FALSE(resolveApplicationId({}, proc(), index_));
}

// A toplevel's process files, its app_id and the application expected (nullptr: none).
struct ToplevelCase {
    const char *cgroup, *environ, *flatpakInfo, *appId, *expected;
};

TEST_F(ApplicationResolverTest, ToplevelTrustsTheSandboxThenTheAppIdThenTheLauncher) {
    const ToplevelCase cases[] = {
        // The sandbox outranks an app_id that happens to be installed too.
        {"", "", "[Application]\nname=org.flatpak.Sandboxed\n", "foot", "org.flatpak.Sandboxed"},
        {"0::/user.slice/snap.snapname.appname.1.scope\n", "", "", "appname", "snapname_appname"},
        // A client started from a terminal sits in the terminal's scope; its app_id knows better.
        {gnomeTerminalScope, "", "", "foot", "foot"},
        {gnomeTerminalScope, "", "", "foot.desktop", "foot"},
        {gnomeTerminalScope, "", "", "org.unknown.Tool", "org.gnome.Terminal"},
        {"",
         "GIO_LAUNCHED_DESKTOP_FILE=/a/applications/launched-by-gio.desktop|"
         "GIO_LAUNCHED_DESKTOP_FILE_PID=%1|",
         "", "", "launched-by-gio"},
        {"", "CHROME_DESKTOP=google-chrome.desktop|", "", "org.unknown.Tool", "google-chrome"},
        // Without a launcher: StartupWMClass (any case), then the lower-cased app_id.
        {"", "", "", "XTerm", "debian-xterm"},
        {"", "", "", "xterm", "debian-xterm"},
        {"", "", "", "Firefox-esr", "firefox-esr"},
        {"", "", "", "FOOT", "foot"},
        {"0::/user.slice/snap.notinstalled.app.scope\n", "", "[Application]\nname=no.Such\n",
         "org.unknown.Tool", nullptr},
        {"", "", "", "", nullptr},
        {"", "", "", ".desktop", nullptr},
    };
    int number = 0;
    for (const ToplevelCase& c : cases) {
        const std::int64_t pid = process(c.cgroup, c.environ, c.flatpakInfo);
        EXPECT_EQ(resolveToplevelApplicationId({pid, QString::fromLatin1(c.appId)}, proc(), index_),
                  expectedId(c.expected))
            << "case " << ++number << ": " << c.appId;
    }
    // Without a process (most compositors name none) only the app_id counts.
    EXPECT_EQ(resolveToplevelApplicationId({0, QStringLiteral("XTerm")}, proc(), index_),
              QStringLiteral("debian-xterm"));
    EXPECT_FALSE(
        resolveToplevelApplicationId({0, QStringLiteral("org.unknown.Tool")}, proc(), index_));
}

}  // namespace
}  // namespace kivo
