#pragma once

#include <optional>

#include "model/instant.h"

namespace kivo {

// What the desktop knows about the user being at it. Each question is asked only when the
// answers before it leave the matter open, so a source may do the asking lazily. Called on the
// main thread once per tick; must not block for long.
class PresenceSource {
public:
    virtual ~PresenceSource() = default;

    // True while the screen is locked or blanked, or the session is not the one in front (another
    // user switched in).
    virtual bool isLocked() = 0;

    // Time since the last keyboard or pointer input; nothing when the desktop cannot tell.
    virtual std::optional<Seconds> idleTime() = 0;

    // True while something holds the user present without input: a playing video or a call that
    // inhibits idleness.
    virtual bool isIdleInhibited() = 0;
};

enum class Presence { present, locked, idle };

// Locked beats everything; idle needs a timeout above 0 (0 turns idleness off), an idle time
// beyond it, and nothing that inhibits idleness.
Presence currentPresence(PresenceSource& source, double idleTimeoutSeconds);

}  // namespace kivo
