#include "gui/single_instance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QThread>

#include "application_adaptor.h"
#include "model/diagnostics.h"

namespace kivo {

const QString SingleInstance::serviceName = QStringLiteral("app.kivo.Kivo");
const QString SingleInstance::objectPath = QStringLiteral("/app/kivo/Kivo");

namespace {

const QString interfaceName = QStringLiteral("org.freedesktop.Application");
constexpr int activationTimeoutMs = 10'000;
// The running instance takes the name a moment before it publishes its object.
constexpr int activationAttempts = 10;
constexpr unsigned long attemptPauseMs = 300;

}  // namespace

SingleInstance::SingleInstance(QObject* parent) : QObject(parent) {
    new ApplicationAdaptor(this);
}

SingleInstance::~SingleInstance() {
    if (isRegistered_) {
        QDBusConnection bus = QDBusConnection::sessionBus();
        bus.unregisterService(serviceName);
        bus.unregisterObject(objectPath);
    }
}

SingleInstance::Claim SingleInstance::claim() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return Claim::noSessionBus;
    }
    if (!bus.registerService(serviceName)) {
        return Claim::alreadyRunning;
    }
    isRegistered_ = true;
    if (!bus.registerObject(objectPath, this, QDBusConnection::ExportAdaptors)) {
        printDiagnostic(u"Could not publish " + objectPath + u" on the session bus");
    }
    return Claim::owned;
}

bool SingleInstance::activateRunningInstance() {
    QDBusMessage call = QDBusMessage::createMethodCall(serviceName, objectPath, interfaceName,
                                                       QStringLiteral("Activate"));
    call << QVariantMap();
    QDBusMessage reply;
    for (int attempt = 0; attempt < activationAttempts; ++attempt) {
        reply = QDBusConnection::sessionBus().call(call, QDBus::Block, activationTimeoutMs);
        if (reply.type() != QDBusMessage::ErrorMessage) {
            return true;
        }
        QThread::msleep(attemptPauseMs);
    }
    printDiagnostic(u"Could not activate the running Kivo: " + reply.errorMessage());
    return false;
}

void SingleInstance::Activate(const QVariantMap&) {
    Q_EMIT activated();
}

void SingleInstance::Open(const QStringList&, const QVariantMap&) {
    Q_EMIT activated();  // Kivo opens no files: opening means showing the window
}

void SingleInstance::ActivateAction(const QString&, const QVariantList&, const QVariantMap&) {
    Q_EMIT activated();  // no actions are exported; the window comes to the front
}

}  // namespace kivo
