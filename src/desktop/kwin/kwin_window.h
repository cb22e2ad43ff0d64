#pragma once

#include <QString>
#include <QVariantMap>
#include <cstdint>
#include <optional>

namespace kivo {

// The active window as Kivo's KWin script describes it.
struct KWinWindow {
    QString caption;
    QString resourceClass;  // WM_CLASS's class on X11 (lower-cased by KWin), the app_id on Wayland
    QString resourceName;   // WM_CLASS's instance on X11, the executable on Wayland
    QString desktopFileName;     // the app_id, or what an X client names; may be empty
    std::int64_t processId = 0;  // 0 when KWin knows none
    QString internalId;          // KWin's own key for the window, on X11 and Wayland alike
};

// The window one report of the script names; nothing for an empty report (no window is active)
// and for one without a caption. Text may come as strings or as byte arrays, the process id as
// any number.
std::optional<KWinWindow> kwinWindowFromReport(const QVariantMap& report);

}  // namespace kivo
