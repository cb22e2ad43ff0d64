#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QString>
#include <memory>

#include "capture/focused_window.h"
#include "desktop/kwin/active_window_receiver.h"
#include "desktop/xdg/remembered_resolutions.h"
#include "desktop/xdg/xdg_application_catalog.h"

namespace kivo {

// The desktop of KDE Plasma on Wayland: Kivo's script runs inside KWin and reports the active
// window to an object Kivo exports on the session bus; the frontmost application is that
// window's, identified by its desktop-file ID. Reports arrive through the event loop, between
// samples. When KWin restarts, the script is loaded into the new KWin at the next sample.
class KWinDesktop final : public FocusedWindowSource {
public:
    struct Options {
        QDBusConnection bus = QDBusConnection::sessionBus();
        QString scriptPath;                              // the script file KWin is to load
        const XdgApplicationCatalog* catalog = nullptr;  // outlives the desktop
        QString procRoot = QStringLiteral("/proc");
    };

    static const QString serviceName;  // the bus name the script reports to
    static const QString objectPath;
    static const QString scriptName;  // the script's name inside KWin

    // A desktop whose script runs in the KWin on `options.bus`; nothing, with the reason and the
    // step that helps in `failure`, when the script cannot be started.
    static std::unique_ptr<KWinDesktop> connect(Options options, QString& failure);

    // Unloads the script and gives the bus name back.
    ~KWinDesktop() override;

    // Answers from the script's latest report. Windows of this very process are never reported.
    std::optional<FocusedWindow> focusedWindow() override;

private:
    explicit KWinDesktop(Options options);

    bool publish(QString& failure);
    bool startScript(QString& failure);
    std::optional<QString> applicationIdOf(const KWinWindow& window);

    Options options_;
    ActiveWindowReceiver receiver_;
    QDBusServiceWatcher kwinWatcher_;
    bool isPublished_ = false;
    bool isScriptWanted_ = false;        // KWin came back and has no script of Kivo's yet
    RememberedResolutions resolutions_;  // by window and the names it gave
};

}  // namespace kivo
