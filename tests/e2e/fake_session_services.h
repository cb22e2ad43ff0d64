#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QMutex>
#include <QObject>
#include <QThread>
#include <atomic>
#include <memory>
#include <vector>

namespace kivo::test {

// One entry of logind's ListInhibitors.
struct Inhibitor {
    QString what, who, why, mode;
    uint user = 0;
    uint process = 0;
};

inline QDBusArgument& operator<<(QDBusArgument& argument, const Inhibitor& inhibitor) {
    argument.beginStructure();
    argument << inhibitor.what << inhibitor.who << inhibitor.why << inhibitor.mode << inhibitor.user
             << inhibitor.process;
    argument.endStructure();
    return argument;
}

inline const QDBusArgument& operator>>(const QDBusArgument& argument, Inhibitor& inhibitor) {
    argument.beginStructure();
    argument >> inhibitor.what >> inhibitor.who >> inhibitor.why >> inhibitor.mode >>
        inhibitor.user >> inhibitor.process;
    argument.endStructure();
    return argument;
}

}  // namespace kivo::test

Q_DECLARE_METATYPE(kivo::test::Inhibitor)

namespace kivo::test {

inline const QString fakeSessionPath = QStringLiteral("/org/freedesktop/login1/session/_31");

// logind's manager: every process belongs to the one session; the inhibitors the test sets.
class FakeLogindManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

public:
    void setInhibitors(QList<Inhibitor> inhibitors) {
        const QMutexLocker lock(&mutex_);
        inhibitors_ = std::move(inhibitors);
    }

public Q_SLOTS:
    QDBusObjectPath GetSessionByPID(uint) { return QDBusObjectPath(fakeSessionPath); }
    QList<Inhibitor> ListInhibitors() {
        const QMutexLocker lock(&mutex_);
        return inhibitors_;
    }

private:
    QMutex mutex_;
    QList<Inhibitor> inhibitors_;
};

// logind's session, locked and in front as the test sets.
class FakeLogindSession : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Session")
    Q_PROPERTY(bool LockedHint READ lockedHint)
    Q_PROPERTY(bool Active READ active)

public:
    bool lockedHint() const { return isLocked; }
    bool active() const { return isActive; }

    std::atomic<bool> isLocked = false;
    std::atomic<bool> isActive = true;
};

// GNOME's idle monitor.
class FakeIdleMonitor : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.Mutter.IdleMonitor")

public:
    std::atomic<qulonglong> idleMs = 0;

public Q_SLOTS:
    qulonglong GetIdletime() { return idleMs; }
};

// A desktop's screen saver.
class FakeScreenSaver : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public:
    std::atomic<bool> isActive = false;

public Q_SLOTS:
    bool GetActive() { return isActive; }
};

// Plasma's screen saver, which also counts the time without input.
class FakeSessionIdleTime : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public:
    std::atomic<uint> idleSeconds = 0;

public Q_SLOTS:
    uint GetSessionIdleTime() { return idleSeconds; }
};

// A media player's MPRIS interface.
class FakePlayer : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)

public:
    QString playbackStatus() const {
        return isPlaying ? QStringLiteral("Playing") : QStringLiteral("Paused");
    }

    std::atomic<bool> isPlaying = false;
};

// Services on a bus, answering from a thread of their own, so that the test's blocking calls on
// the main thread get their replies. Each `add` owns the service name and serves the object.
class FakeServices {
public:
    explicit FakeServices(const QString& address)
        : connection_(QDBusConnection::connectToBus(address, QStringLiteral("fake:") + address)) {
        qDBusRegisterMetaType<Inhibitor>();
        qDBusRegisterMetaType<QList<Inhibitor>>();
        thread_.start();
    }
    ~FakeServices() {
        thread_.quit();
        thread_.wait();
        objects_.clear();
        QDBusConnection::disconnectFromBus(connection_.name());
    }
    FakeServices(const FakeServices&) = delete;

    bool isConnected() const { return connection_.isConnected(); }

    template <class Service>
    Service& add(const QString& name, const QString& path) {
        auto object = std::make_unique<Service>();
        object->moveToThread(&thread_);
        connection_.registerService(name);
        connection_.registerObject(
            path, object.get(),
            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties);
        auto& added = *object;
        objects_.push_back(std::move(object));
        return added;
    }

private:
    QDBusConnection connection_;
    QThread thread_;
    std::vector<std::unique_ptr<QObject>> objects_;
};

}  // namespace kivo::test
