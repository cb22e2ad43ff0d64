// A second start of the real `kivo` finds this instance on a private session bus, asks it to
// come to the front, and ends with 0 without touching the store. Run under dbus-run-session.
#include "gui/single_instance.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>

namespace kivo {
namespace {

TEST(SingleInstanceTest, SecondStartActivatesTheFirstAndExits) {
    SingleInstance first;
    ASSERT_EQ(first.claim(), SingleInstance::Claim::owned)
        << "run this test under dbus-run-session";
    QSignalSpy activated(&first, &SingleInstance::activated);

    QTemporaryDir home;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home.path());
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    QProcess second;
    second.setProcessEnvironment(environment);
    second.start(QStringLiteral(KIVO_BINARY), {});
    ASSERT_TRUE(second.waitForStarted(30'000));
    // The call arrives while the second start waits for its answer.
    EXPECT_TRUE(activated.wait(60'000));
    ASSERT_TRUE(second.waitForFinished(60'000)) << "the second start did not end";
    EXPECT_EQ(second.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
    EXPECT_EQ(activated.size(), 1);
    EXPECT_FALSE(QDir(home.filePath(QStringLiteral("data/Kivo"))).exists());
}

}  // namespace
}  // namespace kivo
