#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariant>
#include <optional>

namespace kivo {

// A method call that only a running service gets: the bus is not to start an activatable one
// (where GNOME is installed but not running, asking would launch its services again and again).
QDBusMessage serviceCall(const QString& service, const QString& path, const QString& interface,
                         const QString& method, const QVariantList& arguments = {});

// One method call on `bus`, waiting at most half a second: a service that hangs must not stall
// its caller for long. The reply's arguments, or nothing when the call failed or timed out.
std::optional<QVariantList> callDbus(const QDBusConnection& bus, const QString& service,
                                     const QString& path, const QString& interface,
                                     const QString& method, const QVariantList& arguments = {});

// The value of one property through org.freedesktop.DBus.Properties.Get, or nothing.
std::optional<QVariant> dbusProperty(const QDBusConnection& bus, const QString& service,
                                     const QString& path, const QString& interface,
                                     const QString& property);

}  // namespace kivo
