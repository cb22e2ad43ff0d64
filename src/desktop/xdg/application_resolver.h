#pragma once

#include <QString>
#include <cstdint>
#include <optional>

#include "desktop/xdg/application_index.h"

namespace kivo {

// What a window says about the program behind it.
struct WindowOwner {
    std::int64_t processId = 0;  // 0 when the window names no process
    QString wmInstance;          // WM_CLASS, first part
    QString wmClass;             // WM_CLASS, second part
};

// The desktop-file ID of the installed application that owns the window, or nothing when no
// installed application can be found for it. Tries, in order: the Flatpak sandbox's
// application, the Snap, the systemd scope or service the launcher made for the application, the
// desktop file GIO launched this very process from, Chromium's CHROME_DESKTOP, an entry whose
// StartupWMClass equals the window's class and then its instance, and an entry named after the
// lower-cased class. Only IDs of installed applications count; a step that finds another ID
// gives way to the next. `procRoot` is the process file system's mount point ("/proc").
std::optional<QString> resolveApplicationId(const WindowOwner& owner, const QString& procRoot,
                                            const ApplicationIndex& index);

// What a Wayland toplevel says about the program behind it.
struct ToplevelOwner {
    std::int64_t processId = 0;  // 0 where the compositor names no process
    QString appId;               // the toplevel's app_id
};

// The desktop-file ID of the installed application that owns a Wayland toplevel, or nothing.
// The same sources as for an X11 window, with the app_id in the place of the class: the sandbox
// (Flatpak, Snap) first, since it cannot be mistaken; then the app_id itself as an installed ID
// (with or without ".desktop"), which well-behaved clients set and which beats a scope inherited
// from the terminal that started the client; then the launcher's scope and marks; then
// StartupWMClass and the lower-cased app_id.
std::optional<QString> resolveToplevelApplicationId(const ToplevelOwner& owner,
                                                    const QString& procRoot,
                                                    const ApplicationIndex& index);

}  // namespace kivo
