#include "desktop/gnome/extension_files.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include "desktop/xdg/desktop_fixtures.h"

namespace kivo {
namespace {

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QJsonObject metadataIn(const QString& folder) {
    return QJsonDocument::fromJson(readAll(folder + u"/metadata.json")).object();
}

TEST(ExtensionFilesTest, ReadsTheShellsMajorVersionFromItsOwnWords) {
    const std::pair<const char*, std::optional<int>> cases[] = {
        {"GNOME Shell 43.9\n", 43},
        {"45.2", 45},
        {"46", 46},
        {"GNOME Shell 47.alpha", 47},
        {"GNOME Shell 3.38.4", 3},
        {"GNOME Shell", std::nullopt},
        {"", std::nullopt},
        {"v43x", std::nullopt},
    };
    for (const auto& [text, major] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(shellMajorVersion(QString::fromLatin1(text)), major);
    }
}

// What this build ships: each shell gets a variant that names it, under Kivo's one UUID and one
// version, so that a shell upgrade swaps the variant without a version change going unnoticed.
TEST(ExtensionFilesTest, EveryShellGetsAShippedVariantThatDeclaresIt) {
    const QString shipped = QStringLiteral(KIVO_BUILD_GNOME_EXTENSION_DIR);
    std::optional<int> version;
    for (int major = 43; major <= 49; ++major) {
        SCOPED_TRACE(major);
        const QString variant = extensionVariantFor(shipped, major);
        const QJsonObject metadata = metadataIn(variant);
        EXPECT_EQ(metadata.value(QLatin1String("uuid")).toString(), QString(gnomeExtensionUuid));
        EXPECT_TRUE(metadata.value(QLatin1String("shell-version"))
                        .toArray()
                        .contains(QString::number(major)));
        const QByteArray code = readAll(variant + u"/extension.js");
        EXPECT_TRUE(code.contains("'app.kivo.FocusedWindow'"));
        // Scripts up to 44 define init(); modules from 45 export their class.
        EXPECT_EQ(code.contains("export default class"), major >= 45);
        EXPECT_EQ(code.contains("function init()"), major < 45);
        const auto shippedVersion = extensionVersionIn(variant);
        ASSERT_TRUE(shippedVersion);
        EXPECT_EQ(shippedVersion, version.value_or(*shippedVersion));
        version = shippedVersion;
    }
}

TEST(ExtensionFilesTest, InstallsReplacesAnotherVersionAndLeavesTheSameAlone) {
    QTemporaryDir root;
    const QString shipped = root.filePath(QStringLiteral("shipped"));
    const QString target = root.filePath(QStringLiteral("home/extensions/focus@kivo.app"));
    test::writeFixtureFile(shipped + u"/metadata.json",
                           R"({"uuid": "focus@kivo.app", "version": 7})");
    test::writeFixtureFile(shipped + u"/extension.js", "// new\n");
    using Outcome = ExtensionInstall::Outcome;

    ExtensionInstall install = installExtension(shipped, target);
    EXPECT_EQ(install.outcome, Outcome::Installed);
    EXPECT_EQ(install.previousVersion, std::nullopt);
    EXPECT_EQ(install.version, 7);
    EXPECT_EQ(readAll(target + u"/extension.js"), "// new\n");

    install = installExtension(shipped, target);
    EXPECT_EQ(install.outcome, Outcome::Unchanged);
    EXPECT_EQ(install.version, 7);

    // An older copy, and one whose code alone differs (another variant): both are replaced.
    const std::pair<QByteArray, std::optional<int>> installed[] = {
        {R"({"uuid": "focus@kivo.app", "version": 6})", 6},
        {R"({"uuid": "focus@kivo.app", "version": 7})", 7},
    };
    for (const auto& [metadata, previous] : installed) {
        test::writeFixtureFile(target + u"/metadata.json", metadata);
        test::writeFixtureFile(target + u"/extension.js", "// old\n");
        install = installExtension(shipped, target);
        EXPECT_EQ(install.outcome, Outcome::Updated);
        EXPECT_EQ(install.previousVersion, previous);
        EXPECT_EQ(install.version, 7);
        EXPECT_EQ(readAll(target + u"/extension.js"), "// new\n");
        EXPECT_EQ(extensionVersionIn(target), 7);
    }
}

TEST(ExtensionFilesTest, FailsInOneLineWhenTheFilesCannotBeFoundOrWritten) {
    QTemporaryDir root;
    const QString shipped = root.filePath(QStringLiteral("shipped"));
    ExtensionInstall install = installExtension(shipped, root.filePath(QStringLiteral("target")));
    EXPECT_EQ(install.outcome, ExtensionInstall::Outcome::Failed);
    EXPECT_TRUE(install.failure.contains(QLatin1String("missing")))
        << install.failure.toStdString();

    test::writeFixtureFile(shipped + u"/metadata.json", R"({"version": 1})");
    // A file where the extension's folder belongs.
    test::writeFixtureFile(root.filePath(QStringLiteral("target")), "in the way");
    install = installExtension(shipped, root.filePath(QStringLiteral("target")));
    EXPECT_EQ(install.outcome, ExtensionInstall::Outcome::Failed);
    EXPECT_TRUE(install.failure.contains(QLatin1String("cannot write")))
        << install.failure.toStdString();
    EXPECT_FALSE(install.failure.contains(u'\n'));
    EXPECT_EQ(readAll(root.filePath(QStringLiteral("target"))), "in the way");
}

}  // namespace
}  // namespace kivo
