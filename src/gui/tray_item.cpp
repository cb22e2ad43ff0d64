#include "gui/tray_item.h"

#include <QMenu>
#include <QSystemTrayIcon>

#include "gui/application_actions.h"
#include "gui/gauge_icon.h"
#include "reports/productivity.h"

namespace kivo {

QString scoreText(std::int64_t score) {
    return QStringLiteral("%1%").arg(score);
}

TrayItem::TrayItem(Productivity& productivity, ApplicationActions& actions, QObject* parent)
    : QObject(parent), menu_(new QMenu), icon_(new QSystemTrayIcon(this)) {
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
    connect(&productivity, &Productivity::valueChanged, this, &TrayItem::showScore);
    showScore(productivity.value());
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

void TrayItem::showScore(std::int64_t score) {
    icon_->setIcon(gaugeIcon(score));
    icon_->setToolTip(scoreText(score));
}

}  // namespace kivo
