#include "desktop/desktop_factory.h"

#include "desktop/hyprland/hyprland_desktop.h"
#include "desktop/session_environment.h"
#include "desktop/wlroots/wlroots_desktop.h"
#include "desktop/x11/x11_desktop.h"

namespace kivo {

namespace {

DesktopChoice chooseX11Desktop(const SessionEnvironment& session,
                               const XdgApplicationCatalog& catalog) {
    if (session.x11Display.isEmpty()) {
        return {nullptr, QStringLiteral("no X11 display to record (DISPLAY is not set)")};
    }
    DesktopChoice choice;
    choice.focusedWindow = X11Desktop::connect(
        {session.x11Display, &catalog, QStringLiteral("/proc")}, choice.failure);
    return choice;
}

DesktopChoice chooseWlrootsDesktop(const SessionEnvironment& session, const QString& desktopName,
                                   const XdgApplicationCatalog& catalog) {
    DesktopChoice choice;
    choice.focusedWindow = WlrootsDesktop::connect(
        {session.waylandDisplay, &catalog, QStringLiteral("/proc"), session.swaySocket},
        choice.failure);
    if (!choice.focusedWindow) {
        choice.failure = QStringLiteral("cannot record %1: %2").arg(desktopName, choice.failure);
    }
    return choice;
}

DesktopChoice chooseHyprlandDesktop(const SessionEnvironment& session,
                                    const XdgApplicationCatalog& catalog) {
    const QString sockets = QString::fromLocal8Bit(session.runtimeFolder) %
                            QStringLiteral("/hypr/") %
                            QString::fromLocal8Bit(session.hyprlandSignature);
    DesktopChoice choice;
    choice.focusedWindow =
        HyprlandDesktop::connect({sockets, &catalog, QStringLiteral("/proc")}, choice.failure);
    if (!choice.focusedWindow) {
        choice.failure = QStringLiteral(
                             "cannot record Hyprland: %1; start Kivo from within the "
                             "session")
                             .arg(choice.failure);
    }
    return choice;
}

}  // namespace

DesktopChoice chooseDesktop(const XdgApplicationCatalog& catalog) {
    const SessionEnvironment session = SessionEnvironment::fromProcess();
    const SessionVerdict verdict = classifySession(session);
    if (!verdict.failure.isEmpty()) {
        return {nullptr, verdict.failure};
    }
    switch (verdict.kind) {
        case SessionKind::X11:
            return chooseX11Desktop(session, catalog);
        case SessionKind::Hyprland:
            return chooseHyprlandDesktop(session, catalog);
        case SessionKind::Wlroots:
            return chooseWlrootsDesktop(session, verdict.desktopName, catalog);
        case SessionKind::Gnome:
        case SessionKind::Plasma:
            break;  // these carry a failure until this build reads them
    }
    return {nullptr, verdict.failure};
}

}  // namespace kivo
