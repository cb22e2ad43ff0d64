#pragma once

#include <QString>
#include <memory>

#include "capture/focused_window.h"
#include "capture/presence.h"
#include "desktop/xdg/xdg_application_catalog.h"

namespace kivo {

struct DesktopChoice {
    std::unique_ptr<FocusedWindowSource> focusedWindow;  // null when no backend serves this session
    QString failure;                                     // why not, in one line
};

// The backend that reads the focused window in this session, chosen from the process
// environment; it resolves windows against `catalog`, which must outlive it. Today that is the
// X server named by DISPLAY when an EWMH window manager runs there; on Wayland, GNOME Shell
// through Kivo's extension, Hyprland through its sockets, or any other compositor that lists its
// toplevels with zwlr_foreign_toplevel_manager_v1.
DesktopChoice chooseDesktop(const XdgApplicationCatalog& catalog);

// Whether the user is at this session: logind's session of this process, the desktop's services
// on the session bus and, when DISPLAY names one, the X server's screen saver and idle time.
// Whatever is missing simply tells nothing.
std::unique_ptr<PresenceSource> choosePresence();

}  // namespace kivo
