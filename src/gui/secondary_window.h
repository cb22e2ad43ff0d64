#pragma once

#include <QSize>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

namespace kivo {

// Makes `window` one of Kivo's small secondary windows: titled, closable and resizable, without
// minimise or maximise buttons, kept above the main window (`owner`), of the given size.
void makeSecondaryWindow(QWidget& window, QWidget* owner, const QString& title, QSize size);

// Places `window` at the mouse pointer, kept on the pointer's screen.
void placeAtPointer(QWidget& window);

}  // namespace kivo
