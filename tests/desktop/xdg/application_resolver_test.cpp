#include "desktop/xdg/application_resolver.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "desktop/xdg/desktop_fixtures.h"

namespace kivo {
namespace {

using test::writeFixtureFile;

constexpr const char* gnomeTerminalScope =
    "0::/user.slice/user@1000.service/app.slice/app-gnome-org.gnome.Terminal-1234.scope\n";

// One process's /proc files (empty ones are not written; in environ '|' stands for NUL and %1 for
// the process id), its window's WM_CLASS and the application expected for it (nullptr: none).
struct Case {
    const char *cgroup, *environ, *flatpakInfo, *instance, *wmClass, *expected;
};

TEST(ApplicationResolverTest, TriesEachSourceInOrderAndSkipsUninstalledIds) {
    QTemporaryDir root;
    const QString folder = root.filePath(QStringLiteral("applications"));
    for (const char* id : {"org.flatpak.Sandboxed", "snapname_appname", "org.gnome.Terminal",
                           "launched-by-gio", "google-chrome", "firefox-esr"}) {
        writeFixtureFile(folder + u'/' + QString::fromLatin1(id) + QStringLiteral(".desktop"),
                         test::applicationEntry(id));
    }
    writeFixtureFile(folder + QStringLiteral("/debian-xterm.desktop"),
                     test::applicationEntry("XTerm", "StartupWMClass=XTerm\n"));
    writeFixtureFile(folder + QStringLiteral("/chromium-profile.desktop"),
                     test::applicationEntry("Chromium profile",
                                            "StartupWMClass=chromium-browser (/home/me/p1)\n"));
    const auto index = ApplicationIndex::scan({folder}, QString());

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
    const QString proc = root.filePath(QStringLiteral("proc"));
    std::int64_t pid = 100;
    for (const Case& c : cases) {
        const QString process = proc + u'/' + QString::number(++pid) + u'/';
        const std::pair<const char*, QByteArray> files[] = {
            {"cgroup", c.cgroup},
            {"environ",
             QByteArray(c.environ).replace("%1", QByteArray::number(pid)).replace('|', '\0')},
            {"root/.flatpak-info", c.flatpakInfo}};
        for (const auto& [name, contents] : files) {
            if (!contents.isEmpty()) {
                writeFixtureFile(process + QString::fromLatin1(name), contents);
            }
        }
        const auto id = resolveApplicationId(
            {pid, QString::fromLatin1(c.instance), QString::fromLatin1(c.wmClass)}, proc, index);
        EXPECT_EQ(id, c.expected ? std::optional(QString::fromLatin1(c.expected)) : std::nullopt)
            << "case " << pid - 100 << ": " << c.cgroup << c.instance;
    }
    // Without a process only the class counts.
    EXPECT_EQ(
        resolveApplicationId({0, QStringLiteral("xterm"), QStringLiteral("XTerm")}, proc, index),
        QStringLiteral("debian-xterm"));
    EXPECT_FALSE(resolveApplicationId({}, proc, index));
}

}  // namespace
}  // namespace kivo
