#include "desktop/presence/dbus_call.h"

#include <QDBusVariant>

namespace kivo {

namespace {

constexpr int callTimeoutMs = 500;

}  // namespace

QDBusMessage serviceCall(const QString& service, const QString& path, const QString& interface,
                         const QString& method, const QVariantList& arguments) {
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, method);
    call.setArguments(arguments);
    call.setAutoStartService(false);
    return call;
}

std::optional<QVariantList> callDbus(const QDBusConnection& bus, const QString& service,
                                     const QString& path, const QString& interface,
                                     const QString& method, const QVariantList& arguments) {
    if (!bus.isConnected()) {
        return std::nullopt;
    }
    const QDBusMessage reply = bus.call(serviceCall(service, path, interface, method, arguments),
                                        QDBus::Block, callTimeoutMs);
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
