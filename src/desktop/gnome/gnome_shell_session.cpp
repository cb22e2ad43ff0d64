#include "desktop/gnome/gnome_shell_session.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include "desktop/gnome/extension_files.h"
#include "desktop/gnome/gnome_desktop.h"
#include "desktop/gnome/shell_settings.h"
#include "desktop/presence/dbus_call.h"
#include "model/diagnostics.h"

namespace kivo {

namespace {

const QString shippedName = QStringLiteral("kivo/gnome-shell-extension");

// The running shell says its version on the bus; the program says it too, should the bus not.
std::optional<int> runningShellMajor(const QDBusConnection& bus) {
    const auto version =
        dbusProperty(bus, QStringLiteral("org.gnome.Shell"), QStringLiteral("/org/gnome/Shell"),
                     QStringLiteral("org.gnome.Shell"), QStringLiteral("ShellVersion"));
    if (version && version->canConvert<QString>()) {
        if (auto major = shellMajorVersion(version->toString())) {
            return major;
        }
    }
    QProcess shell;
    shell.start(QStringLiteral("gnome-shell"), {QStringLiteral("--version")});
    if (!shell.waitForFinished(10'000) || shell.exitStatus() != QProcess::NormalExit) {
        return std::nullopt;
    }
    return shellMajorVersion(QString::fromUtf8(shell.readAllStandardOutput()));
}

QString versionText(const std::optional<int>& version) {
    return version ? QString::number(*version) : QStringLiteral("unknown");
}

// Puts the extension for this shell in place; says what changed. False when it cannot.
bool installForShell(const QDBusConnection& bus, const ExtensionFolders& folders,
                     QString& failure) {
    // Debian 12's GNOME Shell is 43: without a version to go by, that kind of extension.
    constexpr int likelyShell = 43;
    const int major = runningShellMajor(bus).value_or(likelyShell);
    const ExtensionInstall install =
        installExtension(extensionVariantFor(folders.shipped, major),
                         QDir(folders.user).filePath(gnomeExtensionUuid));
    switch (install.outcome) {
        case ExtensionInstall::Outcome::Failed:
            failure = install.failure;
            return false;
        case ExtensionInstall::Outcome::Installed:
            printDiagnostic(QStringLiteral("Installed Kivo's GNOME Shell extension %1 (version %2)")
                                .arg(gnomeExtensionUuid, versionText(install.version)));
            break;
        case ExtensionInstall::Outcome::Updated:
            printDiagnostic(QStringLiteral("Updated Kivo's GNOME Shell extension %1 from version "
                                           "%2 to %3; GNOME Shell runs the new version after "
                                           "the next login")
                                .arg(gnomeExtensionUuid, versionText(install.previousVersion),
                                     versionText(install.version)));
            break;
        case ExtensionInstall::Outcome::Unchanged:
            break;
    }
    return true;
}

}  // namespace

ExtensionFolders ExtensionFolders::ofThisKivo() {
    QString shipped = QStandardPaths::locate(QStandardPaths::GenericDataLocation, shippedName,
                                             QStandardPaths::LocateDirectory);
    const QStringList nearby{
        QCoreApplication::applicationDirPath() + u"/../share/" + shippedName,
        QStringLiteral(KIVO_BUILD_GNOME_EXTENSION_DIR),
    };
    for (const QString& candidate : nearby) {
        if (shipped.isEmpty() && QFileInfo(candidate).isDir()) {
            shipped = QDir::cleanPath(candidate);
        }
    }
    return {shipped, QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                         QStringLiteral("/gnome-shell/extensions")};
}

std::unique_ptr<FocusedWindowSource> connectGnomeShell(const QDBusConnection& sessionBus,
                                                       const ExtensionFolders& folders,
                                                       const XdgApplicationCatalog& catalog,
                                                       QString& failure) {
    // Files first: an extension the shell runs may still be an older one than Kivo's.
    QString installFailure;
    const bool isInstalled = installForShell(sessionBus, folders, installFailure);
    QString connectFailure;
    auto desktop =
        GnomeDesktop::open({sessionBus, &catalog, QStringLiteral("/proc")}, connectFailure);
    if (desktop) {
        if (!isInstalled) {
            printDiagnostic(QStringLiteral("Cannot update Kivo's GNOME Shell extension: ") %
                            installFailure);
        }
        return desktop;
    }
    if (!isInstalled) {
        failure = QStringLiteral("cannot install Kivo's GNOME Shell extension: ") % installFailure;
        return nullptr;
    }
    QString enableFailure;
    if (!enableShellExtension(gnomeExtensionUuid, enableFailure)) {
        failure = QStringLiteral(
                      "cannot enable Kivo's GNOME Shell extension (%1): turn on \"Kivo focused "
                      "window\" in the Extensions app, then log out and in once")
                      .arg(enableFailure);
        return nullptr;
    }
    failure = areShellExtensionsTurnedOff()
                  ? QStringLiteral(
                        "GNOME Shell's extensions are turned off: turn them on in the Extensions "
                        "app, then log out and in once")
                  : QStringLiteral(
                        "Kivo's GNOME Shell extension is installed and enabled, but GNOME Shell "
                        "loads extensions only when it starts: log out and in once");
    return nullptr;
}

}  // namespace kivo
