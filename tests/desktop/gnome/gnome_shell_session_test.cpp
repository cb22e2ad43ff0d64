#include "desktop/gnome/gnome_shell_session.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <QTemporaryDir>

#include "desktop/gnome/extension_files.h"
#include "desktop/gnome/fake_focus_extension.h"
#include "desktop/gnome/scoped_variable.h"
#include "desktop/gnome/shell_settings.h"
#include "desktop/xdg/desktop_fixtures.h"
#include "e2e/private_bus.h"

namespace kivo {
namespace {

// Kivo in a GNOME session: a private bus where the shell's extension may answer, the user's
// settings in a file of their own, and the user's extensions folder in a scratch home.
class GnomeShellSessionTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(bus_.isReady());
        ASSERT_TRUE(client_.isConnected());
    }
    void TearDown() override { QDBusConnection::disconnectFromBus(QStringLiteral("kivo")); }

    std::unique_ptr<FocusedWindowSource> connect(const QString& shipped, QString& failure) {
        return connectGnomeShell(client_, {shipped, user()}, catalog_, failure);
    }
    QString user() const { return home_.filePath(QStringLiteral("extensions")); }
    QString installed() const { return user() + u'/' + gnomeExtensionUuid; }

    static QString gsettings(const QStringList& arguments) {
        QProcess process;
        process.start(QStringLiteral("gsettings"), arguments);
        process.waitForFinished(10'000);
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    }

    const QString shipped_ = QStringLiteral(KIVO_BUILD_GNOME_EXTENSION_DIR);
    QTemporaryDir home_;
    test::ScopedVariable backend_{"GSETTINGS_BACKEND", "keyfile"};
    test::ScopedVariable configHome_{"XDG_CONFIG_HOME", home_.path().toLocal8Bit()};
    test::PrivateBus bus_;
    QDBusConnection client_ = QDBusConnection::connectToBus(bus_.address(), QStringLiteral("kivo"));
    XdgApplicationCatalog catalog_{
        {QString(), home_.path(), home_.filePath(QStringLiteral("none")), QStringLiteral("C")}};
};

TEST_F(GnomeShellSessionTest, BeforeTheShellRunsTheExtensionItSaysTheOneStepToTake) {
    QString failure;
    EXPECT_FALSE(connect(home_.filePath(QStringLiteral("not-shipped")), failure));
    EXPECT_TRUE(failure.startsWith(QLatin1String("cannot install"))) << failure.toStdString();

    EXPECT_FALSE(connect(shipped_, failure));
    EXPECT_TRUE(failure.endsWith(QLatin1String("log out and in once"))) << failure.toStdString();
    EXPECT_EQ(extensionVersionIn(installed()),
              extensionVersionIn(extensionVariantFor(shipped_, 43)));
    EXPECT_TRUE(
        parseStringArray(gsettings({QStringLiteral("get"), QStringLiteral("org.gnome.shell"),
                                    QStringLiteral("enabled-extensions")}))
            .contains(gnomeExtensionUuid));

    gsettings({QStringLiteral("set"), QStringLiteral("org.gnome.shell"),
               QStringLiteral("disable-user-extensions"), QStringLiteral("true")});
    EXPECT_FALSE(connect(shipped_, failure));
    EXPECT_TRUE(failure.startsWith(QLatin1String("GNOME Shell's extensions are turned off")))
        << failure.toStdString();
    EXPECT_FALSE(failure.contains(u'\n'));
}

TEST_F(GnomeShellSessionTest, ReadsARunningExtensionAndReplacesItsFilesOfAnotherVersion) {
    test::writeFixtureFile(installed() + QStringLiteral("/metadata.json"), R"({"version": 0})");
    test::FakeFocusExtension extension(bus_.address(), 0);
    ASSERT_TRUE(extension.publish());
    QString failure;
    EXPECT_TRUE(connect(shipped_, failure)) << failure.toStdString();
    EXPECT_TRUE(failure.isEmpty());
    EXPECT_EQ(extensionVersionIn(installed()),
              extensionVersionIn(extensionVariantFor(shipped_, 43)));
}

}  // namespace
}  // namespace kivo
