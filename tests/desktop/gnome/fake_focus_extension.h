#pragma once

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDeadlineTimer>
#include <QMutex>
#include <QObject>
#include <QThread>
#include <chrono>

#include "desktop/gnome/gnome_desktop.h"

namespace kivo::test {

// The object a stand-in for Kivo's extension shows on the bus.
class FakeFocusObject final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "app.kivo.FocusedWindow")
    Q_PROPERTY(uint Version READ version)

public:
    explicit FakeFocusObject(uint version) : version_(version) {}

    void setFocus(const QString& title, const QString& appId, uint processId) {
        QMutexLocker lock(&mutex_);
        title_ = title;
        appId_ = appId;
        processId_ = processId;
    }

    int questions() const {
        QMutexLocker lock(&mutex_);
        return questions_;
    }

    // A shell in trouble answers late.
    void setAnswerDelay(std::chrono::milliseconds delay) {
        QMutexLocker lock(&mutex_);
        answerDelay_ = delay;
    }

    uint version() const { return version_; }

public Q_SLOTS:
    QString Get(QString& appId, uint& processId) {
        QMutexLocker lock(&mutex_);
        QThread::msleep(static_cast<unsigned long>(answerDelay_.count()));
        ++questions_;
        appId = appId_;
        processId = processId_;
        return title_;
    }

Q_SIGNALS:
    void Changed(const QString& title, const QString& appId, uint processId);

private:
    uint version_;
    mutable QMutex mutex_;
    QString title_;
    QString appId_;
    uint processId_ = 0;
    int questions_ = 0;
    std::chrono::milliseconds answerDelay_{0};
};

// Plays Kivo's GNOME Shell extension on a bus: the focused window the test sets, the version and
// the change signal. It answers on a thread of its own, so that a caller on the test's thread can
// wait for its answers.
class FakeFocusExtension {
public:
    explicit FakeFocusExtension(const QString& busAddress, uint version = 1)
        : connectionName_(QStringLiteral("fake-extension-%1").arg(++instances())),
          bus_(QDBusConnection::connectToBus(busAddress, connectionName_)),
          object_(new FakeFocusObject(version)) {
        thread_.start();
        object_->moveToThread(&thread_);
    }

    ~FakeFocusExtension() {
        withdraw();
        onOwnThread([this] { delete object_; });
        thread_.quit();
        thread_.wait();
        QDBusConnection::disconnectFromBus(connectionName_);
    }

    FakeFocusExtension(const FakeFocusExtension&) = delete;
    FakeFocusExtension& operator=(const FakeFocusExtension&) = delete;

    // Takes the extension's name and object on the bus; false when the bus refused.
    bool publish() {
        bool published = false;
        onOwnThread([this, &published] {
            published = bus_.registerObject(QString(focusedWindowPath), object_,
                                            QDBusConnection::ExportAllSlots |
                                                QDBusConnection::ExportAllSignals |
                                                QDBusConnection::ExportAllProperties) &&
                        bus_.registerService(QString(focusedWindowService));
        });
        return published;
    }

    void withdraw() {
        onOwnThread([this] {
            bus_.unregisterService(QString(focusedWindowService));
            bus_.unregisterObject(QString(focusedWindowPath));
        });
    }

    // Sets the focused window; `announce` says whether the extension tells of the change.
    void setFocus(const QString& title, const QString& appId, uint processId, bool announce) {
        object_->setFocus(title, appId, processId);
        if (announce) {
            onOwnThread([=, this] { Q_EMIT object_->Changed(title, appId, processId); });
        }
    }

    // How often the extension was asked for the focused window.
    int questions() const { return object_->questions(); }
    void setAnswerDelay(std::chrono::milliseconds delay) { object_->setAnswerDelay(delay); }

private:
    static int& instances() {
        static int count = 0;
        return count;
    }

    // The bus expects an object's registration and signals on the object's own thread.
    template <class Work>
    void onOwnThread(Work work) {
        QMetaObject::invokeMethod(object_, work, Qt::BlockingQueuedConnection);
    }

    QString connectionName_;
    QDBusConnection bus_;
    QThread thread_;
    FakeFocusObject* object_;
};

// Counts the extension's announcements as a client on `bus` receives them.
class AnnouncementCounter final : public QObject {
    Q_OBJECT

public:
    explicit AnnouncementCounter(QDBusConnection bus) {
        bus.connect(QString(focusedWindowService), QString(focusedWindowPath),
                    QString(focusedWindowInterface), QStringLiteral("Changed"), this,
                    SLOT(count(QString)));
    }

    // Takes in events until `count` announcements have arrived; false after a generous deadline.
    bool waitFor(int count) const {
        return waitUntil([&] { return received_ >= count; });
    }

    // Takes in events until an announcement of `title` has arrived.
    bool waitForTitle(const QString& title) const {
        return waitUntil([&] { return lastTitle_ == title; });
    }

private Q_SLOTS:
    void count(const QString& title) {
        ++received_;
        lastTitle_ = title;
    }

private:
    template <class Condition>
    static bool waitUntil(Condition isMet) {
        for (const QDeadlineTimer deadline(10'000); !isMet();) {
            if (deadline.hasExpired()) {
                return false;
            }
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        }
        // The bus's thread hands the same message to each receiver in turn: a moment more lets
        // every other receiver have it too.
        QThread::msleep(5);
        QCoreApplication::processEvents();
        return true;
    }

    int received_ = 0;
    QString lastTitle_;
};

}  // namespace kivo::test
