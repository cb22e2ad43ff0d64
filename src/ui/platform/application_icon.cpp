#include "ui/platform/application_icon.h"

#include <QDir>

namespace kivo {

QIcon applicationIcon(Desktop& desktop, const QString& bundleId) {
    const auto iconName = desktop.applicationIconName(bundleId);
    if (!iconName || iconName->isEmpty()) {
        return {};
    }
    if (QDir::isAbsolutePath(*iconName)) {
        return QIcon(*iconName);
    }
    return QIcon::fromTheme(*iconName);
}

}  // namespace kivo
