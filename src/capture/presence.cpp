#include "capture/presence.h"

namespace kivo {

Presence currentPresence(PresenceSource& source, double idleTimeoutSeconds) {
    if (source.isLocked()) {
        return Presence::locked;
    }
    if (!(idleTimeoutSeconds > 0.0)) {
        return Presence::present;
    }
    const auto idle = source.idleTime();
    if (!idle || idle->count() <= idleTimeoutSeconds || source.isIdleInhibited()) {
        return Presence::present;
    }
    return Presence::idle;
}

}  // namespace kivo
