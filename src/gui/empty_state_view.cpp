#include "gui/empty_state_view.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "gui/help_pages.h"
#include "gui/icons.h"

namespace kivo {

EmptyStateView::EmptyStateView(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("EmptyStateView"));
    setAccessibleName(QStringLiteral("EmptyStateView"));

    auto* icon = new QLabel;
    icon->setPixmap(kivoIcon().pixmap(QSize(72, 72), devicePixelRatioF()));
    icon->setAlignment(Qt::AlignCenter);

    auto* title = new QLabel(QStringLiteral("Need assistance?"));
    QFont font = title->font();
    font.setPointSizeF(font.pointSizeF() * 1.4);
    font.setBold(true);
    title->setFont(font);
    title->setAlignment(Qt::AlignCenter);

    auto* text = new QLabel(QStringLiteral("Check out the Getting Started guide."));
    text->setAlignment(Qt::AlignCenter);
    text->setForegroundRole(QPalette::PlaceholderText);

    auto* button = new QPushButton(QStringLiteral("Open Getting Started"));
    button->setAccessibleName(QStringLiteral("OpenGettingStartedButton"));
    connect(button, &QPushButton::clicked, this, [] { openHelpPage(HelpPage::gettingStarted); });

    auto* layout = new QVBoxLayout(this);
    layout->addStretch(2);
    layout->addWidget(icon);
    layout->addSpacing(8);
    layout->addWidget(title);
    layout->addWidget(text);
    layout->addSpacing(12);
    layout->addWidget(button, 0, Qt::AlignHCenter);
    layout->addStretch(3);
}

}  // namespace kivo
