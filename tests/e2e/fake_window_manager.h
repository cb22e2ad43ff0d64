#pragma once

#include <xcb/xcb.h>

#include <QByteArrayView>
#include <cstdlib>
#include <cstring>

namespace kivo::test {

// Plays the window manager's and the clients' part on a bare X server, so that a test decides
// exactly what the desktop reports; or tells when a real window manager has started.
class FakeWindowManager {
public:
    explicit FakeWindowManager(const QByteArray& displayName)
        : connection_(xcb_connect(displayName.constData(), nullptr)) {
        if (xcb_connection_has_error(connection_) == 0) {
            root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
        }
    }
    ~FakeWindowManager() { xcb_disconnect(connection_); }
    FakeWindowManager(const FakeWindowManager&) = delete;

    void announce() {
        const xcb_window_t supporting = createWindow();
        setCardinal(supporting, "_NET_SUPPORTING_WM_CHECK", supporting);
        setCardinal(root_, "_NET_SUPPORTING_WM_CHECK", supporting);
        sync();
    }
    // Whether an EWMH window manager has named its supporting window on the root.
    bool isManaged() {
        auto* reply = xcb_get_property_reply(
            connection_,
            xcb_get_property(connection_, 0, root_, atom("_NET_SUPPORTING_WM_CHECK"),
                             XCB_ATOM_WINDOW, 0, 1),
            nullptr);
        const bool managed = reply != nullptr && xcb_get_property_value_length(reply) == 4;
        std::free(reply);
        return managed;
    }
    xcb_window_t createWindow() {
        const xcb_window_t window = xcb_generate_id(connection_);
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_, 0, 0, 100, 100, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        return window;
    }
    // XCB_WINDOW_NONE writes None, as managers do briefly while switching.
    void setActiveWindow(xcb_window_t window) {
        setCardinal(root_, "_NET_ACTIVE_WINDOW", window);
        sync();
    }
    // Writes a WINDOW, or for _NET_WM_PID a CARDINAL.
    void setCardinal(xcb_window_t window, const char* property, std::uint32_t value) {
        const bool isPid = std::strcmp(property, "_NET_WM_PID") == 0;
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property),
                            isPid ? XCB_ATOM_CARDINAL : XCB_ATOM_WINDOW, 32, 1, &value);
    }
    void setText(xcb_window_t window, const char* property, const char* type,
                 QByteArrayView bytes) {
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property), atom(type),
                            8, static_cast<std::uint32_t>(bytes.size()), bytes.data());
        sync();
    }
    void removeProperty(xcb_window_t window, const char* property) {
        xcb_delete_property(connection_, window, atom(property));
    }
    // Waits until the server has carried out everything written so far.
    void sync() {
        std::free(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    }

private:
    xcb_atom_t atom(const char* name) {
        const auto length = static_cast<std::uint16_t>(std::strlen(name));
        auto* reply = xcb_intern_atom_reply(connection_,
                                            xcb_intern_atom(connection_, 0, length, name), nullptr);
        const xcb_atom_t atom = reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
        std::free(reply);
        return atom;
    }

    xcb_connection_t* connection_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
};

}  // namespace kivo::test
