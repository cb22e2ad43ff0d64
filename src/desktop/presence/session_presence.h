#pragma once

#include <memory>
#include <optional>

#include "capture/presence.h"
#include "desktop/presence/logind_session.h"
#include "desktop/presence/session_services.h"

namespace kivo {

// Everything the session can tell about the user, put together: the display server's own view
// (an X server's screen saver and idle time; may be missing), logind's session of this process,
// and the desktop's services on the session bus.
//  - locked: the display's screen saver runs, or logind says the session is locked or not in
//    front; only where logind has no session, a screen-saver service that says it is active;
//  - idle time: the desktop's count where it keeps one (under Wayland the X server sees no
//    input), else the display's;
//  - inhibited: the display's inhibitors, logind's idle inhibitors, GNOME's, a playing player.
class SessionPresence final : public PresenceSource {
public:
    SessionPresence(std::unique_ptr<PresenceSource> display,
                    std::optional<LogindSession> logindSession, SessionServices services);

    bool isLocked() override;
    std::optional<Seconds> idleTime() override;
    bool isIdleInhibited() override;

private:
    std::unique_ptr<PresenceSource> display_;
    std::optional<LogindSession> logindSession_;
    SessionServices services_;
};

}  // namespace kivo
