#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

struct wl_display;
struct wl_registry;
struct wl_array;
struct zwlr_foreign_toplevel_manager_v1;
struct zwlr_foreign_toplevel_handle_v1;

namespace kivo {

// What the compositor last told, in one `done` batch, about a toplevel.
struct ToplevelState {
    std::optional<QString> title;  // nothing until the client names its window
    QString appId;
    bool isActivated = false;
};

// The toplevels of a wlroots compositor as zwlr_foreign_toplevel_manager_v1 announces them. Events
// are read only when asked to, without waiting, so a tick never blocks on the compositor.
class ForeignToplevels {
public:
    struct Toplevel {
        zwlr_foreign_toplevel_handle_v1* handle = nullptr;
        ToplevelState pending;         // changes since the last `done`
        ToplevelState current;         // as of the last `done`
        std::uint64_t activation = 0;  // rises with each activation; the latest one is in front
    };

    // Connects to the Wayland display `displayName` (as in WAYLAND_DISPLAY; a name in
    // XDG_RUNTIME_DIR or an absolute path) and reads the toplevels open now. Nothing, with the
    // reason in `failure`, when the display cannot be reached or lacks the protocol.
    static std::unique_ptr<ForeignToplevels> connect(const QByteArray& displayName,
                                                     QString& failure);
    ~ForeignToplevels();
    ForeignToplevels(const ForeignToplevels&) = delete;
    ForeignToplevels& operator=(const ForeignToplevels&) = delete;

    // Applies whatever the compositor has sent since the last call. False once the connection
    // or the protocol has ended; the object then stays empty.
    bool update();

    // The activated toplevel most recently activated, or null when none is activated. While
    // the focus moves, the old toplevel may still be activated for a batch; the newer one wins.
    const Toplevel* activated() const;

private:
    ForeignToplevels() = default;

    static void onGlobal(void* data, wl_registry* registry, std::uint32_t name,
                         const char* interface, std::uint32_t version);
    static void onGlobalRemove(void* data, wl_registry* registry, std::uint32_t name);
    static void onToplevel(void* data, zwlr_foreign_toplevel_manager_v1* manager,
                           zwlr_foreign_toplevel_handle_v1* handle);
    static void onFinished(void* data, zwlr_foreign_toplevel_manager_v1* manager);
    static void onTitle(void* data, zwlr_foreign_toplevel_handle_v1* handle, const char* title);
    static void onAppId(void* data, zwlr_foreign_toplevel_handle_v1* handle, const char* appId);
    static void onState(void* data, zwlr_foreign_toplevel_handle_v1* handle, wl_array* state);
    static void onDone(void* data, zwlr_foreign_toplevel_handle_v1* handle);
    static void onClosed(void* data, zwlr_foreign_toplevel_handle_v1* handle);

    Toplevel* find(zwlr_foreign_toplevel_handle_v1* handle);
    void forgetAll();

    wl_display* display_ = nullptr;
    wl_registry* registry_ = nullptr;
    zwlr_foreign_toplevel_manager_v1* manager_ = nullptr;
    std::uint32_t managerName_ = 0;
    std::vector<std::unique_ptr<Toplevel>> toplevels_;
    std::uint64_t lastActivation_ = 0;
    bool hasFailed_ = false;
};

}  // namespace kivo
