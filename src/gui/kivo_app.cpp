#include "gui/kivo_app.h"

#include <QApplication>
#include <QMenuBar>
#include <QStatusBar>
#include <utility>

#include "desktop/desktop_factory.h"
#include "desktop/retrying_desktop.h"
#include "gui/icons.h"
#include "gui/main_window.h"
#include "gui/missing_backend_dialog.h"
#include "gui/secondary_window.h"
#include "gui/settings_view.h"
#include "gui/tray_item.h"
#include "model/diagnostics.h"
#include "model/open_store.h"

namespace kivo {

KivoApp::KivoApp(BrowserTabs& browserTabs, QString launcher, QObject* parent)
    : QObject(parent),
      storeLock_(lockStoreOrExit(RecordStore::defaultPath())),
      store_(openStoreOrExit(RecordStore::defaultPath())),
      settings_(ApplicationSettings::openDefault()),
      catalog_(XdgEnvironment::fromProcess()),
      launcher_(std::move(launcher)) {
    chooseFocusedWindowSource();
    recorder_ = std::make_unique<Recorder>(*desktop_, browserTabs, *store_, *settings_, clock_);
    presence_ = choosePresence(*settings_, clock_);
    recorder_->watchPresence(*presence_, state_);
    mainWindow_ = std::make_unique<MainWindow>(
        WindowServices{*store_, *settings_, productivity_, *recorder_, catalog_, clock_});
    actions_.fillMenuBar(*mainWindow_->menuBar());
    // The window says why nothing counts while the user is away, as the tray's tooltip does.
    connect(&state_, &ApplicationState::isAwayChanged, this, [this](bool isAway) {
        if (isAway) {
            mainWindow_->statusBar()->showMessage(QStringLiteral("Paused: away"));
        } else {
            mainWindow_->statusBar()->clearMessage();
        }
    });
    connect(&actions_, &ApplicationActions::mainWindowRequested, this, &KivoApp::reopenMainWindow);
    connect(&actions_, &ApplicationActions::settingsRequested, this, &KivoApp::openSettings);
    connect(&actions_, &ApplicationActions::quitRequested, qApp, &QCoreApplication::quit);
    followActivation();
}

KivoApp::~KivoApp() {
    delete settingsWindow_;
    // The clean end: the window's capture timer stops with it, then the open captures are
    // recorded as if their gap had passed.
    tray_.reset();
    mainWindow_.reset();
    recorder_->finish();
}

void KivoApp::chooseFocusedWindowSource() {
    auto choice = chooseDesktop(catalog_);
    if (choice.focusedWindow) {
        desktop_ = std::move(choice.focusedWindow);
        return;
    }
    desktopFailure_ = choice.failure;
    printDiagnostic(u"No desktop backend reads the focused window: " + desktopFailure_);
    desktop_ =
        std::make_unique<RetryingDesktop>([this] { return chooseDesktop(catalog_); }, clock_);
}

void KivoApp::followActivation() {
    connect(qApp, &QGuiApplication::applicationStateChanged, this,
            [this](Qt::ApplicationState state) {
                state_.setIsBackground(state != Qt::ApplicationActive);
            });
}

void KivoApp::start(bool hidden) {
    if (hidden) {
        mainWindow_->appearHidden();
    } else {
        mainWindow_->show();
    }
    // Shown also when no tray host runs yet: Qt adds the item once one appears.
    tray_ = std::make_unique<TrayItem>(productivity_, state_, actions_);
    tray_->show();
    hasStarted_ = true;
    if (!desktopFailure_.isEmpty() && !hidden) {
        showMissingBackendWarning(mainWindow_.get(), desktopFailure_);
    }
}

void KivoApp::reopenMainWindow() {
    if (!hasStarted_) {
        return;
    }
    mainWindow_->showNormal();
    mainWindow_->raise();
    mainWindow_->activateWindow();
}

void KivoApp::openSettings() {
    if (settingsWindow_ == nullptr) {
        settingsWindow_ =
            new SettingsView(*settings_,
                             SessionFacts{sessionDesktopBackend(), desktopFailure_,
                                          RecordStore::defaultPath(), settings_->filePath()},
                             AutostartEntry(), launcher_);
        settingsWindow_->setAttribute(Qt::WA_DeleteOnClose);
        settingsWindow_->setWindowFlag(Qt::WindowMinMaxButtonsHint, false);
        settingsWindow_->resize(620, 400);
        placeAtPointer(*settingsWindow_);
    }
    settingsWindow_->show();
    settingsWindow_->raise();
    settingsWindow_->activateWindow();
}

}  // namespace kivo
