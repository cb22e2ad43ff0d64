#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <optional>

#include "desktop/presence/owned_names.h"

namespace kivo {

// A service's answer to one call, kept for the tick to read without waiting: the call goes out
// in the background, never to a name without an owner and never starting a service, and its
// reply is kept until the next one. An answer that the service announces changes of is asked
// once per owner and again on each announcement; any other is asked again on every tick.
class ServiceAnswer : public QObject {
    Q_OBJECT

public:
    // `names` must watch the call's service and outlive this answer.
    ServiceAnswer(const QDBusConnection& bus, const OwnedNames& names, QDBusMessage call);

    // Asks again whenever the signal `interface`.`signal` comes from the call's object path.
    void renewOn(const QString& interface, const QString& signal);

    // The current owner's last reply; nothing before one, after an error, or without an owner.
    std::optional<QVariantList> ask();

public Q_SLOTS:
    // The service said that its answer changed.
    void renew();

private:
    void send();
    void receive(const QDBusMessage& reply, quint64 ownership);

    QDBusConnection bus_;
    const OwnedNames& names_;
    QDBusMessage call_;
    bool isAnnounced_ = false;
    bool isPending_ = false;
    bool isRenewalDue_ = false;
    quint64 answeredOwnership_ = 0;
    std::optional<QVariantList> answer_;
};

}  // namespace kivo
