#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <vector>

#include "desktop/xdg/desktop_entry.h"

namespace kivo {

// The installed applications as the desktop entries in the applications folders describe them,
// gathered once so that each tick only looks things up.
class ApplicationIndex {
public:
    // Scans `applicationFolders` in order of precedence (subfolders included). The first file
    // found for a desktop-file ID decides what that ID is; a later file with the same ID adds a
    // duplicate to the list but does not change the entry. A folder that exists but cannot be
    // listed prints "ファイル操作エラー: " with the reason and contributes nothing.
    static ApplicationIndex scan(const QStringList& applicationFolders,
                                 const QString& messagesLocale);

    // Desktop-file IDs of the installed applications in order of discovery, duplicates kept.
    const QStringList& installedIds() const { return installedIds_; }

    // The entry of an installed application, or null.
    const DesktopEntry* find(const QString& id) const;

    // The first installed application whose StartupWMClass equals `wmClass`, ignoring case.
    std::optional<QString> idForStartupWmClass(const QString& wmClass) const;

private:
    void add(const QString& id, DesktopEntry entry);

    QStringList installedIds_;
    QHash<QString, DesktopEntry> entries_;
    QHash<QString, QString> idsByStartupWmClass_;  // lower-cased class to ID
};

// The desktop-file ID of the entry at `filePath`: its path below the nearest "applications"
// folder with '/' replaced by '-' and ".desktop" removed. Nothing for a path outside such a
// folder or a file that is not a desktop entry.
std::optional<QString> desktopFileIdOfPath(const QString& filePath);

}  // namespace kivo
