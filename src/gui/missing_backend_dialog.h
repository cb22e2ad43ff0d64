#pragma once

#include <QString>

QT_BEGIN_NAMESPACE
class QMessageBox;
class QWidget;
QT_END_NAMESPACE

namespace kivo {

// Says, without blocking, that Kivo cannot read the focused window in this session (`failure`
// is the reason), that it keeps trying, and offers the Getting Started page.
QMessageBox* showMissingBackendWarning(QWidget* parent, const QString& failure);

}  // namespace kivo
