#include "desktop/xdg/application_index.h"

#include <QFile>
#include <QSet>
#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>

#include "model/diagnostics.h"

namespace kivo {

namespace fs = std::filesystem;

namespace {

const QLatin1String desktopSuffix(".desktop");

struct EntryFile {
    QString id;
    fs::path path;
};

void printListingError(const fs::path& folder, const std::error_code& error) {
    printDiagnostic(QStringLiteral("ファイル操作エラー: ") % QFile::decodeName(folder.c_str()) %
                    u": " % QString::fromStdString(error.message()));
}

// Lists one folder, sorted by name so that discovery does not depend on the file system's order.
std::optional<std::vector<fs::directory_entry>> listFolder(const fs::path& folder) {
    std::error_code error;
    fs::directory_iterator iterator(folder, error);
    std::vector<fs::directory_entry> children;
    while (!error && iterator != fs::directory_iterator()) {
        children.push_back(*iterator);
        iterator.increment(error);
    }
    if (error) {
        printListingError(folder, error);
        return std::nullopt;
    }
    std::sort(children.begin(), children.end(), [](const auto& left, const auto& right) {
        return left.path().filename() < right.path().filename();
    });
    return children;
}

// Collects the desktop entry files below `folder`; `visited` guards against symbolic-link loops.
void collectEntryFiles(const fs::path& folder, const QString& idPrefix, std::set<fs::path>& visited,
                       std::vector<EntryFile>& files) {
    std::error_code error;
    const fs::path canonical = fs::canonical(folder, error);
    if (error) {
        if (error != std::errc::no_such_file_or_directory) {
            printListingError(folder, error);
        }
        return;
    }
    if (!visited.insert(canonical).second) {
        return;
    }
    const auto children = listFolder(folder);
    if (!children) {
        return;
    }
    for (const auto& child : *children) {
        const QString name = QFile::decodeName(child.path().filename().c_str());
        if (child.is_directory(error)) {
            collectEntryFiles(child.path(), idPrefix % name % u'-', visited, files);
        } else if (name.endsWith(desktopSuffix) && name.size() > desktopSuffix.size()) {
            files.push_back({idPrefix + name.chopped(desktopSuffix.size()), child.path()});
        }
    }
}

std::optional<DesktopEntry> readEntry(const fs::path& path, const QString& messagesLocale) {
    QFile file(QFile::decodeName(path.c_str()));
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return parseDesktopEntry(file.readAll(), messagesLocale);
}

}  // namespace

ApplicationIndex ApplicationIndex::scan(const QStringList& applicationFolders,
                                        const QString& messagesLocale) {
    std::vector<EntryFile> files;
    for (const QString& folder : applicationFolders) {
        std::set<fs::path> visited;
        collectEntryFiles(fs::path(QFile::encodeName(folder).toStdString()), {}, visited, files);
    }

    ApplicationIndex index;
    QSet<QString> decidedIds;
    for (const EntryFile& file : files) {
        if (decidedIds.contains(file.id)) {
            if (index.entries_.contains(file.id)) {
                index.installedIds_.append(file.id);
            }
            continue;
        }
        decidedIds.insert(file.id);
        auto entry = readEntry(file.path, messagesLocale);
        if (entry && entry->isInstalledApplication()) {
            index.add(file.id, std::move(*entry));
        }
    }
    return index;
}

void ApplicationIndex::add(const QString& id, DesktopEntry entry) {
    installedIds_.append(id);
    if (!entry.startupWmClass.isEmpty()) {
        const QString key = entry.startupWmClass.toLower();
        if (!idsByStartupWmClass_.contains(key)) {
            idsByStartupWmClass_.insert(key, id);
        }
    }
    entries_.insert(id, std::move(entry));
}

const DesktopEntry* ApplicationIndex::find(const QString& id) const {
    const auto found = entries_.constFind(id);
    return found == entries_.cend() ? nullptr : &*found;
}

std::optional<QString> ApplicationIndex::idForStartupWmClass(const QString& wmClass) const {
    const auto found = idsByStartupWmClass_.constFind(wmClass.toLower());
    if (found == idsByStartupWmClass_.cend()) {
        return std::nullopt;
    }
    return *found;
}

std::optional<QString> desktopFileIdOfPath(const QString& filePath) {
    const QLatin1String folder("/applications/");
    const qsizetype start = filePath.lastIndexOf(folder);
    if (start < 0 || !filePath.endsWith(desktopSuffix)) {
        return std::nullopt;
    }
    QString relative = filePath.mid(start + folder.size());
    relative.chop(desktopSuffix.size());
    if (relative.isEmpty()) {
        return std::nullopt;
    }
    return relative.replace(u'/', u'-');
}

}  // namespace kivo
