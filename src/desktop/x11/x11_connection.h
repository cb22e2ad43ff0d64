#pragma once

#include <xcb/xcb.h>

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <memory>
#include <optional>

#include "desktop/x11/compound_text_converter.h"

namespace kivo {

// What the window in front says about itself.
struct ActiveWindow {
    xcb_window_t id = XCB_WINDOW_NONE;
    std::int64_t processId = 0;  // 0 when the window names no process
    QString wmInstance;
    QString wmClass;
    std::optional<QString> title;  // nothing when the window has no readable title
};

// One open connection to an X server, with the atoms sampling needs.
class X11Connection {
public:
    // Connects to `displayName`; nothing, with the reason in `failure`, when that fails.
    static std::unique_ptr<X11Connection> open(const QByteArray& displayName, QString& failure);

    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    // True once the connection is broken; it then stays broken.
    bool hasFailed() const;

    // Whether an EWMH window manager runs (the root names its supporting window).
    bool hasWindowManager();

    // The window named by the root's _NET_ACTIVE_WINDOW with its process, class and title, read
    // in two pipelined round trips. Nothing when no window is active.
    std::optional<ActiveWindow> activeWindow();

private:
    struct Atoms {
        xcb_atom_t netActiveWindow = XCB_ATOM_NONE;
        xcb_atom_t netSupportingWmCheck = XCB_ATOM_NONE;
        xcb_atom_t netWmPid = XCB_ATOM_NONE;
        xcb_atom_t netWmName = XCB_ATOM_NONE;
        xcb_atom_t utf8String = XCB_ATOM_NONE;
        xcb_atom_t compoundText = XCB_ATOM_NONE;
    };

    X11Connection(xcb_connection_t* connection, xcb_window_t root, const QByteArray& displayName);
    bool internAtoms();
    std::optional<QString> decodeTitle(xcb_get_property_reply_t* reply);

    xcb_connection_t* connection_;
    xcb_window_t root_;
    Atoms atoms_;
    CompoundTextConverter compoundText_;
};

}  // namespace kivo
