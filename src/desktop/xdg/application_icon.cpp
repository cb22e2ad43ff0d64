#include "desktop/xdg/application_icon.h"

#include <QDir>

namespace kivo {

QIcon applicationIcon(const ApplicationCatalog& catalog, const QString& bundleId) {
    const auto iconName = catalog.iconName(bundleId);
    if (!iconName || iconName->isEmpty()) {
        return {};
    }
    if (QDir::isAbsolutePath(*iconName)) {
        return QIcon(*iconName);
    }
    return QIcon::fromTheme(*iconName);
}

}  // namespace kivo
