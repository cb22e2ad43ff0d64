#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

namespace kivo {

// One Kivo per user session: the running instance owns the name app.kivo.Kivo on the session
// bus and answers org.freedesktop.Application there; a second start asks it to activate.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    static const QString serviceName;
    static const QString objectPath;

    enum class Claim { owned, alreadyRunning, noSessionBus };

    explicit SingleInstance(QObject* parent = nullptr);
    ~SingleInstance() override;

    // Publishes the interface and takes the name.
    Claim claim();

    // Asks the instance that owns the name to come to the front. False when none answered.
    static bool activateRunningInstance();

public Q_SLOTS:
    // The interface's methods, called by the generated adaptor.
    void Activate(const QVariantMap& platform_data);
    void Open(const QStringList& uris, const QVariantMap& platform_data);
    void ActivateAction(const QString& action_name, const QVariantList& parameter,
                        const QVariantMap& platform_data);

Q_SIGNALS:
    void activated();

private:
    bool isRegistered_ = false;
};

}  // namespace kivo
