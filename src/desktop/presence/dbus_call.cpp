#include "desktop/presence/dbus_call.h"

#include <QDBusVariant>

namespace kivo {

namespace {

constexpr int callTimeoutMs = 500;

}  // namespace

std::optional<QVariantList> callDbus(const QDBusConnection& bus, const QString& service,
                                     const QString& path, const QString& interface,
                                     const QString& method, const QVariantList& arguments) {
    if (!bus.isConnected()) {
        return std::nullopt;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, method);
    call.setArguments(arguments);
    const QDBusMessage reply = bus.call(call, QDBus::Block, callTimeoutMs);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        return std::nullopt;
    }
    return reply.arguments();
}

std::optional<QVariant> dbusProperty(const QDBusConnection& bus, const QString& service,
                                     const QString& path, const QString& interface,
                                     const QString& property) {
    const auto reply =
        callDbus(bus, service, path, QStringLiteral("org.freedesktop.DBus.Properties"),
                 QStringLiteral("Get"), {interface, property});
    if (!reply || reply->isEmpty()) {
        return std::nullopt;
    }
    return reply->front().value<QDBusVariant>().variant();
}

}  // namespace kivo
