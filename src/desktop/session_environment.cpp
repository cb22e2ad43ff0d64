#include "desktop/session_environment.h"

#include <QStringList>

namespace kivo {

SessionEnvironment SessionEnvironment::fromProcess() {
    return {qgetenv("WAYLAND_DISPLAY"),
            qgetenv("DISPLAY"),
            qgetenv("XDG_SESSION_TYPE"),
            qgetenv("XDG_CURRENT_DESKTOP"),
            qgetenv("SWAYSOCK"),
            qgetenv("XDG_RUNTIME_DIR"),
            qgetenv("HYPRLAND_INSTANCE_SIGNATURE")};
}

SessionVerdict classifySession(const SessionEnvironment& environment) {
    const QByteArray type = environment.sessionType.toLower();
    const bool isWayland =
        type == "wayland" || (type != "x11" && !environment.waylandDisplay.isEmpty());
    if (!isWayland) {
        return {SessionKind::X11, QStringLiteral("X11"), QString()};
    }
    const QStringList desktops =
        QString::fromUtf8(environment.currentDesktop).split(u':', Qt::SkipEmptyParts);
    const auto names = [&desktops](const char* name) {
        return desktops.contains(QLatin1String(name), Qt::CaseInsensitive);
    };
    SessionVerdict verdict{SessionKind::Wlroots,
                           desktops.isEmpty() ? QStringLiteral("an unnamed Wayland desktop")
                                              : desktops.join(u':') % QStringLiteral(" on Wayland"),
                           QString()};
    if (names("GNOME")) {
        verdict.kind = SessionKind::Gnome;
        verdict.desktopName = QStringLiteral("GNOME on Wayland");
    } else if (names("KDE")) {
        verdict.kind = SessionKind::Plasma;
        verdict.desktopName = QStringLiteral("KDE Plasma on Wayland");
    } else if (names("Hyprland")) {
        verdict.kind = SessionKind::Hyprland;
        verdict.desktopName = QStringLiteral("Hyprland");
        if (environment.hyprlandSignature.isEmpty() || environment.runtimeFolder.isEmpty()) {
            verdict.failure = QStringLiteral(
                "cannot record Hyprland: HYPRLAND_INSTANCE_SIGNATURE or XDG_RUNTIME_DIR is not "
                "set; start Kivo from within the session");
        }
    } else if (environment.waylandDisplay.isEmpty()) {
        verdict.failure =
            QStringLiteral(
                "cannot record %1: WAYLAND_DISPLAY is not set; start Kivo from within the "
                "session")
                .arg(verdict.desktopName);
    }
    return verdict;
}

}  // namespace kivo
