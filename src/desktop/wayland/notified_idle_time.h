#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "capture/presence.h"
#include "desktop/wayland/idle_notifier.h"

namespace kivo {

// The idle time of a desktop that only notifies (see IdleNotifier), for the user's idle timeout:
// a notification after that timeout, asked for again whenever the timeout changes. While the
// notification says idle, the idle time is the timeout plus the time since it said so; otherwise
// it is 0, which is all the comparison with the timeout needs. When the connection ends, the
// desktop tells nothing and a later call connects again.
class NotifiedIdleTime final : public PresenceSource {
public:
    using Connect = std::function<std::unique_ptr<IdleNotifier>()>;  // null when it cannot
    using IdleTimeout = std::function<double()>;  // seconds; 0 or less turns idleness off

    NotifiedIdleTime(Connect connect, IdleTimeout idleTimeout, const Clock& clock,
                     std::unique_ptr<IdleNotifier> connected = nullptr);

    bool isLocked() override { return false; }
    // Nothing while idleness is off or the desktop cannot be reached.
    std::optional<Seconds> idleTime() override;
    // The desktop applies its inhibitors itself: an inhibited user never becomes idle.
    bool isIdleInhibited() override { return false; }

    // The notification's timeout for `seconds` of the setting: nothing when idleness is off,
    // else whole milliseconds within what the desktop accepts.
    static std::optional<std::chrono::milliseconds> notificationTimeout(double seconds);

private:
    void disconnect();
    void onChange(IdleNotifier::Change change);

    Connect connect_;
    IdleTimeout idleTimeout_;
    const Clock& clock_;
    std::unique_ptr<IdleNotifier> notifier_;
    std::optional<std::chrono::milliseconds> asked_;  // the timeout notifier_ notifies after
    std::optional<Instant> idledAt_;                  // while it says idle
};

}  // namespace kivo
