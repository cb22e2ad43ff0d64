#include "ui/platform/application_index.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "model/diagnostics.h"
#include "ui/platform/desktop_fixtures.h"
#include "ui/platform/xdg_environment.h"

namespace kivo {
namespace {

using test::applicationEntry;
using test::writeFixtureFile;

class ApplicationIndexTest : public ::testing::Test {
protected:
    QString userFolder() const { return root_.filePath(QStringLiteral("home/applications")); }
    QString systemFolder() const { return root_.filePath(QStringLiteral("usr/applications")); }
    QString file(const QString& folder, const char* relative) const {
        return folder + u'/' + QString::fromLatin1(relative);
    }

    ApplicationIndex scan(const QStringList& folders) {
        ScopedDiagnosticSink sink([this](const QString& line) { diagnostics_.append(line); });
        return ApplicationIndex::scan(folders, QStringLiteral("de_DE.UTF-8"));
    }

    QTemporaryDir root_;
    QStringList diagnostics_;
};

TEST_F(ApplicationIndexTest, ListsApplicationsInDiscoveryOrderWithSubfolderIds) {
    writeFixtureFile(file(userFolder(), "zed.desktop"), applicationEntry("Zed"));
    writeFixtureFile(file(systemFolder(), "b.desktop"), applicationEntry("B"));
    writeFixtureFile(file(systemFolder(), "a.desktop"), applicationEntry("A"));
    writeFixtureFile(file(systemFolder(), "kde4/konsole.desktop"), applicationEntry("Konsole"));
    writeFixtureFile(file(systemFolder(), "kde4/deep/x.desktop"), applicationEntry("X"));
    writeFixtureFile(file(systemFolder(), "readme.txt"), applicationEntry("Not An Entry"));
    writeFixtureFile(file(systemFolder(), "site.desktop"),
                     "[Desktop Entry]\nType=Link\nName=Site\nURL=https://example.org\n");
    writeFixtureFile(file(systemFolder(), "broken.desktop"), "no group here\n");

    const auto index = scan({userFolder(), systemFolder()});

    EXPECT_EQ(index.installedIds(),
              (QStringList{QStringLiteral("zed"), QStringLiteral("a"), QStringLiteral("b"),
                           QStringLiteral("kde4-deep-x"), QStringLiteral("kde4-konsole")}));
    ASSERT_NE(index.find(QStringLiteral("kde4-konsole")), nullptr);
    EXPECT_EQ(index.find(QStringLiteral("kde4-konsole"))->name, QStringLiteral("Konsole"));
    EXPECT_EQ(index.find(QStringLiteral("site")), nullptr);
    EXPECT_TRUE(diagnostics_.isEmpty());
}

TEST_F(ApplicationIndexTest, TheFirstFileOfAnIdDecidesAndDuplicatesAreKept) {
    writeFixtureFile(file(userFolder(), "editor.desktop"),
                     applicationEntry("Own Editor", "Icon=/home/me/editor.png\n"));
    writeFixtureFile(file(systemFolder(), "editor.desktop"),
                     applicationEntry("System Editor", "Icon=accessories-text-editor\n"));
    writeFixtureFile(file(userFolder(), "removed.desktop"),
                     "[Desktop Entry]\nType=Application\nName=Removed\nHidden=true\n");
    writeFixtureFile(file(systemFolder(), "removed.desktop"), applicationEntry("Removed"));
    writeFixtureFile(file(systemFolder(), "quiet.desktop"),
                     applicationEntry("Quiet", "NoDisplay=true\n"));

    const auto index = scan({userFolder(), systemFolder()});

    EXPECT_EQ(index.installedIds(), (QStringList{QStringLiteral("editor"), QStringLiteral("editor"),
                                                 QStringLiteral("quiet")}));
    EXPECT_EQ(index.find(QStringLiteral("editor"))->name, QStringLiteral("Own Editor"));
    EXPECT_EQ(index.find(QStringLiteral("editor"))->icon, QStringLiteral("/home/me/editor.png"));
    EXPECT_EQ(index.find(QStringLiteral("removed")), nullptr);
}

TEST_F(ApplicationIndexTest, SameFolderTwiceListsEverythingTwice) {
    writeFixtureFile(file(systemFolder(), "a.desktop"), applicationEntry("A"));
    const auto index = scan({systemFolder(), systemFolder()});
    EXPECT_EQ(index.installedIds(), (QStringList{QStringLiteral("a"), QStringLiteral("a")}));
}

TEST_F(ApplicationIndexTest, MissingFolderIsSilentUnlistableFolderPrintsOneLine) {
    writeFixtureFile(file(systemFolder(), "a.desktop"), applicationEntry("A"));
    const QString notAFolder = root_.filePath(QStringLiteral("plain-file"));
    writeFixtureFile(notAFolder, "I am a file\n");

    const auto index =
        scan({root_.filePath(QStringLiteral("missing/applications")), notAFolder, systemFolder()});

    EXPECT_EQ(index.installedIds(), QStringList{QStringLiteral("a")});
    ASSERT_EQ(diagnostics_.size(), 1);
    EXPECT_EQ(diagnostics_[0], QStringLiteral("ファイル操作エラー: ") + notAFolder +
                                   QStringLiteral(": Not a directory"));
}

TEST_F(ApplicationIndexTest, SymbolicLinkLoopEndsTheWalk) {
    writeFixtureFile(file(systemFolder(), "sub/a.desktop"), applicationEntry("A"));
    ASSERT_TRUE(QFile::link(systemFolder(), file(systemFolder(), "sub/loop")));
    const auto index = scan({systemFolder()});
    EXPECT_EQ(index.installedIds(), QStringList{QStringLiteral("sub-a")});
}

TEST_F(ApplicationIndexTest, FindsApplicationsByStartupWmClassIgnoringCase) {
    writeFixtureFile(file(userFolder(), "chromium-work.desktop"),
                     applicationEntry("Work", "StartupWMClass=chromium-browser (/work)\n"));
    writeFixtureFile(file(systemFolder(), "chromium.desktop"),
                     applicationEntry("Chromium", "StartupWMClass=Chromium\n"));
    writeFixtureFile(file(systemFolder(), "other-chromium.desktop"),
                     applicationEntry("Other", "StartupWMClass=chromium\n"));

    const auto index = scan({userFolder(), systemFolder()});

    EXPECT_EQ(index.idForStartupWmClass(QStringLiteral("CHROMIUM")), QStringLiteral("chromium"));
    EXPECT_EQ(index.idForStartupWmClass(QStringLiteral("Chromium-Browser (/work)")),
              QStringLiteral("chromium-work"));
    EXPECT_FALSE(index.idForStartupWmClass(QStringLiteral("Firefox")));
}

TEST(DesktopFileIdTest, IsThePathBelowTheApplicationsFolder) {
    EXPECT_EQ(
        desktopFileIdOfPath(QStringLiteral("/usr/share/applications/org.gnome.Terminal.desktop")),
        QStringLiteral("org.gnome.Terminal"));
    EXPECT_EQ(desktopFileIdOfPath(QStringLiteral("/usr/share/applications/kde4/dolphin.desktop")),
              QStringLiteral("kde4-dolphin"));
    EXPECT_FALSE(desktopFileIdOfPath(QStringLiteral("/tmp/app.desktop")));
    EXPECT_FALSE(desktopFileIdOfPath(QStringLiteral("/usr/share/applications/notes.txt")));
    EXPECT_FALSE(desktopFileIdOfPath(QString()));
}

TEST(XdgEnvironmentTest, UserFolderComesFirstThenEachDataFolder) {
    XdgEnvironment environment{QStringLiteral("/home/me"), QStringLiteral("/data/me"),
                               QStringLiteral("/opt/share:relative/share::/usr/share/"), QString()};
    EXPECT_EQ(environment.applicationFolders(),
              (QStringList{QStringLiteral("/data/me/applications"),
                           QStringLiteral("/opt/share/applications"),
                           QStringLiteral("/usr/share/applications")}));
}

TEST(XdgEnvironmentTest, UnsetOrRelativeVariablesFallBackToTheDefaults) {
    XdgEnvironment environment{QStringLiteral("/home/me"), QStringLiteral("relative"), QString(),
                               QString()};
    EXPECT_EQ(environment.applicationFolders(),
              (QStringList{QStringLiteral("/home/me/.local/share/applications"),
                           QStringLiteral("/usr/local/share/applications"),
                           QStringLiteral("/usr/share/applications")}));
}

}  // namespace
}  // namespace kivo
