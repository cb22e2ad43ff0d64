#pragma once

#include <QByteArray>
#include <QSocketNotifier>
#include <QString>
#include <cstdint>
#include <memory>

#include "desktop/wayland/idle_notifier.h"

struct wl_display;
struct wl_registry;
struct wl_seat;
struct ext_idle_notifier_v1;
struct ext_idle_notification_v1;
struct org_kde_kwin_idle;
struct org_kde_kwin_idle_timeout;

namespace kivo {

// Idle notifications from a Wayland compositor: ext_idle_notifier_v1 where it offers it (KWin 6,
// newer wlroots), else org_kde_kwin_idle (Plasma 5, older wlroots such as sway 1.7). Both leave
// out the time that an idle inhibitor holds. The compositor's news is read as soon as it arrives
// while an event loop runs, and at each update, never waiting.
class WaylandIdleNotifier final : public IdleNotifier {
public:
    // Connects to the Wayland display `displayName` (as in WAYLAND_DISPLAY). Nothing, with the
    // reason in `failure`, when the display cannot be reached or offers neither protocol.
    static std::unique_ptr<WaylandIdleNotifier> connect(const QByteArray& displayName,
                                                        QString& failure);
    ~WaylandIdleNotifier() override;
    WaylandIdleNotifier(const WaylandIdleNotifier&) = delete;
    WaylandIdleNotifier& operator=(const WaylandIdleNotifier&) = delete;

    void notifyAfter(std::chrono::milliseconds timeout, Listener listener) override;
    bool update() override;

private:
    WaylandIdleNotifier() = default;

    static void onGlobal(void* data, wl_registry* registry, std::uint32_t name,
                         const char* interface, std::uint32_t version);
    static void onGlobalRemove(void* data, wl_registry* registry, std::uint32_t name);
    static void onIdled(void* data, ext_idle_notification_v1*);
    static void onResumed(void* data, ext_idle_notification_v1*);
    static void onKdeIdle(void* data, org_kde_kwin_idle_timeout*);
    static void onKdeResumed(void* data, org_kde_kwin_idle_timeout*);

    // Binds the seat and the idle protocol the registry listed.
    void bindOffers();
    void tell(Change change);
    void forgetNotification();

    wl_display* display_ = nullptr;
    wl_registry* registry_ = nullptr;
    wl_seat* seat_ = nullptr;
    ext_idle_notifier_v1* notifier_ = nullptr;
    org_kde_kwin_idle* kdeIdle_ = nullptr;
    std::uint32_t seatName_ = 0;  // the registry's names of the globals in use
    std::uint32_t notifierName_ = 0;
    std::uint32_t kdeIdleName_ = 0;
    ext_idle_notification_v1* notification_ = nullptr;
    org_kde_kwin_idle_timeout* kdeTimeout_ = nullptr;
    Listener listener_;
    std::unique_ptr<QSocketNotifier> readable_;
    bool hasFailed_ = false;
};

}  // namespace kivo
