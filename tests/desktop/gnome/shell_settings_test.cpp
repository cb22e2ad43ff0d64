#include "desktop/gnome/shell_settings.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <QTemporaryDir>

#include "desktop/gnome/scoped_variable.h"

namespace kivo {
namespace {

TEST(ShellSettingsTest, StringArraysSurviveTheWayGsettingsWritesThem) {
    const std::pair<const char*, QStringList> cases[] = {
        {"@as []\n", {}},
        {"[]", {}},
        {"['focus@kivo.app']\n", {QStringLiteral("focus@kivo.app")}},
        {"['a@b', 'c@d']", {QStringLiteral("a@b"), QStringLiteral("c@d")}},
        // gsettings switches to double quotes for a string with a single quote in it.
        {R"(['it\'s', "o'k", 'back\\slash'])",
         {QStringLiteral("it's"), QStringLiteral("o'k"), QStringLiteral("back\\slash")}},
    };
    for (const auto& [text, strings] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(parseStringArray(QString::fromLatin1(text)), strings);
        EXPECT_EQ(parseStringArray(formatStringArray(strings)), strings);
    }
    EXPECT_EQ(formatStringArray({QStringLiteral("a@b"), QStringLiteral("c@d")}),
              QStringLiteral("['a@b', 'c@d']"));
}

// Against the real gsettings tool, with its file back end in a private folder.
class ShellSettingsToolTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(config_.isValid()); }

    static QString gsettings(const QStringList& arguments) {
        QProcess process;
        process.start(QStringLiteral("gsettings"), arguments);
        process.waitForFinished(10'000);
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    }

    QTemporaryDir config_;
    test::ScopedVariable backend_{"GSETTINGS_BACKEND", "keyfile"};
    test::ScopedVariable configHome_{"XDG_CONFIG_HOME", config_.path().toLocal8Bit()};
};

TEST_F(ShellSettingsToolTest, EnablesTheExtensionOnceAndKeepsTheUsersOthers) {
    const QString schema = QStringLiteral("org.gnome.shell");
    gsettings({QStringLiteral("set"), schema, QStringLiteral("enabled-extensions"),
               QStringLiteral("['other@example.org']")});
    gsettings({QStringLiteral("set"), schema, QStringLiteral("disabled-extensions"),
               QStringLiteral("['focus@kivo.app', 'off@example.org']")});
    for (int time = 0; time < 2; ++time) {
        SCOPED_TRACE(time);
        QString failure;
        ASSERT_TRUE(enableShellExtension(QStringLiteral("focus@kivo.app"), failure))
            << failure.toStdString();
        EXPECT_EQ(
            parseStringArray(
                gsettings({QStringLiteral("get"), schema, QStringLiteral("enabled-extensions")})),
            QStringList({QStringLiteral("other@example.org"), QStringLiteral("focus@kivo.app")}));
        EXPECT_EQ(parseStringArray(gsettings(
                      {QStringLiteral("get"), schema, QStringLiteral("disabled-extensions")})),
                  QStringList({QStringLiteral("off@example.org")}));
    }
}

TEST_F(ShellSettingsToolTest, TellsWhenTheUserTurnedAllExtensionsOff) {
    EXPECT_FALSE(areShellExtensionsTurnedOff());
    gsettings({QStringLiteral("set"), QStringLiteral("org.gnome.shell"),
               QStringLiteral("disable-user-extensions"), QStringLiteral("true")});
    EXPECT_TRUE(areShellExtensionsTurnedOff());
}

TEST_F(ShellSettingsToolTest, SaysWhyWhenTheSettingsCannotBeRead) {
    // Without the schema's folder, gsettings knows no GNOME Shell.
    const test::ScopedVariable schemas("GSETTINGS_SCHEMA_DIR", config_.path().toLocal8Bit());
    const test::ScopedVariable dataFolders("XDG_DATA_DIRS", config_.path().toLocal8Bit());
    QString failure;
    EXPECT_FALSE(enableShellExtension(QStringLiteral("focus@kivo.app"), failure));
    EXPECT_TRUE(failure.startsWith(QLatin1String("gsettings failed"))) << failure.toStdString();
    EXPECT_FALSE(failure.contains(u'\n'));
}

}  // namespace
}  // namespace kivo
