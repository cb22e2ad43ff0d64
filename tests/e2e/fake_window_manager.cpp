#include "e2e/fake_window_manager.h"

#include <cstdlib>
#include <cstring>

namespace kivo::test {

FakeWindowManager::FakeWindowManager(const QByteArray& displayName)
    : connection_(xcb_connect(displayName.constData(), nullptr)) {
    if (isConnected()) {
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    }
}

FakeWindowManager::~FakeWindowManager() {
    xcb_disconnect(connection_);
}

bool FakeWindowManager::isConnected() const {
    return xcb_connection_has_error(connection_) == 0;
}

xcb_atom_t FakeWindowManager::atom(const char* name) {
    auto* reply = xcb_intern_atom_reply(
        connection_,
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name),
        nullptr);
    const xcb_atom_t atom = reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    std::free(reply);
    return atom;
}

void FakeWindowManager::announce() {
    const xcb_window_t supporting = createWindow();
    setCardinal(supporting, "_NET_SUPPORTING_WM_CHECK", supporting);
    setCardinal(root_, "_NET_SUPPORTING_WM_CHECK", supporting);
    sync();
}

xcb_window_t FakeWindowManager::createWindow() {
    const xcb_window_t window = xcb_generate_id(connection_);
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_, 0, 0, 100, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    return window;
}

void FakeWindowManager::destroyWindow(xcb_window_t window) {
    xcb_destroy_window(connection_, window);
    sync();
}

void FakeWindowManager::setActiveWindow(xcb_window_t window) {
    setCardinal(root_, "_NET_ACTIVE_WINDOW", window);
    sync();
}

void FakeWindowManager::removeActiveWindow() {
    removeProperty(root_, "_NET_ACTIVE_WINDOW");
    sync();
}

void FakeWindowManager::setCardinal(xcb_window_t window, const char* property,
                                    std::uint32_t value) {
    const bool isWindow = std::strcmp(property, "_NET_WM_PID") != 0;
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property),
                        isWindow ? XCB_ATOM_WINDOW : XCB_ATOM_CARDINAL, 32, 1, &value);
}

void FakeWindowManager::setText(xcb_window_t window, const char* property, const char* type,
                                QByteArrayView bytes) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property), atom(type), 8,
                        static_cast<std::uint32_t>(bytes.size()), bytes.data());
}

void FakeWindowManager::removeProperty(xcb_window_t window, const char* property) {
    xcb_delete_property(connection_, window, atom(property));
}

void FakeWindowManager::sync() {
    std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

}  // namespace kivo::test
