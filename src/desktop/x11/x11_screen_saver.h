#pragma once

#include <xcb/xcb.h>

#include <QByteArray>
#include <QString>
#include <memory>

#include "capture/presence.h"

namespace kivo {

// The X server's own view of the user (the MIT-SCREEN-SAVER extension): the time since the last
// input on any device, and whether the screen saver has blanked the screen. Inhibitors are not
// the server's business. The connection is its own; when it breaks, the server tells nothing
// and a later call connects again.
class X11ScreenSaver final : public PresenceSource {
public:
    // Nothing, with the reason in `failure`, when the display cannot be reached or lacks the
    // extension.
    static std::unique_ptr<X11ScreenSaver> connect(const QByteArray& displayName, QString& failure);

    ~X11ScreenSaver() override;
    X11ScreenSaver(const X11ScreenSaver&) = delete;
    X11ScreenSaver& operator=(const X11ScreenSaver&) = delete;

    // True while the screen saver runs.
    bool isLocked() override;
    std::optional<Seconds> idleTime() override;
    bool isIdleInhibited() override { return false; }

private:
    struct State {
        bool isSaverOn = false;
        Seconds idle{0.0};
    };

    X11ScreenSaver(QByteArray displayName, xcb_connection_t* connection, xcb_window_t root);
    std::optional<State> query();
    bool reconnect();

    QByteArray displayName_;
    xcb_connection_t* connection_;
    xcb_window_t root_;
};

}  // namespace kivo
