#include "gui/missing_backend_dialog.h"

#include <QMessageBox>
#include <QPushButton>

#include "gui/help_pages.h"

namespace kivo {

QMessageBox* showMissingBackendWarning(QWidget* parent, const QString& failure) {
    auto* box = new QMessageBox(parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setObjectName(QStringLiteral("MissingBackendWarning"));
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(QStringLiteral("Kivo"));
    box->setText(QStringLiteral("<b>Kivo Cannot See Which Window Is in Front</b>"));
    QString reason = failure;
    if (!reason.isEmpty()) {
        reason[0] = reason[0].toUpper();
    }
    box->setInformativeText(
        QStringLiteral("%1.\n\nKivo reads the focused window on X11 with a window manager that "
                       "follows the EWMH standard (most do), and on Wayland in GNOME, KDE Plasma, "
                       "Hyprland and the wlroots compositors (sway, labwc, river, Wayfire). Kivo "
                       "keeps running and starts recording as soon as it can read the focused "
                       "window.")
            .arg(reason));
    QPushButton* open =
        box->addButton(QStringLiteral("Open Getting Started"), QMessageBox::AcceptRole);
    open->setAccessibleName(QStringLiteral("OpenGettingStartedButton"));
    box->addButton(QMessageBox::Cancel);
    box->setDefaultButton(open);
    QObject::connect(open, &QPushButton::clicked, box,
                     [] { openHelpPage(HelpPage::gettingStarted); });
    box->open();
    return box;
}

}  // namespace kivo
