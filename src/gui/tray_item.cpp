#include "gui/tray_item.h"

#include <QMenu>
#include <QSystemTrayIcon>

#include "gui/application_actions.h"
#include "gui/gauge_icon.h"
#include "model/application_state.h"
#include "reports/productivity.h"

namespace kivo {

QString scoreText(std::int64_t score) {
    return QStringLiteral("%1%").arg(score);
}

TrayItem::TrayItem(Productivity& productivity, const ApplicationState& state,
                   ApplicationActions& actions, QObject* parent)
    : QObject(parent),
      productivity_(productivity),
      state_(state),
      menu_(new QMenu),
      icon_(new QSystemTrayIcon(this)) {
    menu_->setObjectName(QStringLiteral("TrayMenu"));
    menu_->setAccessibleName(QStringLiteral("TrayMenu"));
    menu_->addAction(actions.openWindow());
    menu_->addSeparator();
    menu_->addAction(actions.helpPage(HelpPage::gettingStarted));
    menu_->addAction(actions.settings());
    menu_->addAction(actions.checkForUpdates());
    menu_->addSeparator();
    menu_->addAction(actions.quit());
    icon_->setContextMenu(menu_);
    // A click on the item itself brings the window back, as its first menu entry does.
    connect(icon_, &QSystemTrayIcon::activated, this,
            [&actions](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger) {
                    actions.openWindow()->trigger();
                }
            });
    connect(&productivity, &Productivity::valueChanged, this, &TrayItem::showState);
    connect(&state, &ApplicationState::isAwayChanged, this, &TrayItem::showState);
    showState();
}

TrayItem::~TrayItem() {
    delete menu_;
}

void TrayItem::show() {
    icon_->show();
}

QString TrayItem::toolTip() const {
    return icon_->toolTip();
}

void TrayItem::showState() {
    const std::int64_t score = productivity_.value();
    icon_->setIcon(gaugeIcon(score));
    icon_->setToolTip(state_.isAway() ? QStringLiteral("Paused: away") : scoreText(score));
}

}  // namespace kivo
