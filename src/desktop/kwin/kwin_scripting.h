#pragma once

#include <QDBusConnection>
#include <QString>

namespace kivo {

// KWin's scripting service on the session bus: org.kde.KWin, object /Scripting.
inline constexpr QLatin1StringView kwinService("org.kde.KWin");

// Loads the script file at `path` into KWin under `name` and runs it, unloading an earlier script
// of that name first (a previous Kivo's, which would otherwise report to nobody). Knows where
// Plasma 5.27 (/<id>) and Plasma 6 (/Scripting/Script<id>) put the loaded script. False, with the
// reason in `failure`, when KWin does not answer or refuses.
bool runKWinScript(const QDBusConnection& bus, const QString& path, const QString& name,
                   QString& failure);

// Unloads the script called `name`, if KWin has one; best effort.
void unloadKWinScript(const QDBusConnection& bus, const QString& name);

}  // namespace kivo
