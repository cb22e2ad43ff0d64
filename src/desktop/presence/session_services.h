#pragma once

#include <QDBusConnection>
#include <optional>

#include "model/instant.h"

namespace kivo {

// What the desktop's own services on the session bus say about the user. Every question is one
// or a few short calls; a service that is not there answers nothing (or false).
class SessionServices {
public:
    explicit SessionServices(QDBusConnection sessionBus);

    // Whether a screen saver (org.freedesktop.ScreenSaver, org.gnome.ScreenSaver) says it is
    // active; nothing when none answers.
    std::optional<bool> isScreenSaverActive() const;

    // The desktop's count of the time without input: GNOME's idle monitor
    // (org.gnome.Mutter.IdleMonitor), else the screen-saver service's GetSessionIdleTime (Plasma);
    // nothing where neither answers.
    std::optional<Seconds> idleTime() const;

    // Whether the GNOME session holds an idle inhibitor (a video or call that asked the
    // screen saver to wait ends up there) or an MPRIS player reports "Playing".
    bool isIdleInhibited() const;

private:
    std::optional<Seconds> mutterIdleTime() const;
    std::optional<Seconds> screenSaverIdleTime() const;
    bool isGnomeIdleInhibited() const;
    bool isMediaPlaying() const;

    QDBusConnection bus_;
};

}  // namespace kivo
