#include "app/install_layout.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <fstream>

namespace kivo {
namespace {

// A build tree keeps the two executables side by side; an installation keeps `kivo` in bin and
// `kivo-app` in libexec. Each must find the other in both.
TEST(InstallLayout, CompanionIsBesideInABuildTreeElseAtItsInstalledPlace) {
    QTemporaryDir root;
    ASSERT_TRUE(root.isValid());
    const std::filesystem::path prefix = root.path().toStdString();
    std::filesystem::create_directories(prefix / "bin");
    std::filesystem::create_directories(prefix / "libexec");

    EXPECT_EQ(companionExecutable(prefix / "bin/kivo", "../libexec/kivo-app"),
              prefix / "libexec/kivo-app");
    EXPECT_EQ(companionExecutable(prefix / "libexec/kivo-app", "../bin/kivo"), prefix / "bin/kivo");

    std::ofstream(prefix / "bin/kivo-app").put('x');
    EXPECT_EQ(companionExecutable(prefix / "bin/kivo", "../libexec/kivo-app"),
              prefix / "bin/kivo-app");
}

TEST(InstallLayout, RunningExecutableIsThisTest) {
    EXPECT_EQ(runningExecutable().filename(), "kivo_app_tests");
}

}  // namespace
}  // namespace kivo
