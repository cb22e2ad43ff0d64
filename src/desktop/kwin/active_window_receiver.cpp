#include "desktop/kwin/active_window_receiver.h"

#include "active_window_adaptor.h"

namespace kivo {

ActiveWindowReceiver::ActiveWindowReceiver(QObject* parent) : QObject(parent) {
    new ActiveWindowAdaptor(this);  // owned by this object
}

void ActiveWindowReceiver::trust(const QString& sender) {
    trustedSender_ = sender;
    activeWindow_.reset();
}

void ActiveWindowReceiver::Changed(const QVariantMap& window) {
    if (!calledFromDBus() || message().service() != trustedSender_) {
        return;
    }
    activeWindow_ = kwinWindowFromReport(window);
}

}  // namespace kivo
