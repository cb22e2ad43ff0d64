#pragma once

#include <QIcon>
#include <QString>

#include "capture/application_catalog.h"

namespace kivo {

// The icon of an installed application, as its desktop entry names it: an absolute path is
// loaded as it is, any other name is looked up in the icon theme. A null icon when the
// application names none or no image is found.
QIcon applicationIcon(const ApplicationCatalog& catalog, const QString& bundleId);

}  // namespace kivo
