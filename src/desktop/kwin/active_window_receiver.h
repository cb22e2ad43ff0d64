#pragma once

#include <QDBusContext>
#include <QObject>
#include <QVariantMap>
#include <optional>

#include "desktop/kwin/kwin_window.h"

namespace kivo {

// The object Kivo's KWin script reports to (its interface is generated from
// app.kivo.Kivo.ActiveWindow.xml). Keeps the latest report of the one sender it trusts, KWin's
// connection, so that no other program on the bus can say what the user looks at.
class ActiveWindowReceiver : public QObject, protected QDBusContext {
    Q_OBJECT

public:
    explicit ActiveWindowReceiver(QObject* parent = nullptr);

    // Trusts `sender` (a unique bus name) from now on and forgets what was reported before.
    void trust(const QString& sender);

    const std::optional<KWinWindow>& activeWindow() const { return activeWindow_; }

public Q_SLOTS:
    // The interface's method, called by the generated adaptor.
    void Changed(const QVariantMap& window);

private:
    QString trustedSender_;
    std::optional<KWinWindow> activeWindow_;
};

}  // namespace kivo
