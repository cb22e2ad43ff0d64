#pragma once

#include <QHash>
#include <QString>
#include <memory>

#include "capture/focused_window.h"
#include "desktop/wlroots/foreign_toplevels.h"
#include "desktop/xdg/remembered_resolutions.h"
#include "desktop/xdg/xdg_application_catalog.h"

namespace kivo {

// The desktop of a wlroots compositor (sway, labwc, river, Wayfire): the frontmost application
// is the owner of the activated toplevel, identified by its desktop-file ID. On sway the IPC
// socket adds the process. When the connection breaks, sampling yields nothing and a later call
// connects again.
class WlrootsDesktop final : public FocusedWindowSource {
public:
    struct Options {
        QByteArray displayName;                          // as in WAYLAND_DISPLAY
        const XdgApplicationCatalog* catalog = nullptr;  // outlives the desktop
        QString procRoot = QStringLiteral("/proc");
        QByteArray swaySocket;  // as in SWAYSOCK; empty on other compositors
    };

    // A desktop on `options.displayName`; nothing, with the reason in `failure`, when the display
    // cannot be reached or its compositor does not list toplevels.
    static std::unique_ptr<WlrootsDesktop> connect(Options options, QString& failure);

    // Applies the compositor's news without waiting and answers from the latest state. Windows
    // of this very process are never reported where the process is known.
    std::optional<FocusedWindow> focusedWindow() override;

private:
    WlrootsDesktop(Options options, std::unique_ptr<ForeignToplevels> toplevels);

    ForeignToplevels* liveToplevels();
    std::int64_t processIdOf(const ForeignToplevels::Toplevel& toplevel);
    std::optional<QString> applicationIdOf(const QString& appId, std::int64_t processId);

    Options options_;
    std::unique_ptr<ForeignToplevels> toplevels_;
    // The process of the front toplevel, asked once per activation: a window that sway cannot
    // place (an XWayland one names no app_id there) is not asked about every tick.
    std::uint64_t processActivation_ = 0;
    std::int64_t processId_ = 0;
    RememberedResolutions resolutions_;  // by process and app_id
};

}  // namespace kivo
