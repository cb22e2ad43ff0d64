#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace kivo {

// The applications installed for this user, as every desktop backend and every view knows them.
class ApplicationCatalog {
public:
    virtual ~ApplicationCatalog() = default;

    // Reads the installed applications anew; answers then come from this scan.
    virtual void rescan() = 0;

    // Identifiers of the installed applications, in order of discovery, duplicates kept.
    virtual QStringList installedBundleIds() const = 0;

    // The name shown to the user (in the user's language where the entry has one), or nothing
    // for an application that is not installed.
    virtual std::optional<QString> displayName(const QString& bundleId) const = 0;

    // The application's icon as a theme icon name or an absolute file path, or nothing.
    virtual std::optional<QString> iconName(const QString& bundleId) const = 0;
};

}  // namespace kivo
