#pragma once

#include <QStringList>
#include <optional>

#include "capture/browser_table.h"
#include "capture/desktop.h"
#include "model/capture_data.h"
#include "model/instant.h"

namespace kivo {

// The application in front with its focused window's title and an empty address, or nothing
// when the desktop cannot tell all of them.
std::optional<CaptureData> frontmostCapture(Desktop& desktop, const Clock& clock);

// One sample of what the user is looking at, or nothing: not for Kivo itself, only for installed
// applications, and for the applications of `browsers` with the title (and address) their
// scripts answer. A script that fails gives no sample rather than one without its address.
std::optional<CaptureData> takeSample(Desktop& desktop, const Clock& clock,
                                      const QStringList& installedBundleIds,
                                      const BrowserTable& browsers);

}  // namespace kivo
