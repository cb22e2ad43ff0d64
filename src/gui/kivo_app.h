#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <memory>

#include "capture/recorder.h"
#include "desktop/xdg/xdg_application_catalog.h"
#include "gui/application_actions.h"
#include "model/application_settings.h"
#include "model/application_state.h"
#include "model/instant.h"
#include "model/record_store.h"
#include "model/store_lock.h"
#include "reports/productivity.h"

namespace kivo {

class BrowserTabs;
class MainWindow;
class SettingsView;
class TrayItem;

// The window application: it owns the store, today's productivity, the recorder and the
// windows for the life of the process. Built in start-up order: the store first (a store that
// cannot be opened ends the program), then the productivity model, then the rest.
class KivoApp : public QObject {
    Q_OBJECT

public:
    // `launcher` is the command the login autostart entry runs.
    KivoApp(BrowserTabs& browserTabs, QString launcher, QObject* parent = nullptr);
    ~KivoApp() override;

    // Shows the main window (its first appearance starts recording) and the tray item, then
    // warns when no desktop backend can read the focused window. Started `hidden` (at login),
    // only the tray item shows and recording starts all the same.
    void start(bool hidden = false);
    // Opens the settings window, or brings the open one to the front.
    void openSettings();
    // Brings the main window back to the front; before start() does nothing.
    void reopenMainWindow();

private:
    void chooseFocusedWindowSource();
    void followActivation();

    SystemClock clock_;
    // Held for the life of the process, before the store is touched: one recorder per store.
    std::unique_ptr<StoreLock> storeLock_;
    std::unique_ptr<RecordStore> store_;
    Productivity productivity_;
    std::unique_ptr<ApplicationSettings> settings_;
    ApplicationState state_;
    XdgApplicationCatalog catalog_;
    // Why no backend reads the focused window, or empty when one does.
    QString desktopFailure_;
    QString launcher_;
    std::unique_ptr<FocusedWindowSource> desktop_;
    std::unique_ptr<PresenceSource> presence_;
    std::unique_ptr<Recorder> recorder_;
    ApplicationActions actions_;
    std::unique_ptr<MainWindow> mainWindow_;
    std::unique_ptr<TrayItem> tray_;
    QPointer<SettingsView> settingsWindow_;
    bool hasStarted_ = false;
};

}  // namespace kivo
