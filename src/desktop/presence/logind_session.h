#pragma once

#include <QDBusConnection>
#include <memory>
#include <optional>

#include "desktop/presence/owned_names.h"
#include "desktop/presence/service_answer.h"

namespace kivo {

// This user's login session as systemd-logind (org.freedesktop.login1, system bus) keeps it. The
// questions read logind's last answers (see ServiceAnswer) and never wait on it.
class LogindSession {
public:
    // The session of process `pid`, or else the one named by XDG_SESSION_ID (a process started
    // by a user service belongs to no session); nothing when logind knows neither.
    static std::optional<LogindSession> find(const QDBusConnection& systemBus, qint64 pid);

    // True while the session is locked (`LockedHint`) or not in front (`Active` false, another
    // session switched in); nothing when logind does not answer.
    std::optional<bool> isLockedOrInactive();

    // Whether anyone holds an idle-blocking inhibitor (systemd-inhibit --what=idle, players).
    bool hasIdleInhibitor();

private:
    LogindSession(const QDBusConnection& bus, const QString& path);

    std::unique_ptr<OwnedNames> names_;
    std::unique_ptr<ServiceAnswer> properties_;
    std::unique_ptr<ServiceAnswer> inhibitors_;
};

}  // namespace kivo
