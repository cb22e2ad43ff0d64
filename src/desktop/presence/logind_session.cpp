#include "desktop/presence/logind_session.h"

#include <QDBusArgument>
#include <QDBusObjectPath>

#include "desktop/presence/dbus_call.h"

namespace kivo {

namespace {

const QString logind = QStringLiteral("org.freedesktop.login1");
const QString managerPath = QStringLiteral("/org/freedesktop/login1");
const QString managerInterface = QStringLiteral("org.freedesktop.login1.Manager");
const QString sessionInterface = QStringLiteral("org.freedesktop.login1.Session");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

std::optional<QString> sessionPath(const QDBusConnection& bus, const QString& method,
                                   const QVariant& argument) {
    const auto reply = callDbus(bus, logind, managerPath, managerInterface, method, {argument});
    if (!reply || reply->isEmpty()) {
        return std::nullopt;
    }
    const QString path = reply->front().value<QDBusObjectPath>().path();
    return path.isEmpty() ? std::nullopt : std::optional(path);
}

// One entry of ListInhibitors: what (colon-separated), who, why, mode, user, process.
bool blocksIdle(const QDBusArgument& entry) {
    QString what, who, why, mode;
    uint user = 0;
    uint process = 0;
    entry.beginStructure();
    entry >> what >> who >> why >> mode >> user >> process;
    entry.endStructure();
    return what.split(u':').contains(u"idle") && mode == u"block";
}

}  // namespace

std::optional<LogindSession> LogindSession::find(const QDBusConnection& systemBus, qint64 pid) {
    auto path = sessionPath(systemBus, QStringLiteral("GetSessionByPID"),
                            QVariant::fromValue(static_cast<uint>(pid)));
    if (const QString id = qEnvironmentVariable("XDG_SESSION_ID"); !path && !id.isEmpty()) {
        path = sessionPath(systemBus, QStringLiteral("GetSession"), id);
    }
    if (!path) {
        return std::nullopt;
    }
    return LogindSession(systemBus, *std::move(path));
}

LogindSession::LogindSession(const QDBusConnection& bus, const QString& path)
    : names_(std::make_unique<OwnedNames>(bus, QStringList{logind})),
      properties_(std::make_unique<ServiceAnswer>(
          bus, *names_,
          serviceCall(logind, path, propertiesInterface, QStringLiteral("GetAll"),
                      {sessionInterface}))),
      inhibitors_(std::make_unique<ServiceAnswer>(
          bus, *names_,
          serviceCall(logind, managerPath, managerInterface, QStringLiteral("ListInhibitors")))) {
    // logind announces changes of LockedHint and Active; it has no signal for inhibitors.
    properties_->renewOn(propertiesInterface, QStringLiteral("PropertiesChanged"));
}

std::optional<bool> LogindSession::isLockedOrInactive() {
    const auto reply = properties_->ask();
    if (!reply || reply->isEmpty()) {
        return std::nullopt;
    }
    QVariantMap properties;
    reply->front().value<QDBusArgument>() >> properties;
    const QVariant locked = properties.value(QStringLiteral("LockedHint"));
    const QVariant active = properties.value(QStringLiteral("Active"));
    if (!locked.isValid() && !active.isValid()) {
        return std::nullopt;
    }
    // An absent hint (an old logind) says nothing against the user being there.
    return locked.toBool() || (active.isValid() && !active.toBool());
}

bool LogindSession::hasIdleInhibitor() {
    const auto reply = inhibitors_->ask();
    if (!reply || reply->isEmpty()) {
        return false;
    }
    const auto list = reply->front().value<QDBusArgument>();
    list.beginArray();
    bool found = false;
    while (!list.atEnd()) {
        found = blocksIdle(list) || found;
    }
    list.endArray();
    return found;
}

}  // namespace kivo
