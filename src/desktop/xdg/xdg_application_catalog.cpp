#include "desktop/xdg/xdg_application_catalog.h"

namespace kivo {

XdgApplicationCatalog::XdgApplicationCatalog(XdgEnvironment environment)
    : environment_(std::move(environment)) {}

void XdgApplicationCatalog::rescan() {
    index_ = ApplicationIndex::scan(environment_.applicationFolders(), environment_.messagesLocale);
    ++generation_;
}

std::optional<QString> XdgApplicationCatalog::displayName(const QString& bundleId) const {
    const DesktopEntry* entry = index_.find(bundleId);
    if (entry == nullptr) {
        return std::nullopt;
    }
    return entry->name;
}

std::optional<QString> XdgApplicationCatalog::iconName(const QString& bundleId) const {
    const DesktopEntry* entry = index_.find(bundleId);
    if (entry == nullptr || entry->icon.isEmpty()) {
        return std::nullopt;
    }
    return entry->icon;
}

}  // namespace kivo
