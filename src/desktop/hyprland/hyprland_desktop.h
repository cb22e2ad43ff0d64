#pragma once

#include <QHash>
#include <QString>
#include <memory>

#include "capture/focused_window.h"
#include "desktop/hyprland/hyprland_events.h"
#include "desktop/hyprland/hyprland_sockets.h"
#include "desktop/xdg/remembered_resolutions.h"
#include "desktop/xdg/xdg_application_catalog.h"

namespace kivo {

// The desktop of Hyprland: the active window as its event socket announces it, with the process
// from the request socket, identified by its desktop-file ID. The event socket is read on each
// sample without waiting; when it breaks, sampling yields nothing and a later call connects again.
class HyprlandDesktop final : public FocusedWindowSource {
public:
    struct Options {
        QString socketFolder;  // $XDG_RUNTIME_DIR/hypr/$HYPRLAND_INSTANCE_SIGNATURE
        const XdgApplicationCatalog* catalog = nullptr;  // outlives the desktop
        QString procRoot = QStringLiteral("/proc");
    };

    // A desktop on the sockets in `options.socketFolder`; nothing, with the reason in `failure`,
    // when Hyprland does not answer there.
    static std::unique_ptr<HyprlandDesktop> connect(Options options, QString& failure);

    std::optional<FocusedWindow> focusedWindow() override;

private:
    explicit HyprlandDesktop(Options options);

    bool open();
    bool readEvents();
    std::int64_t processIdOfActive();
    std::optional<QString> applicationIdOf(const QString& windowClass, std::int64_t processId);
    QString requestSocket() const;

    Options options_;
    UnixSocket events_;
    QByteArray partialLine_;
    std::optional<HyprlandActiveWindow> active_;
    // The process of the active window, asked once per window.
    QByteArray processAddress_;
    std::int64_t processId_ = 0;
    RememberedResolutions resolutions_;  // by process and class
};

}  // namespace kivo
