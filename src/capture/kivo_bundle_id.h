#pragma once

#include <QStringView>

namespace kivo {

// Kivo's own identifier, its XDG desktop-file ID. Sampling never records Kivo itself.
inline constexpr QStringView kivoBundleId = u"app.kivo.Kivo";

}  // namespace kivo
