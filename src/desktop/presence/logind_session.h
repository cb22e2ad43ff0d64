#pragma once

#include <QDBusConnection>
#include <optional>

namespace kivo {

// This user's login session as systemd-logind (org.freedesktop.login1, system bus) keeps it.
class LogindSession {
public:
    // The session of process `pid`, or else the one named by XDG_SESSION_ID (a process started
    // by a user service belongs to no session); nothing when logind knows neither.
    static std::optional<LogindSession> find(const QDBusConnection& systemBus, qint64 pid);

    // True while the session is locked (`LockedHint`) or not in front (`Active` false, another
    // session switched in); nothing when logind does not answer.
    std::optional<bool> isLockedOrInactive() const;

    // Whether anyone holds an idle-blocking inhibitor (systemd-inhibit --what=idle, players).
    bool hasIdleInhibitor() const;

private:
    LogindSession(QDBusConnection bus, QString path);

    QDBusConnection bus_;
    QString path_;
};

}  // namespace kivo
