#include "ui/platform/desktop_entry.h"

#include <gtest/gtest.h>

namespace kivo {
namespace {

TEST(DesktopEntryTest, ReadsTheMainGroupOnly) {
    const auto entry = parseDesktopEntry(
        "# comment\n"
        "Name=Before any group\n"
        "[Desktop Entry]\n"
        "Type = Application\n"
        "Name=Files\n"
        "Name=Second Name Ignored\n"
        "Icon=org.gnome.Nautilus\n"
        "StartupWMClass=org.gnome.Nautilus\n"
        "NoDisplay=true\n"
        "\n"
        "[Desktop Action new-window]\n"
        "Name=New Window\n"
        "Hidden=true\n",
        QStringLiteral("C"));
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->type, QStringLiteral("Application"));
    EXPECT_EQ(entry->name, QStringLiteral("Files"));
    EXPECT_EQ(entry->icon, QStringLiteral("org.gnome.Nautilus"));
    EXPECT_EQ(entry->startupWmClass, QStringLiteral("org.gnome.Nautilus"));
    EXPECT_FALSE(entry->isHidden);
    EXPECT_TRUE(entry->isInstalledApplication());
}

TEST(DesktopEntryTest, FileWithoutTheMainGroupIsNoEntry) {
    EXPECT_FALSE(parseDesktopEntry("[Other]\nType=Application\nName=X\n", QStringLiteral("C")));
    EXPECT_FALSE(parseDesktopEntry("", QStringLiteral("C")));
    EXPECT_FALSE(parseDesktopEntry("\xff\xfe garbage \x00\x01", QStringLiteral("C")));
}

TEST(DesktopEntryTest, OnlyVisibleNamedApplicationsCountAsInstalled) {
    const QString locale = QStringLiteral("C");
    EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Link\nName=Site\nURL=x\n", locale)
                     ->isInstalledApplication());
    EXPECT_FALSE(
        parseDesktopEntry("[Desktop Entry]\nType=Application\nName=Gone\nHidden=true\n", locale)
            ->isInstalledApplication());
    EXPECT_FALSE(
        parseDesktopEntry("[Desktop Entry]\nType=Application\n", locale)->isInstalledApplication());
}

TEST(DesktopEntryTest, UndoesStringEscapes) {
    const auto entry = parseDesktopEntry(
        "[Desktop Entry]\nType=Application\nName=A\\sB\\tC\\\\D\\qE\\\n", QStringLiteral("C"));
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->name, QStringLiteral("A B\tC\\D\\qE\\"));
}

TEST(DesktopEntryTest, PicksTheBestLocalizedName) {
    const QByteArray file =
        "[Desktop Entry]\nType=Application\n"
        "Name=Text Editor\n"
        "Name[de]=Texteditor\n"
        "Name[de_AT]=Texteditor (Österreich)\n"
        "Name[sr@latin]=Uređivač teksta\n"
        "Name[sr]=Уређивач текста\n";
    const auto nameFor = [&file](const char* locale) {
        return parseDesktopEntry(file, QString::fromLatin1(locale))->name;
    };
    EXPECT_EQ(nameFor("de_AT.UTF-8"), QStringLiteral("Texteditor (Österreich)"));
    EXPECT_EQ(nameFor("de_CH.UTF-8"), QStringLiteral("Texteditor"));
    EXPECT_EQ(nameFor("de"), QStringLiteral("Texteditor"));
    EXPECT_EQ(nameFor("sr_RS.UTF-8@latin"), QStringLiteral("Uređivač teksta"));
    EXPECT_EQ(nameFor("sr_RS.UTF-8"), QStringLiteral("Уређивач текста"));
    EXPECT_EQ(nameFor("fr_FR.UTF-8"), QStringLiteral("Text Editor"));
    EXPECT_EQ(nameFor("C.UTF-8"), QStringLiteral("Text Editor"));
    EXPECT_EQ(nameFor(""), QStringLiteral("Text Editor"));
}

}  // namespace
}  // namespace kivo
