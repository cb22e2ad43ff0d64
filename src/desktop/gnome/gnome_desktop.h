#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <memory>

#include "capture/focused_window.h"
#include "desktop/xdg/remembered_resolutions.h"
#include "desktop/xdg/xdg_application_catalog.h"

namespace kivo {

// Where Kivo's GNOME Shell extension publishes the focused window on the session bus.
inline constexpr QLatin1StringView focusedWindowService("app.kivo.FocusedWindow");
inline constexpr QLatin1StringView focusedWindowPath("/app/kivo/FocusedWindow");
inline constexpr QLatin1StringView focusedWindowInterface("app.kivo.FocusedWindow");

// The desktop of GNOME Shell on Wayland, read through Kivo's extension in the shell. The
// extension announces every change of focus or title; the window is then asked for once, on the
// next sample, so that a sample never answers from an announcement older than the window's state.
// While the extension is away, sampling yields nothing; it is asked again once it returns.
class GnomeDesktop final : public QObject, public FocusedWindowSource {
    Q_OBJECT

public:
    struct Options {
        QDBusConnection bus;
        const XdgApplicationCatalog* catalog = nullptr;  // outlives the desktop
        QString procRoot = QStringLiteral("/proc");
    };

    // A desktop on the extension found on `options.bus`; nothing, with the reason in `failure`,
    // when the extension does not answer there.
    static std::unique_ptr<GnomeDesktop> open(Options options, QString& failure);

    std::optional<FocusedWindow> focusedWindow() override;

    // The version of the extension the shell runs; nothing when it does not say.
    std::optional<uint> extensionVersion() const;

private Q_SLOTS:
    void markStale();

private:
    struct ExtensionFocus {
        QString title;
        QString appId;  // empty when no window has the focus
        std::int64_t processId = 0;
    };

    explicit GnomeDesktop(Options options);

    // False when the extension gave no usable answer within `timeoutMs`; one that came too late
    // leaves the focus known before as it was.
    bool fetch(int timeoutMs);
    std::optional<QString> applicationIdOf(const ExtensionFocus& focus);

    Options options_;
    QDBusServiceWatcher watcher_;
    std::optional<ExtensionFocus> focus_;
    bool isStale_ = true;
    RememberedResolutions resolutions_;  // by process and app id
};

}  // namespace kivo
