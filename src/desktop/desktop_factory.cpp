#include "desktop/desktop_factory.h"

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

}  // namespace

DesktopChoice chooseDesktop(const XdgApplicationCatalog& catalog) {
    const SessionEnvironment session = SessionEnvironment::fromProcess();
    const SessionVerdict verdict = classifySession(session);
    if (!verdict.failure.isEmpty()) {
        return {nullptr, verdict.failure};
    }
    // The other kinds carry a failure until this build reads them.
    return verdict.kind == SessionKind::X11
               ? chooseX11Desktop(session, catalog)
               : chooseWlrootsDesktop(session, verdict.desktopName, catalog);
}

}  // namespace kivo
