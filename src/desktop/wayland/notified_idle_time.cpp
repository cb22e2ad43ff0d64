#include "desktop/wayland/notified_idle_time.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace kivo {

NotifiedIdleTime::NotifiedIdleTime(Connect connect, IdleTimeout idleTimeout, const Clock& clock,
                                   std::unique_ptr<IdleNotifier> connected)
    : connect_(std::move(connect)),
      idleTimeout_(std::move(idleTimeout)),
      clock_(clock),
      notifier_(std::move(connected)) {}

std::optional<std::chrono::milliseconds> NotifiedIdleTime::notificationTimeout(double seconds) {
    if (!(seconds > 0.0)) {
        return std::nullopt;
    }
    // The protocols take an unsigned 32-bit count of milliseconds.
    constexpr double longest = std::numeric_limits<std::uint32_t>::max();
    const double milliseconds = std::clamp(std::round(seconds * 1000.0), 1.0, longest);
    return std::chrono::milliseconds{static_cast<std::int64_t>(milliseconds)};
}

std::optional<Seconds> NotifiedIdleTime::idleTime() {
    const auto timeout = notificationTimeout(idleTimeout_());
    if (!timeout) {
        // Nothing to be notified of: the connection is dropped rather than kept for nothing.
        disconnect();
        return std::nullopt;
    }
    if (!notifier_) {
        notifier_ = connect_();
        asked_.reset();
        if (!notifier_) {
            return std::nullopt;
        }
    }
    if (asked_ != timeout) {
        // A new notification counts from now and has not fired: whatever the old one said is
        // over.
        idledAt_.reset();
        asked_ = timeout;
        notifier_->notifyAfter(*timeout, [this](IdleNotifier::Change change) { onChange(change); });
    }
    if (!notifier_->update()) {
        disconnect();
        return std::nullopt;
    }
    if (!idledAt_) {
        return Seconds{0.0};
    }
    // A clock set back does not make the idle time shorter than the timeout.
    return Seconds{*asked_} + std::max(Seconds{0.0}, clock_.now() - *idledAt_);
}

void NotifiedIdleTime::disconnect() {
    notifier_.reset();
    asked_.reset();
    idledAt_.reset();
}

void NotifiedIdleTime::onChange(IdleNotifier::Change change) {
    if (change == IdleNotifier::Change::resumed) {
        idledAt_.reset();
    } else if (!idledAt_) {
        idledAt_ = clock_.now();
    }
}

}  // namespace kivo
