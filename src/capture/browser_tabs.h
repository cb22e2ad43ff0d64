#pragma once

#include <QString>
#include <variant>

#include "capture/focused_window.h"

namespace kivo {

// The front tab of a browser window.
struct BrowserTab {
    QString title;
    QString address;
};

// The browser was asked and could not say (no such window, no answer in time).
struct BrowserCannotAnswer {};

// Nothing has connected that could answer for this browser.
struct BrowserNotConnected {};

using BrowserTabAnswer = std::variant<BrowserTab, BrowserCannotAnswer, BrowserNotConnected>;

// What stands between the sampler and the browsers: the front tab of a browser's focused window.
class BrowserTabs {
public:
    virtual ~BrowserTabs() = default;

    virtual BrowserTabAnswer frontTab(const FocusedWindow& window) = 0;
};

// For sessions without a browser bridge: every browser is unconnected.
class NoBrowserTabs final : public BrowserTabs {
public:
    BrowserTabAnswer frontTab(const FocusedWindow&) override { return BrowserNotConnected{}; }
};

}  // namespace kivo
