#include "desktop/presence/session_services.h"

#include "desktop/presence/dbus_call.h"

namespace kivo {

namespace {

struct ScreenSaverService {
    const char16_t* service;
    const char16_t* path;
    const char16_t* interface;
};

// KDE answers at /ScreenSaver, other desktops at the path that matches the name.
constexpr ScreenSaverService screenSavers[] = {
    {u"org.freedesktop.ScreenSaver", u"/org/freedesktop/ScreenSaver",
     u"org.freedesktop.ScreenSaver"},
    {u"org.freedesktop.ScreenSaver", u"/ScreenSaver", u"org.freedesktop.ScreenSaver"},
    {u"org.gnome.ScreenSaver", u"/org/gnome/ScreenSaver", u"org.gnome.ScreenSaver"},
};

// The inhibit flag GNOME's session manager uses for "idle".
constexpr uint gnomeInhibitIdle = 8;

const QString mprisPrefix = QStringLiteral("org.mpris.MediaPlayer2.");

}  // namespace

SessionServices::SessionServices(QDBusConnection sessionBus) : bus_(std::move(sessionBus)) {}

std::optional<bool> SessionServices::isScreenSaverActive() const {
    std::optional<bool> active;
    for (const auto& saver : screenSavers) {
        const auto reply =
            callDbus(bus_, QString::fromUtf16(saver.service), QString::fromUtf16(saver.path),
                     QString::fromUtf16(saver.interface), QStringLiteral("GetActive"));
        if (reply && !reply->isEmpty()) {
            active = active.value_or(false) || reply->front().toBool();
        }
    }
    return active;
}

std::optional<Seconds> SessionServices::idleTime() const {
    if (auto idle = mutterIdleTime()) {
        return idle;
    }
    return screenSaverIdleTime();
}

std::optional<Seconds> SessionServices::mutterIdleTime() const {
    const auto reply =
        callDbus(bus_, QStringLiteral("org.gnome.Mutter.IdleMonitor"),
                 QStringLiteral("/org/gnome/Mutter/IdleMonitor/Core"),
                 QStringLiteral("org.gnome.Mutter.IdleMonitor"), QStringLiteral("GetIdletime"));
    if (!reply || reply->isEmpty()) {
        return std::nullopt;
    }
    return Seconds{static_cast<double>(reply->front().toULongLong()) / 1000.0};
}

std::optional<Seconds> SessionServices::screenSaverIdleTime() const {
    // Plasma answers in seconds; GNOME's service of the same name has no such method.
    for (const auto& saver : screenSavers) {
        const auto reply =
            callDbus(bus_, QString::fromUtf16(saver.service), QString::fromUtf16(saver.path),
                     QString::fromUtf16(saver.interface), QStringLiteral("GetSessionIdleTime"));
        if (reply && !reply->isEmpty()) {
            return Seconds{static_cast<double>(reply->front().toUInt())};
        }
    }
    return std::nullopt;
}

bool SessionServices::isIdleInhibited() const {
    return isGnomeIdleInhibited() || isMediaPlaying();
}

bool SessionServices::isGnomeIdleInhibited() const {
    const auto reply = callDbus(bus_, QStringLiteral("org.gnome.SessionManager"),
                                QStringLiteral("/org/gnome/SessionManager"),
                                QStringLiteral("org.gnome.SessionManager"),
                                QStringLiteral("IsInhibited"), {gnomeInhibitIdle});
    return reply && !reply->isEmpty() && reply->front().toBool();
}

bool SessionServices::isMediaPlaying() const {
    const auto names = callDbus(
        bus_, QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ListNames"));
    if (!names || names->isEmpty()) {
        return false;
    }
    const QStringList all = names->front().toStringList();
    return std::ranges::any_of(all, [this](const QString& name) {
        if (!name.startsWith(mprisPrefix)) {
            return false;
        }
        const auto status = dbusProperty(bus_, name, QStringLiteral("/org/mpris/MediaPlayer2"),
                                         QStringLiteral("org.mpris.MediaPlayer2.Player"),
                                         QStringLiteral("PlaybackStatus"));
        return status && status->toString() == u"Playing";
    });
}

}  // namespace kivo
