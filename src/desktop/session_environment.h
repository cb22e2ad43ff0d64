#pragma once

#include <QByteArray>
#include <QString>

namespace kivo {

// What the process environment says about the graphical session Kivo runs in.
struct SessionEnvironment {
    QByteArray waylandDisplay;  // WAYLAND_DISPLAY
    QByteArray x11Display;      // DISPLAY
    QByteArray sessionType;     // XDG_SESSION_TYPE: "wayland", "x11", "tty"...
    QByteArray currentDesktop;  // XDG_CURRENT_DESKTOP: colon-separated names, e.g. "ubuntu:GNOME"
    QByteArray swaySocket;      // SWAYSOCK
    QByteArray runtimeFolder;   // XDG_RUNTIME_DIR
    QByteArray hyprlandSignature;  // HYPRLAND_INSTANCE_SIGNATURE

    static SessionEnvironment fromProcess();
};

// The kinds of session that read the focused window each their own way.
enum class SessionKind { X11, Wlroots, Gnome, Plasma, Hyprland };

struct SessionVerdict {
    SessionKind kind = SessionKind::X11;
    QString desktopName;  // as the user knows it, for messages
    QString failure;      // set when this build cannot record the session, in one line
};

// Which kind of session this is. An explicit XDG_SESSION_TYPE decides; without one a set
// WAYLAND_DISPLAY means Wayland. A Wayland session is never read through XWayland, which sees
// only X clients; on Wayland XDG_CURRENT_DESKTOP names the compositor, and any one not known by
// name is tried as a wlroots compositor.
SessionVerdict classifySession(const SessionEnvironment& environment);

}  // namespace kivo
