#pragma once

#include <wayland-client.h>

#include <QByteArray>
#include <cstring>

#include "idle-inhibit-unstable-v1-client-protocol.h"

namespace kivo::test {

// A Wayland client that keeps the user from becoming idle, as a video player does, for as long
// as it lives: a zwp_idle_inhibitor_v1 on a surface of its own. sway counts a surface it shows no
// window for as visible, so the surface needs no content.
class WaylandIdleInhibitor {
public:
    explicit WaylandIdleInhibitor(const QByteArray& displayPath) {
        display_ = wl_display_connect(displayPath.constData());
        if (display_ == nullptr) {
            return;
        }
        static const wl_registry_listener listener{
            [](void* data, wl_registry* registry, std::uint32_t name, const char* interface,
               std::uint32_t) {
                auto* self = static_cast<WaylandIdleInhibitor*>(data);
                if (std::strcmp(interface, wl_compositor_interface.name) == 0) {
                    self->compositor_ = static_cast<wl_compositor*>(
                        wl_registry_bind(registry, name, &wl_compositor_interface, 1));
                } else if (std::strcmp(interface, zwp_idle_inhibit_manager_v1_interface.name) ==
                           0) {
                    self->manager_ = static_cast<zwp_idle_inhibit_manager_v1*>(wl_registry_bind(
                        registry, name, &zwp_idle_inhibit_manager_v1_interface, 1));
                }
            },
            [](void*, wl_registry*, std::uint32_t) {}};
        registry_ = wl_display_get_registry(display_);
        wl_registry_add_listener(registry_, &listener, this);
        if (wl_display_roundtrip(display_) < 0 || compositor_ == nullptr || manager_ == nullptr) {
            return;
        }
        surface_ = wl_compositor_create_surface(compositor_);
        inhibitor_ = zwp_idle_inhibit_manager_v1_create_inhibitor(manager_, surface_);
        wl_surface_commit(surface_);
        isHolding_ = wl_display_roundtrip(display_) >= 0;
    }

    ~WaylandIdleInhibitor() {
        if (inhibitor_ != nullptr) {
            zwp_idle_inhibitor_v1_destroy(inhibitor_);
        }
        if (surface_ != nullptr) {
            wl_surface_destroy(surface_);
        }
        if (manager_ != nullptr) {
            zwp_idle_inhibit_manager_v1_destroy(manager_);
        }
        if (compositor_ != nullptr) {
            wl_compositor_destroy(compositor_);
        }
        if (registry_ != nullptr) {
            wl_registry_destroy(registry_);
        }
        if (display_ != nullptr) {
            wl_display_disconnect(display_);
        }
    }
    WaylandIdleInhibitor(const WaylandIdleInhibitor&) = delete;
    WaylandIdleInhibitor& operator=(const WaylandIdleInhibitor&) = delete;

    // True once the compositor has the inhibitor.
    bool isHolding() const { return isHolding_; }

private:
    wl_display* display_ = nullptr;
    wl_registry* registry_ = nullptr;
    wl_compositor* compositor_ = nullptr;
    zwp_idle_inhibit_manager_v1* manager_ = nullptr;
    wl_surface* surface_ = nullptr;
    zwp_idle_inhibitor_v1* inhibitor_ = nullptr;
    bool isHolding_ = false;
};

}  // namespace kivo::test
