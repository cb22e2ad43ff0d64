#include "capture/sampling.h"

#include <utility>

#include "capture/kivo_bundle_id.h"

namespace kivo {

namespace {

// A browser that nothing has ever answered for (no extension) counts as an ordinary application,
// so that its time is never lost. One whose bridge is there but cannot say yet gives its window
// title without an address, a sample that waits for the tab's.
std::optional<BrowserTab> askFrontTab(BrowserTabs& tabs, const FocusedWindow& window) {
    auto answer = tabs.frontTab(window);
    if (auto* tab = std::get_if<BrowserTab>(&answer)) {
        return std::move(*tab);
    }
    if (std::holds_alternative<BrowserNotConnected>(answer)) {
        return BrowserTab{window.title, QString()};
    }
    return std::nullopt;
}

// The title and address to record; no address while the browser cannot say.
std::pair<QString, std::optional<QString>> titleAndAddress(BrowserTabs& tabs,
                                                           const FocusedWindow& window,
                                                           const BrowserTable& browsers) {
    const bool isScriptTitle = browsers.scriptTitleBundleIds.contains(window.bundleId);
    const bool isBrowser = browsers.browserBundleIds.contains(window.bundleId) &&
                           (browsers.activeTabBundleIds.contains(window.bundleId) ||
                            browsers.currentTabBundleIds.contains(window.bundleId));
    if (!isScriptTitle && !isBrowser) {
        return {window.title, QString()};
    }
    auto tab = askFrontTab(tabs, window);
    if (!tab) {
        return {window.title, std::nullopt};
    }
    return {std::move(tab->title), isScriptTitle ? QString() : std::move(tab->address)};
}

}  // namespace

std::optional<CaptureData> takeSample(FocusedWindowSource& desktop, BrowserTabs& tabs,
                                      const Clock& clock, const QStringList& installedBundleIds,
                                      const BrowserTable& browsers) {
    const auto window = desktop.focusedWindow();
    if (!window || window->bundleId == kivoBundleId ||
        !installedBundleIds.contains(window->bundleId)) {
        return std::nullopt;
    }
    auto [title, address] = titleAndAddress(tabs, *window, browsers);
    // A browser takes time to answer: the sample is dated when it has.
    const Instant now = clock.now();
    CaptureData sample;
    sample.name = window->name;
    sample.bundleId = window->bundleId;
    sample.title = std::move(title);
    sample.url = std::move(address);
    sample.createdAt = now;
    sample.updatedAt = now;
    return sample;
}

}  // namespace kivo
