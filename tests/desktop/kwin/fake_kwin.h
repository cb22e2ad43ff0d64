#pragma once

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QMutex>
#include <QObject>
#include <QStringList>
#include <QThread>

namespace kivo::test {

// A loaded script as KWin exports it: run is all Kivo calls.
class FakeKWinScript : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.kwin.Script")

public:
    FakeKWinScript(std::function<void()> onRun, QObject* parent)
        : QObject(parent), onRun_(std::move(onRun)) {}

public Q_SLOTS:
    void run() { onRun_(); }

private:
    std::function<void()> onRun_;
};

// KWin's scripting service on a bus of the test's, on a connection and thread of its own (Kivo
// waits for KWin's answers, and on one thread the fake could not give them). Remembers the calls
// in order, as "unload NAME", "load PATH NAME", "run OBJECT" and "start".
class FakeKWin : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.kwin.Scripting")

public:
    enum class Plasma { five, six };

    // `refusal`: loadScript answers -1, as KWin does when it will not load.
    FakeKWin(const QString& busAddress, const QString& connectionName, Plasma plasma,
             bool refusal = false)
        : bus_(QDBusConnection::connectToBus(busAddress, connectionName)),
          plasma_(plasma),
          refusal_(refusal) {
        thread_.start();
        moveToThread(&thread_);
        bus_.registerObject(QStringLiteral("/Scripting"), this, QDBusConnection::ExportAllSlots);
        bus_.registerService(QStringLiteral("org.kde.KWin"));
    }

    ~FakeKWin() override {
        bus_.unregisterService(QStringLiteral("org.kde.KWin"));
        QDBusConnection::disconnectFromBus(bus_.name());
        thread_.quit();
        thread_.wait();
    }

    QDBusConnection& bus() { return bus_; }

    QStringList calls() const {
        QMutexLocker lock(&mutex_);
        return calls_;
    }

    // Sends a report to Kivo as the script does, from KWin's connection.
    void report(const QVariantMap& window) { reportFrom(bus_, window); }

    static void reportFrom(const QDBusConnection& bus, const QVariantMap& window) {
        bus.send(QDBusMessage::createMethodCall(QStringLiteral("app.kivo.Kivo.ActiveWindow"),
                                                QStringLiteral("/app/kivo/Kivo/ActiveWindow"),
                                                QStringLiteral("app.kivo.Kivo.ActiveWindow"),
                                                QStringLiteral("Changed"))
                 << window);
    }

public Q_SLOTS:
    int loadScript(const QString& path, const QString& name) {
        remember(QStringLiteral("load ") + path + u' ' + name);
        if (refusal_) {
            return -1;
        }
        {
            QMutexLocker lock(&mutex_);
            loaded_.append(name);
        }
        const int id = nextId_++;
        const QString object = plasma_ == Plasma::six
                                   ? QStringLiteral("/Scripting/Script%1").arg(id)
                                   : QStringLiteral("/%1").arg(id);
        auto* script =
            new FakeKWinScript([this, object] { remember(QStringLiteral("run ") + object); }, this);
        bus_.registerObject(object, script, QDBusConnection::ExportAllSlots);
        return id;
    }

    bool unloadScript(const QString& name) {
        remember(QStringLiteral("unload ") + name);
        QMutexLocker lock(&mutex_);
        return loaded_.removeOne(name);
    }

    bool isScriptLoaded(const QString& name) {
        QMutexLocker lock(&mutex_);
        return loaded_.contains(name);
    }

    void start() { remember(QStringLiteral("start")); }

private:
    void remember(const QString& call) {
        QMutexLocker lock(&mutex_);
        calls_.append(call);
    }

    QThread thread_;
    QDBusConnection bus_;
    Plasma plasma_;
    bool refusal_;
    int nextId_ = 3;
    mutable QMutex mutex_;
    QStringList calls_;
    QStringList loaded_;
};

}  // namespace kivo::test
