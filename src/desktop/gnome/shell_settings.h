#pragma once

#include <QString>
#include <QStringList>

namespace kivo {

// The strings of a string array as gsettings prints it: "['a@b', 'c@d']", or "@as []".
QStringList parseStringArray(const QString& text);

// The same array written back for gsettings.
QString formatStringArray(const QStringList& strings);

// Enables the extension `uuid` in the user's GNOME Shell settings with the gsettings tool: on the
// list of enabled extensions and off that of disabled ones. Already enabled, nothing is written.
// False, with the reason in `failure`, when the settings cannot be read or written.
bool enableShellExtension(const QString& uuid, QString& failure);

// Whether the user has turned all of GNOME Shell's extensions off, which no enabling overrides.
bool areShellExtensionsTurnedOff();

}  // namespace kivo
