#pragma once

#include <QString>
#include <memory>

#include "capture/focused_window.h"
#include "capture/presence.h"
#include "desktop/xdg/xdg_application_catalog.h"
#include "model/application_settings.h"

namespace kivo {

struct DesktopChoice {
    std::unique_ptr<FocusedWindowSource> focusedWindow;  // null when no backend serves this session
    QString failure;                                     // why not, in one line
};

// The backend that reads the focused window in this session, chosen from the process
// environment; it resolves windows against `catalog`, which must outlive it. Today that is the
// X server named by DISPLAY when an EWMH window manager runs there; on Wayland, GNOME Shell
// through Kivo's extension, KWin through Kivo's script on the session bus, Hyprland through its
// sockets, or any other compositor that lists its toplevels with zwlr_foreign_toplevel_manager_v1.
DesktopChoice chooseDesktop(const XdgApplicationCatalog& catalog);

// Whether the user is at this session: logind's session of this process, the desktop's services
// on the session bus and the display's own view: in an X11 session the X server's screen saver
// and idle time, under Wayland the compositor's idle notifications for the user's idle timeout
// in `settings`. Whatever is missing simply tells nothing. `settings` and `clock` must outlive
// the source.
std::unique_ptr<PresenceSource> choosePresence(const ApplicationSettings& settings,
                                               const Clock& clock);

}  // namespace kivo
