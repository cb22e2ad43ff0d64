#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QHash>
#include <QObject>

namespace kivo {

// Which of some names on a bus have an owner, known from the bus's announcements rather than by
// asking on every tick. Each new owner of a name gets a new ownership number, so that an answer
// its predecessor gave can be told from one of its own.
class OwnedNames : public QObject {
    Q_OBJECT

public:
    // `names` are exact, or end in ".*" for every name under a prefix (MPRIS players).
    OwnedNames(const QDBusConnection& bus, const QStringList& names);

    // 0 while `name` has no owner.
    quint64 ownership(const QString& name) const { return owned_.value(name); }

    // The owned names that start with `prefix`.
    QStringList ownedUnder(const QString& prefix) const;

private:
    void setOwner(const QString& name, const QString& owner);

    QDBusServiceWatcher watcher_;
    QHash<QString, quint64> owned_;
    quint64 lastOwnership_ = 0;
};

}  // namespace kivo
