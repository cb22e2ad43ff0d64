#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace kivo {

// The active window as Hyprland's event socket tells it.
struct HyprlandActiveWindow {
    QString windowClass;  // the Wayland app_id, or an XWayland window's class
    QString title;
    QByteArray address;  // without "0x"; empty until activewindowv2 names it
};

// Applies one line of the event socket (without its line feed) to `active`: nothing means no
// window has the focus. Lines of other events leave it as it is.
void applyHyprlandEvent(const QByteArray& line, std::optional<HyprlandActiveWindow>& active);

}  // namespace kivo
