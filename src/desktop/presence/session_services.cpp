#include "desktop/presence/session_services.h"

#include <QDBusVariant>

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

const QString mutter = QStringLiteral("org.gnome.Mutter.IdleMonitor");
const QString gnomeSession = QStringLiteral("org.gnome.SessionManager");
const QString mprisPrefix = QStringLiteral("org.mpris.MediaPlayer2.");
const QString mprisPath = QStringLiteral("/org/mpris/MediaPlayer2");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

// The first argument of a reply, if there is one.
std::optional<QVariant> firstOf(const std::optional<QVariantList>& reply) {
    if (!reply || reply->isEmpty()) {
        return std::nullopt;
    }
    return reply->front();
}

}  // namespace

SessionServices::SessionServices(const QDBusConnection& sessionBus)
    : bus_(sessionBus),
      names_(std::make_unique<OwnedNames>(
          sessionBus, QStringList{QStringLiteral("org.freedesktop.ScreenSaver"),
                                  QStringLiteral("org.gnome.ScreenSaver"), mutter, gnomeSession,
                                  mprisPrefix + u'*'})) {
    for (const auto& saver : screenSavers) {
        const QString service = QString::fromUtf16(saver.service);
        const QString path = QString::fromUtf16(saver.path);
        const QString interface = QString::fromUtf16(saver.interface);
        ScreenSaver& added = screenSavers_.emplace_back(
            answer(service, path, interface, QStringLiteral("GetActive")),
            answer(service, path, interface, QStringLiteral("GetSessionIdleTime")));
        added.active->renewOn(interface, QStringLiteral("ActiveChanged"));
    }
    mutterIdleTime_ = answer(mutter, QStringLiteral("/org/gnome/Mutter/IdleMonitor/Core"), mutter,
                             QStringLiteral("GetIdletime"));
    gnomeInhibited_ = answer(gnomeSession, QStringLiteral("/org/gnome/SessionManager"),
                             gnomeSession, QStringLiteral("IsInhibited"), {gnomeInhibitIdle});
}

std::unique_ptr<ServiceAnswer> SessionServices::answer(const QString& service, const QString& path,
                                                       const QString& interface,
                                                       const QString& method,
                                                       const QVariantList& arguments) const {
    return std::make_unique<ServiceAnswer>(
        bus_, *names_, serviceCall(service, path, interface, method, arguments));
}

std::optional<bool> SessionServices::isScreenSaverActive() {
    std::optional<bool> active;
    for (const ScreenSaver& saver : screenSavers_) {
        if (const auto reply = firstOf(saver.active->ask())) {
            active = active.value_or(false) || reply->toBool();
        }
    }
    return active;
}

std::optional<Seconds> SessionServices::idleTime() {
    if (auto idle = mutterIdleTime()) {
        return idle;
    }
    return screenSaverIdleTime();
}

std::optional<Seconds> SessionServices::mutterIdleTime() {
    const auto reply = firstOf(mutterIdleTime_->ask());
    if (!reply) {
        return std::nullopt;
    }
    return Seconds{static_cast<double>(reply->toULongLong()) / 1000.0};
}

std::optional<Seconds> SessionServices::screenSaverIdleTime() {
    // Plasma answers in seconds; GNOME's service of the same name has no such method.
    for (const ScreenSaver& saver : screenSavers_) {
        if (const auto reply = firstOf(saver.idleTime->ask())) {
            return Seconds{static_cast<double>(reply->toUInt())};
        }
    }
    return std::nullopt;
}

bool SessionServices::isIdleInhibited() {
    return isGnomeIdleInhibited() || isMediaPlaying();
}

bool SessionServices::isGnomeIdleInhibited() {
    const auto reply = firstOf(gnomeInhibited_->ask());
    return reply && reply->toBool();
}

bool SessionServices::isMediaPlaying() {
    const QStringList players = names_->ownedUnder(mprisPrefix);
    std::erase_if(playbackStatuses_,
                  [&players](const auto& entry) { return !players.contains(entry.first); });
    bool isPlaying = false;
    for (const QString& player : players) {
        auto& status = playbackStatuses_[player];
        if (!status) {
            status = answer(player, mprisPath, propertiesInterface, QStringLiteral("Get"),
                            {QStringLiteral("org.mpris.MediaPlayer2.Player"),
                             QStringLiteral("PlaybackStatus")});
            // Players announce their status with PropertiesChanged.
            status->renewOn(propertiesInterface, QStringLiteral("PropertiesChanged"));
        }
        const auto reply = firstOf(status->ask());
        isPlaying =
            isPlaying || (reply && reply->value<QDBusVariant>().variant().toString() == u"Playing");
    }
    return isPlaying;
}

}  // namespace kivo
