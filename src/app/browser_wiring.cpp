#include "app/browser_wiring.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include "browser/browser_bridge.h"
#include "browser/browser_protocol.h"
#include "browser/host_manifests.h"
#include "model/diagnostics.h"

namespace kivo {

namespace {

void registerHost() {
    const QString hostPath =
        QCoreApplication::applicationDirPath() + QStringLiteral("/kivo-browser-host");
    if (!QFileInfo(hostPath).isExecutable()) {
        printDiagnostic(QStringLiteral("Browser bridge: no host at ") + hostPath);
        return;
    }
    QString configHome = qEnvironmentVariable("XDG_CONFIG_HOME");
    if (configHome.isEmpty()) {
        configHome = QDir::homePath() + QStringLiteral("/.config");
    }
    QStringList failures;
    writeHostManifests(hostPath, {configHome, QDir::homePath()}, failures);
    for (const QString& path : failures) {
        printDiagnostic(QStringLiteral("Browser bridge: cannot write ") + path);
    }
}

}  // namespace

std::unique_ptr<BrowserTabs> startBrowserTabs(const Clock& clock) {
    registerHost();
    const auto socketPath = browser_protocol::socketPath();
    if (!socketPath) {
        printDiagnostic(QStringLiteral("Browser bridge: XDG_RUNTIME_DIR is not set"));
        return std::make_unique<NoBrowserTabs>();
    }
    QString failure;
    auto bridge = BrowserBridge::listen({*socketPath, &clock}, failure);
    if (!bridge) {
        printDiagnostic(QStringLiteral("Browser bridge: ") + failure);
        return std::make_unique<NoBrowserTabs>();
    }
    return bridge;
}

}  // namespace kivo
