#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
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

// A service that announces its changes with signals, as the real one does; FakeServices::add
// tells it where it is published. The signals go out from the test's thread.
class SignallingFake : public QObject {
public:
    void publishOn(const QDBusConnection& connection, const QString& path) {
        connection_ = connection;
        path_ = path;
    }

protected:
    void announce(const QString& interface, const QString& name, const QVariantList& arguments) {
        QDBusMessage signal = QDBusMessage::createSignal(path_, interface, name);
        signal.setArguments(arguments);
        connection_.send(signal);
    }
    void announceProperty(const QString& interface, const QString& property,
                          const QVariant& value) {
        announce(QStringLiteral("org.freedesktop.DBus.Properties"),
                 QStringLiteral("PropertiesChanged"),
                 {interface, QVariantMap{{property, value}}, QStringList()});
    }

private:
    QDBusConnection connection_{QString()};
    QString path_;
};

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
class FakeLogindSession : public SignallingFake {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Session")
    Q_PROPERTY(bool LockedHint READ lockedHint)
    Q_PROPERTY(bool Active READ active)

public:
    bool lockedHint() const { return isLocked_; }
    bool active() const { return isActive_; }

    void setLocked(bool isLocked) {
        isLocked_ = isLocked;
        announceProperty(sessionInterface, QStringLiteral("LockedHint"), isLocked);
    }
    void setActive(bool isActive) {
        isActive_ = isActive;
        announceProperty(sessionInterface, QStringLiteral("Active"), isActive);
    }

private:
    inline static const QString sessionInterface = QStringLiteral("org.freedesktop.login1.Session");

    std::atomic<bool> isLocked_ = false;
    std::atomic<bool> isActive_ = true;
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
class FakeScreenSaver : public SignallingFake {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

public:
    void setActive(bool isActive) {
        isActive_ = isActive;
        announce(QStringLiteral("org.freedesktop.ScreenSaver"), QStringLiteral("ActiveChanged"),
                 {isActive});
    }

public Q_SLOTS:
    bool GetActive() { return isActive_; }

private:
    std::atomic<bool> isActive_ = false;
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
class FakePlayer : public SignallingFake {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)

public:
    QString playbackStatus() const {
        return isPlaying_ ? QStringLiteral("Playing") : QStringLiteral("Paused");
    }

    void setPlaying(bool isPlaying) {
        isPlaying_ = isPlaying;
        announceProperty(QStringLiteral("org.mpris.MediaPlayer2.Player"),
                         QStringLiteral("PlaybackStatus"), playbackStatus());
    }

private:
    std::atomic<bool> isPlaying_ = false;
};

// A service that takes every call at any path and never answers: one that hangs.
class HungService : public QDBusVirtualObject {
public:
    bool handleMessage(const QDBusMessage&, const QDBusConnection&) override { return true; }
    QString introspect(const QString&) const override { return {}; }
};

// Services on a bus, answering from a thread of their own, so that the test's blocking calls on
// the main thread get their replies. Each `add` owns the service name and serves the object.
class FakeServices {
public:
    // Each has a connection of its own, as each service is a program of its own.
    explicit FakeServices(const QString& address)
        : connection_(QDBusConnection::connectToBus(
              address, QStringLiteral("fake%1:").arg(++instances) + address)) {
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
        if constexpr (std::is_base_of_v<SignallingFake, Service>) {
            object->publishOn(connection_, path);
        }
        connection_.registerService(name);
        connection_.registerObject(
            path, object.get(),
            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties);
        auto& added = *object;
        objects_.push_back(std::move(object));
        return added;
    }

    // Gives up `name`, as a service that quits.
    void unregister(const QString& name) { connection_.unregisterService(name); }

    // Owns `name` and takes every call to it without answering.
    void addHung(const QString& name) {
        auto object = std::make_unique<HungService>();
        connection_.registerService(name);
        // Registering gives the object a child, so it moves to the serving thread afterwards.
        connection_.registerVirtualObject(QStringLiteral("/"), object.get(),
                                          QDBusConnection::SubPath);
        object->moveToThread(&thread_);
        objects_.push_back(std::move(object));
    }

private:
    inline static int instances = 0;

    QDBusConnection connection_;
    QThread thread_;
    std::vector<std::unique_ptr<QObject>> objects_;
};

}  // namespace kivo::test
