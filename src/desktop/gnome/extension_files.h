#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace kivo {

// The extension Kivo ships for GNOME Shell, by the name the shell knows it under.
inline constexpr QLatin1StringView gnomeExtensionUuid("focus@kivo.app");

// The shipped extension's folder for a shell of major version `shellMajor`: GNOME Shell 45
// changed how extensions are loaded, so there are two.
QString extensionVariantFor(const QString& shippedFolder, int shellMajor);

// The "version" of the extension in `folder`, from its metadata.json; nothing when there is
// none or it cannot be read.
std::optional<int> extensionVersionIn(const QString& folder);

struct ExtensionInstall {
    enum class Outcome { Unchanged, Installed, Updated, Failed };
    Outcome outcome = Outcome::Failed;
    std::optional<int> previousVersion;  // of what was there before
    std::optional<int> version;          // of what is there now
    QString failure;                     // when it failed, in one line
};

// Makes the folder `target` hold the files of the folder `source`, each replaced whole, and
// leaves it alone when it already does.
ExtensionInstall installExtension(const QString& source, const QString& target);

// The major version in the shell's own words ("GNOME Shell 43.9", or the bare "45.2").
std::optional<int> shellMajorVersion(const QString& versionText);

}  // namespace kivo
