#include "desktop/desktop_factory.h"

#include <QCoreApplication>

#include "desktop/presence/session_presence.h"
#include "desktop/x11/x11_desktop.h"
#include "desktop/x11/x11_screen_saver.h"

namespace kivo {

DesktopChoice chooseDesktop(const XdgApplicationCatalog& catalog) {
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty()) {
        return {nullptr, QStringLiteral("no X11 display to record (DISPLAY is not set)")};
    }
    DesktopChoice choice;
    choice.focusedWindow =
        X11Desktop::connect({display, &catalog, QStringLiteral("/proc")}, choice.failure);
    return choice;
}

std::unique_ptr<PresenceSource> choosePresence() {
    std::unique_ptr<PresenceSource> display;
    if (const QByteArray name = qgetenv("DISPLAY"); !name.isEmpty()) {
        QString ignoredFailure;
        display = X11ScreenSaver::connect(name, ignoredFailure);
    }
    return std::make_unique<SessionPresence>(
        std::move(display),
        LogindSession::find(QDBusConnection::systemBus(), QCoreApplication::applicationPid()),
        SessionServices(QDBusConnection::sessionBus()));
}

}  // namespace kivo
