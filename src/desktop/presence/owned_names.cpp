#include "desktop/presence/owned_names.h"

#include "desktop/presence/dbus_call.h"

namespace kivo {

namespace {

bool matches(const QStringList& names, const QString& name) {
    return std::ranges::any_of(names, [&name](const QString& pattern) {
        return pattern.endsWith(u".*") ? name.startsWith(pattern.chopped(1)) : name == pattern;
    });
}

}  // namespace

OwnedNames::OwnedNames(const QDBusConnection& bus, const QStringList& names)
    : watcher_(QString(), bus, QDBusServiceWatcher::WatchForOwnerChange) {
    // Watching starts before the list is read: a change in between shows in both, and the
    // announcement, handled later, only renumbers an owner.
    watcher_.setWatchedServices(names);
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString& name, const QString&, const QString& owner) {
                setOwner(name, owner);
            });
    const auto listed = callDbus(
        bus, QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ListNames"));
    if (!listed || listed->isEmpty()) {
        return;
    }
    for (const QString& name : listed->front().toStringList()) {
        if (matches(names, name)) {
            owned_.insert(name, ++lastOwnership_);
        }
    }
}

QStringList OwnedNames::ownedUnder(const QString& prefix) const {
    QStringList found;
    for (auto it = owned_.cbegin(); it != owned_.cend(); ++it) {
        if (it.key().startsWith(prefix)) {
            found.append(it.key());
        }
    }
    return found;
}

void OwnedNames::setOwner(const QString& name, const QString& owner) {
    if (owner.isEmpty()) {
        owned_.remove(name);
    } else {
        owned_.insert(name, ++lastOwnership_);
    }
}

}  // namespace kivo
