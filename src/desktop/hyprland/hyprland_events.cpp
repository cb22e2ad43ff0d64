#include "desktop/hyprland/hyprland_events.h"

namespace kivo {

namespace {

// Addresses come as "55d2c0" in events and as "0x55d2c0" in replies.
QByteArray bareAddress(const QByteArray& address) {
    return address.startsWith("0x") ? address.mid(2) : address;
}

}  // namespace

void applyHyprlandEvent(const QByteArray& line, std::optional<HyprlandActiveWindow>& active) {
    const qsizetype separator = line.indexOf(">>");
    if (separator < 0) {
        return;
    }
    const QByteArray event = line.left(separator);
    const QByteArray data = line.mid(separator + 2);
    if (event == "activewindow") {
        // A class has no comma; a title may have many.
        const qsizetype comma = data.indexOf(',');
        const QString windowClass = QString::fromUtf8(data.left(comma < 0 ? data.size() : comma));
        const QString title = comma < 0 ? QString() : QString::fromUtf8(data.mid(comma + 1));
        if (windowClass.isEmpty() && title.isEmpty()) {
            active.reset();
            return;
        }
        // The address arrives with activewindowv2 right after; keep the old one only while it can
        // still be the same window.
        const QByteArray address =
            active && active->windowClass == windowClass ? active->address : QByteArray();
        active = HyprlandActiveWindow{windowClass, title, address};
    } else if (event == "activewindowv2") {
        const QByteArray address = bareAddress(data.trimmed());
        if (address.isEmpty() || address == ",") {
            active.reset();
        } else if (active) {
            active->address = address;
        }
    } else if (event == "closewindow" && active && bareAddress(data) == active->address) {
        active.reset();
    }
}

}  // namespace kivo
