#include "gui/editor_form.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QStyle>

namespace kivo {

QLabel* requiredMark() {
    auto* label = new QLabel(QStringLiteral("(Required)"));
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

QLabel* warningMark(const QString& accessibleName) {
    auto* label = new QLabel;
    label->setAccessibleName(accessibleName);
    label->setToolTip(QStringLiteral("This regular expression is not valid"));
    const QIcon icon =
        QIcon::fromTheme(QStringLiteral("dialog-warning"),
                         QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning));
    label->setPixmap(icon.pixmap(16, 16));
    QSizePolicy policy = label->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    label->setSizePolicy(policy);
    label->hide();
    return label;
}

QWidget* sectionHeading(const QString& title, const QString& note) {
    auto* heading = new QWidget;
    auto* layout = new QHBoxLayout(heading);
    layout->setContentsMargins(0, 8, 0, 0);
    auto* titleLabel = new QLabel(title);
    QFont font = titleLabel->font();
    font.setBold(true);
    titleLabel->setFont(font);
    titleLabel->setForegroundRole(QPalette::Link);
    layout->addWidget(titleLabel);
    if (!note.isEmpty()) {
        auto* noteLabel = new QLabel(note);
        noteLabel->setForegroundRole(QPalette::PlaceholderText);
        layout->addWidget(noteLabel);
    }
    layout->addStretch(1);
    return heading;
}

}  // namespace kivo
