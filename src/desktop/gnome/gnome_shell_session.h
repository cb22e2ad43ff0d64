#pragma once

#include <QDBusConnection>
#include <memory>

#include "capture/focused_window.h"
#include "desktop/xdg/xdg_application_catalog.h"

namespace kivo {

// Where Kivo keeps and puts its GNOME Shell extension.
struct ExtensionFolders {
    QString shipped;  // the extension as Kivo ships it, one folder per kind of shell
    QString user;     // the user's extensions folder (~/.local/share/gnome-shell/extensions)

    // The folders of this installation of Kivo, or of its build tree.
    static ExtensionFolders ofThisKivo();
};

// The reader of the focused window in a GNOME Shell session on Wayland. First makes sure the
// shell has Kivo's extension: installs it into the user's extensions folder, replaces one of
// another version (and says so), and enables it. The shell loads extensions only when it starts,
// so a newly installed extension works from the next login; until then this gives nothing, with
// the one step to take in `failure`. Windows resolve against `catalog`, which must outlive the
// reader.
std::unique_ptr<FocusedWindowSource> connectGnomeShell(const QDBusConnection& sessionBus,
                                                       const ExtensionFolders& folders,
                                                       const XdgApplicationCatalog& catalog,
                                                       QString& failure);

}  // namespace kivo
