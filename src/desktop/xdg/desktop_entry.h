#pragma once

#include <QByteArrayView>
#include <QString>
#include <optional>

namespace kivo {

// What Kivo reads from one desktop entry file: enough to tell whether it is an installed
// application, what to call it, which windows belong to it and which icon to show.
struct DesktopEntry {
    QString type;
    QString name;  // localized for the locale given to the parser
    QString icon;  // a theme icon name or an absolute path
    QString startupWmClass;
    bool isHidden = false;  // Hidden=true: the entry counts as deleted; NoDisplay does not matter

    bool isInstalledApplication() const {
        return type == QLatin1String("Application") && !isHidden && !name.isEmpty();
    }
};

// Reads the [Desktop Entry] group of a desktop entry file. Nothing when the file has no such
// group. `messagesLocale` is the user's message locale as POSIX spells it (de_DE.UTF-8@euro).
std::optional<DesktopEntry> parseDesktopEntry(QByteArrayView contents,
                                              const QString& messagesLocale);

}  // namespace kivo
