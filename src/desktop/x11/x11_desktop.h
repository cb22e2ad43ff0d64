#pragma once

#include <QHash>
#include <QString>
#include <memory>

#include "capture/focused_window.h"
#include "desktop/x11/x11_connection.h"
#include "desktop/xdg/remembered_resolutions.h"
#include "desktop/xdg/xdg_application_catalog.h"

namespace kivo {

// The desktop of an X server run by an EWMH window manager: the frontmost application is the
// owner of the root's _NET_ACTIVE_WINDOW, identified by its desktop-file ID. The connection stays
// open; when it breaks, sampling yields nothing and a later call connects again.
class X11Desktop final : public FocusedWindowSource {
public:
    struct Options {
        QByteArray displayName;                          // as in DISPLAY
        const XdgApplicationCatalog* catalog = nullptr;  // outlives the desktop
        QString procRoot = QStringLiteral("/proc");
    };

    // A desktop on `options.displayName`; nothing, with the reason in `failure`, when the display
    // cannot be reached or no EWMH window manager runs there.
    static std::unique_ptr<X11Desktop> connect(Options options, QString& failure);

    // Reads the active window once. Windows of this very process are never reported; identifiers
    // resolve against the catalog's latest scan.
    std::optional<FocusedWindow> focusedWindow() override;

private:
    X11Desktop(Options options, std::unique_ptr<X11Connection> connection);

    X11Connection* liveConnection();
    std::optional<QString> applicationIdOf(const ActiveWindow& window);

    Options options_;
    std::unique_ptr<X11Connection> connection_;
    RememberedResolutions resolutions_;  // by window, process and class
};

}  // namespace kivo
