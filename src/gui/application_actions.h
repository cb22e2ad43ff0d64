#pragma once

#include <QObject>
#include <map>

#include "gui/help_pages.h"

QT_BEGIN_NAMESPACE
class QAction;
class QMenuBar;
QT_END_NAMESPACE

namespace kivo {

// The application's commands, shared by the window's menus and the tray menu.
class ApplicationActions : public QObject {
    Q_OBJECT

public:
    explicit ApplicationActions(QObject* parent = nullptr);

    // "Reopen Main Window" (Ctrl+1) in the Window menu; "Open Window" in the tray.
    QAction* reopenMainWindow() const { return reopenMainWindow_; }
    QAction* openWindow() const { return openWindow_; }
    QAction* settings() const { return settings_; }
    // Disabled: the package manager updates Kivo.
    QAction* checkForUpdates() const { return checkForUpdates_; }
    QAction* quit() const { return quit_; }
    QAction* helpPage(HelpPage page) const { return helpPages_.at(page); }

    // The window's menus: File, Window, Help, in the Linux manner (no item for a new window).
    void fillMenuBar(QMenuBar& menuBar) const;

Q_SIGNALS:
    void mainWindowRequested();
    void settingsRequested();
    void quitRequested();

private:
    QAction* reopenMainWindow_ = nullptr;
    QAction* openWindow_ = nullptr;
    QAction* settings_ = nullptr;
    QAction* checkForUpdates_ = nullptr;
    QAction* quit_ = nullptr;
    std::map<HelpPage, QAction*> helpPages_;
};

}  // namespace kivo
