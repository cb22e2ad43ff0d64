#include "desktop/xdg/application_index.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "desktop/xdg/desktop_fixtures.h"
#include "desktop/xdg/xdg_environment.h"
#include "model/diagnostics.h"

namespace kivo {
namespace {

using test::applicationEntry;

QStringList words(const char* text) {
    return QString::fromLatin1(text).split(u' ');
}

class ApplicationIndexTest : public ::testing::Test {
protected:
    // Writes `relative` below the user's ("home") or the system's ("usr") applications folder.
    void write(const char* relative, const QByteArray& contents) {
        test::writeFixtureFile(path(relative), contents);
    }
    QString path(const char* relative) const {
        return root_.filePath(QString::fromLatin1(relative));
    }

    ApplicationIndex scan(const QStringList& folders) {
        ScopedDiagnosticSink sink([this](const QString& line) { diagnostics_.append(line); });
        return ApplicationIndex::scan(folders, QStringLiteral("de_DE.UTF-8"));
    }

    QTemporaryDir root_;
    QStringList diagnostics_;
};

TEST_F(ApplicationIndexTest, ListsEntriesInFolderOrderAndTheFirstFileOfAnIdDecides) {
    write("home/zed.desktop", applicationEntry("Zed"));
    write("home/editor.desktop", applicationEntry("Own Editor", "Icon=/home/me/editor.png\n"));
    write("home/removed.desktop", "[Desktop Entry]\nType=Application\nName=Removed\nHidden=true\n");
    write("usr/removed.desktop", applicationEntry("Removed"));
    write("usr/editor.desktop", applicationEntry("System Editor", "Icon=text-editor\n"));
    write("usr/b.desktop", applicationEntry("B"));
    write("usr/a.desktop", applicationEntry("A", "NoDisplay=true\n"));
    // Only the first values of the main group count, with their escapes undone.
    write("usr/kde4/konsole.desktop",
          "# comment\nName=Before any group\n[Desktop Entry]\nType = Application\n"
          "Name=My\\sKonsole\\t\\\\\\q\nName=Second\n\n[Desktop Action "
          "new]\nName=New\nHidden=true\n");
    write("usr/kde4/deep/x.desktop", applicationEntry("X"));
    write("usr/readme.txt", applicationEntry("Not An Entry"));
    write("usr/site.desktop", "[Desktop Entry]\nType=Link\nName=Site\nURL=https://example.org\n");
    write("usr/broken.desktop", "no group here\n");
    write("usr/other-group.desktop", "[Other]\nType=Application\nName=X\n");
    write("usr/nameless.desktop", "[Desktop Entry]\nType=Application\n");
    write("usr/garbage.desktop", QByteArray("\xff\xfe garbage \x00\x01", 13));
    ASSERT_TRUE(QFile::link(path("usr"), path("usr/kde4/loop")));  // must not walk in circles

    write("plain-file", "I am a file\n");

    // A missing folder is silent; one that cannot be listed prints one line.
    const auto index = scan({path("missing"), path("plain-file"), path("home"), path("usr")});
    EXPECT_EQ(diagnostics_, QStringList{QStringLiteral("ファイル操作エラー: ") +
                                        path("plain-file") + QStringLiteral(": Not a directory")});

    // Each folder sorted by name; a duplicate ID stays in the list but is not looked up twice.
    EXPECT_EQ(index.installedIds(), words("editor zed a b editor kde4-deep-x kde4-konsole"));
    ASSERT_NE(index.find(QStringLiteral("kde4-konsole")), nullptr);
    EXPECT_EQ(index.find(QStringLiteral("kde4-konsole"))->name,
              QStringLiteral("My Konsole\t\\\\q"));
    ASSERT_NE(index.find(QStringLiteral("editor")), nullptr);
    EXPECT_EQ(index.find(QStringLiteral("editor"))->icon, QStringLiteral("/home/me/editor.png"));
    EXPECT_EQ(index.find(QStringLiteral("removed")), nullptr);
    EXPECT_EQ(index.find(QStringLiteral("site")), nullptr);
    EXPECT_EQ(scan({path("home"), path("home")}).installedIds(), words("editor zed editor zed"));
}

TEST(XdgEnvironmentTest, UserFolderComesFirstThenEachAbsoluteDataFolder) {
    // A relative data home means the default; relative or empty data folders are skipped.
    const XdgEnvironment environment{QStringLiteral("/home/me"), QStringLiteral("relative"),
                                     QStringLiteral("/opt/share:relative/share::/usr/share/"),
                                     QString()};
    EXPECT_EQ(environment.applicationFolders(),
              words("/home/me/.local/share/applications "
                    "/opt/share/applications /usr/share/applications"));
}

}  // namespace
}  // namespace kivo
