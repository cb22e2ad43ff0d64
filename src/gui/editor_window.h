#pragma once

#include <QWidget>

namespace kivo {

// What every editor window does alike: Return saves (when saving is possible), Escape closes
// without saving, and closing, saved or not, is announced.
class EditorWindow : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

    // Writes what the form holds; then the window closes. False when nothing was saved.
    virtual bool save() = 0;

Q_SIGNALS:
    // The window has been closed, saved or not.
    void closed();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
};

}  // namespace kivo
