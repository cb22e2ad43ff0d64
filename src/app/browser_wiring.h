#pragma once

#include <memory>

#include "capture/browser_tabs.h"
#include "model/instant.h"

namespace kivo {

// The browsers' side of a recording session: registers the native messaging host with the
// browsers this user has and starts the bridge the host connects to. When the bridge cannot
// listen (no runtime folder, another Kivo runs), every browser is recorded by its window title.
std::unique_ptr<BrowserTabs> startBrowserTabs(const Clock& clock);

}  // namespace kivo
