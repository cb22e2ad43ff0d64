#pragma once

#include <xcb/xcb.h>

#include <QByteArray>
#include <QByteArrayView>
#include <cstdint>

namespace kivo::test {

// Plays the window manager's and the clients' part on a bare X server: creates windows and
// writes the properties they would, so that a test decides exactly what the desktop reports.
class FakeWindowManager {
public:
    explicit FakeWindowManager(const QByteArray& displayName);
    ~FakeWindowManager();
    FakeWindowManager(const FakeWindowManager&) = delete;
    FakeWindowManager& operator=(const FakeWindowManager&) = delete;

    bool isConnected() const;

    // Names a supporting window on the root, as EWMH window managers do.
    void announce();
    xcb_window_t createWindow();
    void destroyWindow(xcb_window_t window);
    // XCB_WINDOW_NONE writes None, as managers do briefly while switching.
    void setActiveWindow(xcb_window_t window);
    void removeActiveWindow();

    void setCardinal(xcb_window_t window, const char* property, std::uint32_t value);
    void setText(xcb_window_t window, const char* property, const char* type, QByteArrayView bytes);
    void removeProperty(xcb_window_t window, const char* property);
    // Waits until the server has carried out everything written so far.
    void sync();

private:
    xcb_atom_t atom(const char* name);

    xcb_connection_t* connection_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
};

}  // namespace kivo::test
