#include "desktop/presence/service_answer.h"

#include <QDBusPendingCallWatcher>

namespace kivo {

namespace {

// Long enough for a busy service; a hung one keeps at most this one call waiting.
constexpr int replyTimeoutMs = 2'000;

}  // namespace

ServiceAnswer::ServiceAnswer(const QDBusConnection& bus, const OwnedNames& names, QDBusMessage call)
    : bus_(bus), names_(names), call_(std::move(call)) {}

void ServiceAnswer::renewOn(const QString& interface, const QString& signal) {
    isAnnounced_ = true;
    // From any sender: a stray signal costs one more question of the name's true owner, and a
    // subscription without a name needs no look-up of its owner.
    bus_.connect(QString(), call_.path(), interface, signal, this, SLOT(renew()));
    renew();
}

std::optional<QVariantList> ServiceAnswer::ask() {
    const quint64 ownership = names_.ownership(call_.service());
    if (ownership == 0) {
        return std::nullopt;
    }
    if (!isAnnounced_ || answeredOwnership_ != ownership) {
        send();
    }
    return answeredOwnership_ == ownership ? answer_ : std::nullopt;
}

void ServiceAnswer::renew() {
    if (isPending_) {
        // The reply on its way may predate the change.
        isRenewalDue_ = true;
    } else if (names_.ownership(call_.service()) != 0) {
        send();
    }
}

void ServiceAnswer::send() {
    if (isPending_) {
        return;
    }
    isPending_ = true;
    const quint64 ownership = names_.ownership(call_.service());
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call_, replyTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, ownership](QDBusPendingCallWatcher* finished) {
                finished->deleteLater();
                isPending_ = false;
                receive(finished->reply(), ownership);
                if (isRenewalDue_) {
                    isRenewalDue_ = false;
                    renew();
                }
            });
}

void ServiceAnswer::receive(const QDBusMessage& reply, quint64 ownership) {
    if (reply.type() == QDBusMessage::ReplyMessage) {
        answer_ = reply.arguments();
        answeredOwnership_ = ownership;
        return;
    }
    answer_.reset();
    // A service that did not answer in time is asked again; one that refused has answered.
    const bool isTimeout = reply.errorName() == u"org.freedesktop.DBus.Error.NoReply";
    answeredOwnership_ = isTimeout ? 0 : ownership;
}

}  // namespace kivo
