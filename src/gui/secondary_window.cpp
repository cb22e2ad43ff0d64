#include "gui/secondary_window.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <algorithm>

namespace kivo {

void makeSecondaryWindow(QWidget& window, QWidget* owner, const QString& title, QSize size) {
    window.setParent(owner, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                                Qt::CustomizeWindowHint);
    window.setWindowTitle(title);
    window.resize(size);
    window.setMinimumSize(size.boundedTo(QSize(240, 160)));
}

void placeAtPointer(QWidget& window) {
    const QPoint pointer = QCursor::pos();
    QScreen* screen = QGuiApplication::screenAt(pointer);
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    QPoint origin = pointer;
    if (screen != nullptr) {
        const QRect available = screen->availableGeometry();
        origin.setX(std::clamp(origin.x(), available.left(),
                               std::max(available.left(), available.right() - window.width())));
        origin.setY(std::clamp(origin.y(), available.top(),
                               std::max(available.top(), available.bottom() - window.height())));
    }
    window.move(origin);
}

}  // namespace kivo
