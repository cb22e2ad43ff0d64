#pragma once

#include <QDBusConnection>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "desktop/presence/owned_names.h"
#include "desktop/presence/service_answer.h"
#include "model/instant.h"

namespace kivo {

// What the desktop's own services on the session bus say about the user. Every question reads
// answers kept from the services' last replies (see ServiceAnswer), so it never waits on a
// service; one that is not there answers nothing (or false).
class SessionServices {
public:
    explicit SessionServices(const QDBusConnection& sessionBus);

    // Whether a screen saver (org.freedesktop.ScreenSaver, org.gnome.ScreenSaver) says it is
    // active; nothing when none answers.
    std::optional<bool> isScreenSaverActive();

    // The desktop's count of the time without input: GNOME's idle monitor
    // (org.gnome.Mutter.IdleMonitor), else the screen-saver service's GetSessionIdleTime (Plasma);
    // nothing where neither answers.
    std::optional<Seconds> idleTime();

    // Whether the GNOME session holds an idle inhibitor (a video or call that asked the
    // screen saver to wait ends up there) or an MPRIS player reports "Playing".
    bool isIdleInhibited();

private:
    struct ScreenSaver {
        std::unique_ptr<ServiceAnswer> active;
        std::unique_ptr<ServiceAnswer> idleTime;
    };

    std::unique_ptr<ServiceAnswer> answer(const QString& service, const QString& path,
                                          const QString& interface, const QString& method,
                                          const QVariantList& arguments = {}) const;
    std::optional<Seconds> mutterIdleTime();
    std::optional<Seconds> screenSaverIdleTime();
    bool isGnomeIdleInhibited();
    bool isMediaPlaying();

    QDBusConnection bus_;
    std::unique_ptr<OwnedNames> names_;
    std::vector<ScreenSaver> screenSavers_;
    std::unique_ptr<ServiceAnswer> mutterIdleTime_;
    std::unique_ptr<ServiceAnswer> gnomeInhibited_;
    std::map<QString, std::unique_ptr<ServiceAnswer>> playbackStatuses_;
};

}  // namespace kivo
