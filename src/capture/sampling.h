#pragma once

#include <QStringList>
#include <optional>

#include "capture/browser_table.h"
#include "capture/browser_tabs.h"
#include "capture/focused_window.h"
#include "model/capture_data.h"
#include "model/instant.h"

namespace kivo {

// One sample of what the user is looking at, or nothing: not for Kivo itself, only for installed
// applications, and for the applications of `browsers` with the title (and address) of their
// front tab. A browser whose bridge cannot say (yet) gives its window title without an address,
// which recording holds until the tab is known; a browser without any bridge is sampled by its
// window title.
std::optional<CaptureData> takeSample(FocusedWindowSource& desktop, BrowserTabs& tabs,
                                      const Clock& clock, const QStringList& installedBundleIds,
                                      const BrowserTable& browsers);

}  // namespace kivo
