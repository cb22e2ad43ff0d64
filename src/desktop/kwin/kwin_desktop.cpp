#include "desktop/kwin/kwin_desktop.h"

#include <unistd.h>

#include <QDBusConnectionInterface>
#include <QFileInfo>

#include "desktop/kwin/kwin_scripting.h"
#include "desktop/xdg/application_resolver.h"

namespace kivo {

const QString KWinDesktop::serviceName = QStringLiteral("app.kivo.Kivo.ActiveWindow");
const QString KWinDesktop::objectPath = QStringLiteral("/app/kivo/Kivo/ActiveWindow");
const QString KWinDesktop::scriptName = QStringLiteral("kivo-active-window");

std::unique_ptr<KWinDesktop> KWinDesktop::connect(Options options, QString& failure) {
    if (!options.bus.isConnected()) {
        failure = QStringLiteral(
            "there is no session bus to reach KWin on; start Kivo from within the Plasma session");
        return nullptr;
    }
    if (options.scriptPath.isEmpty() || !QFileInfo(options.scriptPath).isReadable()) {
        failure = QStringLiteral("Kivo's KWin script \"%1\" is missing; reinstall Kivo")
                      .arg(options.scriptPath.isEmpty()
                               ? QStringLiteral("kivo/kwin/active_window_reporter.js")
                               : options.scriptPath);
        return nullptr;
    }
    std::unique_ptr<KWinDesktop> desktop(new KWinDesktop(std::move(options)));
    if (!desktop->publish(failure)) {
        return nullptr;
    }
    if (!desktop->startScript(failure)) {
        return nullptr;
    }
    return desktop;
}

KWinDesktop::KWinDesktop(Options options)
    : options_(std::move(options)),
      kwinWatcher_(kwinService, options_.bus, QDBusServiceWatcher::WatchForOwnerChange),
      resolutions_(*options_.catalog) {
    QObject::connect(&kwinWatcher_, &QDBusServiceWatcher::serviceOwnerChanged, &receiver_,
                     [this](const QString&, const QString&, const QString& newOwner) {
                         receiver_.trust(QString());  // no report counts until the script runs
                         isScriptWanted_ = !newOwner.isEmpty();
                     });
}

KWinDesktop::~KWinDesktop() {
    if (!isPublished_) {
        return;
    }
    if (options_.bus.interface()->isServiceRegistered(kwinService)) {
        unloadKWinScript(options_.bus, scriptName);
    }
    options_.bus.unregisterObject(objectPath);
    options_.bus.unregisterService(serviceName);
}

bool KWinDesktop::publish(QString& failure) {
    if (!options_.bus.registerObject(objectPath, &receiver_, QDBusConnection::ExportAdaptors)) {
        failure = QStringLiteral(
                      "the object \"%1\" is taken on the session bus; quit the other Kivo first")
                      .arg(objectPath);
        return false;
    }
    if (!options_.bus.registerService(serviceName)) {
        options_.bus.unregisterObject(objectPath);
        failure = QStringLiteral(
                      "another program owns \"%1\" on the session bus; quit the other Kivo first")
                      .arg(serviceName);
        return false;
    }
    isPublished_ = true;
    return true;
}

bool KWinDesktop::startScript(QString& failure) {
    const QDBusReply<QString> owner = options_.bus.interface()->serviceOwner(kwinService);
    if (!owner.isValid()) {
        failure = QStringLiteral(
            "KWin is not on the session bus; start Kivo from within the Plasma session");
        return false;
    }
    receiver_.trust(owner.value());
    if (!runKWinScript(options_.bus, options_.scriptPath, scriptName, failure)) {
        failure += QStringLiteral("; log out and back in to restart KWin");
        return false;
    }
    return true;
}

std::optional<FocusedWindow> KWinDesktop::focusedWindow() {
    if (isScriptWanted_) {
        isScriptWanted_ = false;
        QString ignoredFailure;
        startScript(ignoredFailure);
    }
    const std::optional<KWinWindow>& window = receiver_.activeWindow();
    if (!window || window->processId == ::getpid()) {
        return std::nullopt;
    }
    auto id = applicationIdOf(*window);
    if (!id) {
        return std::nullopt;
    }
    auto name = options_.catalog->displayName(*id);
    return FocusedWindow{window->processId, *std::move(id), name.value_or(QString()),
                         window->caption};
}

// A Wayland window's desktopFileName is its app_id, resolved as on the other compositors; an X
// client's names are its WM_CLASS, resolved as on X11.
std::optional<QString> KWinDesktop::applicationIdOf(const KWinWindow& window) {
    const QString key = window.internalId % u'|' % QString::number(window.processId) % u'|' %
                        window.desktopFileName % u'|' % window.resourceClass % u'|' %
                        window.resourceName;
    return resolutions_.find(key, [&](const ApplicationIndex& index) {
        if (!window.desktopFileName.isEmpty()) {
            if (auto id = resolveToplevelApplicationId({window.processId, window.desktopFileName},
                                                       options_.procRoot, index)) {
                return id;
            }
        }
        return resolveApplicationId({window.processId, window.resourceName, window.resourceClass},
                                    options_.procRoot, index);
    });
}

}  // namespace kivo
