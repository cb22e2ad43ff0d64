#include "capture/sampling.h"

#include "capture/kivo_bundle_id.h"

namespace kivo {

namespace {

CaptureData newSample(QString name, QString bundleId, QString title, QString url, Instant now) {
    CaptureData sample;
    sample.name = std::move(name);
    sample.bundleId = std::move(bundleId);
    sample.title = std::move(title);
    sample.url = std::move(url);
    sample.createdAt = now;
    sample.updatedAt = now;
    return sample;
}

// A browser that nothing has ever answered for (no extension) counts as an ordinary application,
// so that its time is never lost; one whose bridge is there but cannot say gives no sample.
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

std::optional<BrowserTab> titleAndAddress(BrowserTabs& tabs, const FocusedWindow& window,
                                          const BrowserTable& browsers) {
    if (browsers.scriptTitleBundleIds.contains(window.bundleId)) {
        auto tab = askFrontTab(tabs, window);
        if (!tab) {
            return std::nullopt;
        }
        return BrowserTab{std::move(tab->title), QString()};
    }
    if (browsers.browserBundleIds.contains(window.bundleId) &&
        (browsers.activeTabBundleIds.contains(window.bundleId) ||
         browsers.currentTabBundleIds.contains(window.bundleId))) {
        return askFrontTab(tabs, window);
    }
    return BrowserTab{window.title, QString()};
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
    auto texts = titleAndAddress(tabs, *window, browsers);
    if (!texts) {
        return std::nullopt;
    }
    // A browser takes time to answer: the sample is dated when it has.
    return newSample(window->name, window->bundleId, std::move(texts->title),
                     std::move(texts->address), clock.now());
}

}  // namespace kivo
