#include "desktop/wlroots/foreign_toplevels.h"

#include <wayland-client.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "desktop/wayland/wayland_events.h"
#include "wlr-foreign-toplevel-management-unstable-v1-client-protocol.h"

namespace kivo {

namespace {

// Version 3 adds only the parent event; older compositors still say all this one needs.
constexpr std::uint32_t newestKnownVersion = 3;

void ignoreOutput(void*, zwlr_foreign_toplevel_handle_v1*, wl_output*) {}
void ignoreParent(void*, zwlr_foreign_toplevel_handle_v1*, zwlr_foreign_toplevel_handle_v1*) {}

}  // namespace

std::unique_ptr<ForeignToplevels> ForeignToplevels::connect(const QByteArray& displayName,
                                                            QString& failure) {
    std::unique_ptr<ForeignToplevels> toplevels(new ForeignToplevels);
    toplevels->display_ = wl_display_connect(displayName.constData());
    if (toplevels->display_ == nullptr) {
        failure = QStringLiteral(
                      "cannot connect to the Wayland display \"%1\" (%2); start Kivo from "
                      "within the session")
                      .arg(QString::fromLocal8Bit(displayName),
                           QString::fromLocal8Bit(std::strerror(errno)));
        return nullptr;
    }
    static const wl_registry_listener registryListener{onGlobal, onGlobalRemove};
    toplevels->registry_ = wl_display_get_registry(toplevels->display_);
    wl_registry_add_listener(toplevels->registry_, &registryListener, toplevels.get());
    // The first round trip lists the globals; the second delivers the toplevels open now.
    if (wl_display_roundtrip(toplevels->display_) < 0 ||
        (toplevels->manager_ != nullptr && wl_display_roundtrip(toplevels->display_) < 0)) {
        failure =
            QStringLiteral("the Wayland display \"%1\" closed the connection; start Kivo again")
                .arg(QString::fromLocal8Bit(displayName));
        return nullptr;
    }
    if (toplevels->manager_ == nullptr) {
        failure = QStringLiteral(
                      "the compositor on the Wayland display \"%1\" does not list its windows "
                      "(zwlr_foreign_toplevel_manager_v1), which is how Kivo finds the focused "
                      "one; use sway, labwc, river or Wayfire, which do, or an X11 session")
                      .arg(QString::fromLocal8Bit(displayName));
        return nullptr;
    }
    return toplevels;
}

ForeignToplevels::~ForeignToplevels() {
    forgetAll();
    if (registry_ != nullptr) {
        wl_registry_destroy(registry_);
    }
    if (display_ != nullptr) {
        wl_display_disconnect(display_);
    }
}

bool ForeignToplevels::update() {
    if (hasFailed_) {
        return false;
    }
    if (!dispatchWithoutWaiting(display_) || manager_ == nullptr) {
        hasFailed_ = true;
        forgetAll();
        return false;
    }
    return true;
}

const ForeignToplevels::Toplevel* ForeignToplevels::activated() const {
    const Toplevel* front = nullptr;
    for (const auto& toplevel : toplevels_) {
        if (toplevel->current.isActivated &&
            (front == nullptr || toplevel->activation > front->activation)) {
            front = toplevel.get();
        }
    }
    return front;
}

void ForeignToplevels::onGlobal(void* data, wl_registry* registry, std::uint32_t name,
                                const char* interface, std::uint32_t version) {
    auto* self = static_cast<ForeignToplevels*>(data);
    if (self->manager_ != nullptr ||
        std::strcmp(interface, zwlr_foreign_toplevel_manager_v1_interface.name) != 0) {
        return;
    }
    static const zwlr_foreign_toplevel_manager_v1_listener managerListener{onToplevel, onFinished};
    self->manager_ = static_cast<zwlr_foreign_toplevel_manager_v1*>(
        wl_registry_bind(registry, name, &zwlr_foreign_toplevel_manager_v1_interface,
                         std::min(version, newestKnownVersion)));
    self->managerName_ = name;
    zwlr_foreign_toplevel_manager_v1_add_listener(self->manager_, &managerListener, self);
}

void ForeignToplevels::onGlobalRemove(void* data, wl_registry*, std::uint32_t name) {
    auto* self = static_cast<ForeignToplevels*>(data);
    if (self->manager_ != nullptr && name == self->managerName_) {
        self->forgetAll();
    }
}

void ForeignToplevels::onToplevel(void* data, zwlr_foreign_toplevel_manager_v1*,
                                  zwlr_foreign_toplevel_handle_v1* handle) {
    static const zwlr_foreign_toplevel_handle_v1_listener handleListener{
        onTitle, onAppId, ignoreOutput, ignoreOutput, onState, onDone, onClosed, ignoreParent};
    auto* self = static_cast<ForeignToplevels*>(data);
    auto toplevel = std::make_unique<Toplevel>();
    toplevel->handle = handle;
    zwlr_foreign_toplevel_handle_v1_add_listener(handle, &handleListener, self);
    self->toplevels_.push_back(std::move(toplevel));
}

void ForeignToplevels::onFinished(void* data, zwlr_foreign_toplevel_manager_v1*) {
    static_cast<ForeignToplevels*>(data)->forgetAll();
}

void ForeignToplevels::onTitle(void* data, zwlr_foreign_toplevel_handle_v1* handle,
                               const char* title) {
    if (Toplevel* toplevel = static_cast<ForeignToplevels*>(data)->find(handle)) {
        toplevel->pending.title = QString::fromUtf8(title);
    }
}

void ForeignToplevels::onAppId(void* data, zwlr_foreign_toplevel_handle_v1* handle,
                               const char* appId) {
    if (Toplevel* toplevel = static_cast<ForeignToplevels*>(data)->find(handle)) {
        toplevel->pending.appId = QString::fromUtf8(appId);
    }
}

void ForeignToplevels::onState(void* data, zwlr_foreign_toplevel_handle_v1* handle,
                               wl_array* state) {
    Toplevel* toplevel = static_cast<ForeignToplevels*>(data)->find(handle);
    if (toplevel == nullptr) {
        return;
    }
    const auto* entries = static_cast<const std::uint32_t*>(state->data);
    const std::size_t count = state->size / sizeof(std::uint32_t);
    toplevel->pending.isActivated =
        std::find(entries, entries + count, ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) !=
        entries + count;
}

void ForeignToplevels::onDone(void* data, zwlr_foreign_toplevel_handle_v1* handle) {
    auto* self = static_cast<ForeignToplevels*>(data);
    Toplevel* toplevel = self->find(handle);
    if (toplevel == nullptr) {
        return;
    }
    if (toplevel->pending.isActivated && !toplevel->current.isActivated) {
        toplevel->activation = ++self->lastActivation_;
    }
    toplevel->current = toplevel->pending;
}

void ForeignToplevels::onClosed(void* data, zwlr_foreign_toplevel_handle_v1* handle) {
    auto& toplevels = static_cast<ForeignToplevels*>(data)->toplevels_;
    std::erase_if(toplevels, [handle](const auto& toplevel) { return toplevel->handle == handle; });
    zwlr_foreign_toplevel_handle_v1_destroy(handle);
}

ForeignToplevels::Toplevel* ForeignToplevels::find(zwlr_foreign_toplevel_handle_v1* handle) {
    const auto found = std::find_if(toplevels_.begin(), toplevels_.end(),
                                    [handle](const auto& t) { return t->handle == handle; });
    return found != toplevels_.end() ? found->get() : nullptr;
}

void ForeignToplevels::forgetAll() {
    for (const auto& toplevel : toplevels_) {
        zwlr_foreign_toplevel_handle_v1_destroy(toplevel->handle);
    }
    toplevels_.clear();
    if (manager_ != nullptr) {
        zwlr_foreign_toplevel_manager_v1_destroy(manager_);
        manager_ = nullptr;
    }
}

}  // namespace kivo
