#include "desktop/wayland/wayland_idle_notifier.h"

#include <wayland-client.h>

#include <cerrno>
#include <cstring>

#include "desktop/wayland/wayland_events.h"
#include "ext-idle-notify-v1-client-protocol.h"
#include "idle-client-protocol.h"

namespace kivo {

std::unique_ptr<WaylandIdleNotifier> WaylandIdleNotifier::connect(const QByteArray& displayName,
                                                                  QString& failure) {
    std::unique_ptr<WaylandIdleNotifier> idle(new WaylandIdleNotifier);
    const QString shownName = QString::fromLocal8Bit(displayName);
    idle->display_ = wl_display_connect(displayName.constData());
    if (idle->display_ == nullptr) {
        failure = QStringLiteral("cannot connect to the Wayland display \"%1\" (%2)")
                      .arg(shownName, QString::fromLocal8Bit(std::strerror(errno)));
        return nullptr;
    }
    static const wl_registry_listener registryListener{onGlobal, onGlobalRemove};
    idle->registry_ = wl_display_get_registry(idle->display_);
    wl_registry_add_listener(idle->registry_, &registryListener, idle.get());
    // The first round trip lists the globals; the second one sends the bindings.
    bool isConnected = wl_display_roundtrip(idle->display_) >= 0;
    if (isConnected) {
        idle->bindOffers();
        isConnected = wl_display_roundtrip(idle->display_) >= 0;
    }
    if (!isConnected) {
        failure = QStringLiteral("the Wayland display \"%1\" closed the connection").arg(shownName);
        return nullptr;
    }
    if (idle->notifier_ == nullptr && idle->kdeIdle_ == nullptr) {
        failure = QStringLiteral(
                      "the compositor on the Wayland display \"%1\" tells no idle time "
                      "(neither ext_idle_notifier_v1 nor org_kde_kwin_idle, or no seat)")
                      .arg(shownName);
        return nullptr;
    }
    idle->readable_ =
        std::make_unique<QSocketNotifier>(wl_display_get_fd(idle->display_), QSocketNotifier::Read);
    QObject::connect(idle->readable_.get(), &QSocketNotifier::activated,
                     [self = idle.get()] { self->update(); });
    return idle;
}

WaylandIdleNotifier::~WaylandIdleNotifier() {
    readable_.reset();
    forgetNotification();
    if (notifier_ != nullptr) {
        ext_idle_notifier_v1_destroy(notifier_);
    }
    if (kdeIdle_ != nullptr) {
        org_kde_kwin_idle_destroy(kdeIdle_);
    }
    if (seat_ != nullptr) {
        wl_seat_destroy(seat_);
    }
    if (registry_ != nullptr) {
        wl_registry_destroy(registry_);
    }
    if (display_ != nullptr) {
        wl_display_disconnect(display_);
    }
}

void WaylandIdleNotifier::notifyAfter(std::chrono::milliseconds timeout, Listener listener) {
    forgetNotification();
    listener_ = std::move(listener);
    const auto milliseconds = static_cast<std::uint32_t>(timeout.count());
    if (notifier_ != nullptr) {
        static const ext_idle_notification_v1_listener notificationListener{onIdled, onResumed};
        notification_ = ext_idle_notifier_v1_get_idle_notification(notifier_, milliseconds, seat_);
        ext_idle_notification_v1_add_listener(notification_, &notificationListener, this);
    } else {
        static const org_kde_kwin_idle_timeout_listener timeoutListener{onKdeIdle, onKdeResumed};
        kdeTimeout_ = org_kde_kwin_idle_get_idle_timeout(kdeIdle_, seat_, milliseconds);
        org_kde_kwin_idle_timeout_add_listener(kdeTimeout_, &timeoutListener, this);
    }
    wl_display_flush(display_);
}

bool WaylandIdleNotifier::update() {
    if (!hasFailed_ && !dispatchWithoutWaiting(display_)) {
        hasFailed_ = true;
    }
    if (hasFailed_) {
        // A broken connection stays readable; it is not watched any more.
        readable_->setEnabled(false);
    }
    return !hasFailed_;
}

void WaylandIdleNotifier::bindOffers() {
    if (seatName_ == 0) {
        return;
    }
    seat_ = static_cast<wl_seat*>(wl_registry_bind(registry_, seatName_, &wl_seat_interface, 1));
    // The newer protocol where both are offered.
    if (notifierName_ != 0) {
        kdeIdleName_ = 0;
        notifier_ = static_cast<ext_idle_notifier_v1*>(
            wl_registry_bind(registry_, notifierName_, &ext_idle_notifier_v1_interface, 1));
    } else if (kdeIdleName_ != 0) {
        kdeIdle_ = static_cast<org_kde_kwin_idle*>(
            wl_registry_bind(registry_, kdeIdleName_, &org_kde_kwin_idle_interface, 1));
    }
}

void WaylandIdleNotifier::onGlobal(void* data, wl_registry*, std::uint32_t name,
                                   const char* interface, std::uint32_t) {
    auto* self = static_cast<WaylandIdleNotifier*>(data);
    if (self->seat_ != nullptr) {
        return;  // bound already; later globals are of no use
    }
    if (std::strcmp(interface, wl_seat_interface.name) == 0 && self->seatName_ == 0) {
        self->seatName_ = name;
    } else if (std::strcmp(interface, ext_idle_notifier_v1_interface.name) == 0) {
        self->notifierName_ = name;
    } else if (std::strcmp(interface, org_kde_kwin_idle_interface.name) == 0) {
        self->kdeIdleName_ = name;
    }
}

void WaylandIdleNotifier::onGlobalRemove(void* data, wl_registry*, std::uint32_t name) {
    auto* self = static_cast<WaylandIdleNotifier*>(data);
    if (self->seat_ != nullptr &&
        (name == self->seatName_ || name == self->notifierName_ || name == self->kdeIdleName_)) {
        self->hasFailed_ = true;
    }
}

void WaylandIdleNotifier::onIdled(void* data, ext_idle_notification_v1*) {
    static_cast<WaylandIdleNotifier*>(data)->tell(Change::idled);
}

void WaylandIdleNotifier::onResumed(void* data, ext_idle_notification_v1*) {
    static_cast<WaylandIdleNotifier*>(data)->tell(Change::resumed);
}

void WaylandIdleNotifier::onKdeIdle(void* data, org_kde_kwin_idle_timeout*) {
    static_cast<WaylandIdleNotifier*>(data)->tell(Change::idled);
}

void WaylandIdleNotifier::onKdeResumed(void* data, org_kde_kwin_idle_timeout*) {
    static_cast<WaylandIdleNotifier*>(data)->tell(Change::resumed);
}

void WaylandIdleNotifier::tell(Change change) {
    if (listener_) {
        listener_(change);
    }
}

void WaylandIdleNotifier::forgetNotification() {
    if (notification_ != nullptr) {
        ext_idle_notification_v1_destroy(notification_);
        notification_ = nullptr;
    }
    if (kdeTimeout_ != nullptr) {
        org_kde_kwin_idle_timeout_release(kdeTimeout_);
        kdeTimeout_ = nullptr;
    }
}

}  // namespace kivo
