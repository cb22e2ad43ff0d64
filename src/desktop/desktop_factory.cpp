#include "desktop/desktop_factory.h"

#include <QCoreApplication>

#include "desktop/gnome/gnome_shell_session.h"
#include "desktop/hyprland/hyprland_desktop.h"
#include "desktop/kwin/kwin_desktop.h"
#include "desktop/kwin/kwin_script_file.h"
#include "desktop/presence/session_presence.h"
#include "desktop/session_environment.h"
#include "desktop/wayland/notified_idle_time.h"
#include "desktop/wayland/wayland_idle_notifier.h"
#include "desktop/wlroots/wlroots_desktop.h"
#include "desktop/x11/x11_desktop.h"
#include "desktop/x11/x11_screen_saver.h"

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

DesktopChoice chooseKWinDesktop(const XdgApplicationCatalog& catalog) {
    DesktopChoice choice;
    KWinDesktop::Options options;
    options.scriptPath = locateKWinScript();
    options.catalog = &catalog;
    choice.focusedWindow = KWinDesktop::connect(std::move(options), choice.failure);
    if (!choice.focusedWindow) {
        choice.failure = QStringLiteral("cannot record KDE Plasma on Wayland: ") + choice.failure;
    }
    return choice;
}

DesktopChoice chooseGnomeDesktop(const XdgApplicationCatalog& catalog) {
    DesktopChoice choice;
    choice.focusedWindow = connectGnomeShell(
        QDBusConnection::sessionBus(), ExtensionFolders::ofThisKivo(), catalog, choice.failure);
    if (!choice.focusedWindow) {
        choice.failure = QStringLiteral("cannot record GNOME on Wayland yet: ") % choice.failure;
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
            return chooseGnomeDesktop(catalog);
        case SessionKind::Plasma:
            return chooseKWinDesktop(catalog);
    }
    return {nullptr, verdict.failure};
}

std::unique_ptr<PresenceSource> choosePresence(const ApplicationSettings& settings,
                                               const Clock& clock) {
    // The X server's idle time and screen saver speak for the user only in an X11 session: under
    // Wayland, XWayland sees only the input of X clients; there the compositor notifies.
    std::unique_ptr<PresenceSource> display;
    const SessionEnvironment session = SessionEnvironment::fromProcess();
    const SessionVerdict verdict = classifySession(session);
    QString ignoredFailure;
    if (verdict.kind == SessionKind::X11) {
        if (verdict.failure.isEmpty()) {
            display = X11ScreenSaver::connect(session.x11Display, ignoredFailure);
        }
    } else if (auto notifier =
                   WaylandIdleNotifier::connect(session.waylandDisplay, ignoredFailure)) {
        display = std::make_unique<NotifiedIdleTime>(
            [name = session.waylandDisplay]() -> std::unique_ptr<IdleNotifier> {
                QString ignoredFailure;
                return WaylandIdleNotifier::connect(name, ignoredFailure);
            },
            [&settings] { return settings.idleTimeout(); }, clock, std::move(notifier));
    }
    return std::make_unique<SessionPresence>(
        std::move(display),
        LogindSession::find(QDBusConnection::systemBus(), QCoreApplication::applicationPid()),
        SessionServices(QDBusConnection::sessionBus()));
}

}  // namespace kivo
