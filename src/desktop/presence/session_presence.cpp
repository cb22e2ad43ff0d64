#include "desktop/presence/session_presence.h"

namespace kivo {

SessionPresence::SessionPresence(std::unique_ptr<PresenceSource> display,
                                 std::optional<LogindSession> logindSession,
                                 SessionServices services)
    : display_(std::move(display)),
      logindSession_(std::move(logindSession)),
      services_(std::move(services)) {}

bool SessionPresence::isLocked() {
    if (display_ && display_->isLocked()) {
        return true;
    }
    if (logindSession_) {
        return logindSession_->isLockedOrInactive().value_or(false);
    }
    return services_.isScreenSaverActive().value_or(false);
}

std::optional<Seconds> SessionPresence::idleTime() {
    if (auto idle = services_.idleTime()) {
        return idle;
    }
    return display_ ? display_->idleTime() : std::nullopt;
}

bool SessionPresence::isIdleInhibited() {
    return (display_ && display_->isIdleInhibited()) ||
           (logindSession_ && logindSession_->hasIdleInhibitor()) || services_.isIdleInhibited();
}

}  // namespace kivo
