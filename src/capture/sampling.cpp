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

struct TitleAndAddress {
    QString title;
    QString address;
};

std::optional<QString> ask(Desktop& desktop, const CaptureData& front, BrowserField field,
                           QString script) {
    return desktop.queryBrowser({front.bundleId, front.name, field, std::move(script)});
}

std::optional<TitleAndAddress> askFrontTab(Desktop& desktop, const CaptureData& front,
                                           TabWord tabWord) {
    auto title = ask(desktop, front, BrowserField::Title, tabTitleScript(front.name, tabWord));
    if (!title) {
        return std::nullopt;
    }
    auto address =
        ask(desktop, front, BrowserField::Address, tabAddressScript(front.name, tabWord));
    if (!address) {
        return std::nullopt;
    }
    return TitleAndAddress{*std::move(title), *std::move(address)};
}

std::optional<TitleAndAddress> titleAndAddress(Desktop& desktop, const CaptureData& front,
                                               const BrowserTable& browsers) {
    if (browsers.scriptTitleBundleIds.contains(front.bundleId)) {
        auto title = ask(desktop, front, BrowserField::Title, windowTitleScript(front.name));
        if (!title) {
            return std::nullopt;
        }
        return TitleAndAddress{*std::move(title), QString()};
    }
    if (browsers.browserBundleIds.contains(front.bundleId)) {
        if (browsers.activeTabBundleIds.contains(front.bundleId)) {
            return askFrontTab(desktop, front, TabWord::ActiveTab);
        }
        if (browsers.currentTabBundleIds.contains(front.bundleId)) {
            return askFrontTab(desktop, front, TabWord::CurrentTab);
        }
    }
    return TitleAndAddress{front.title.value_or(QString()), QString()};
}

}  // namespace

std::optional<CaptureData> frontmostCapture(Desktop& desktop, const Clock& clock) {
    const auto application = desktop.frontmostApplication();
    if (!application) {
        return std::nullopt;
    }
    auto title = desktop.focusedWindowTitle(*application);
    if (!title || !application->bundleId || !application->localizedName) {
        return std::nullopt;
    }
    return newSample(*application->localizedName, *application->bundleId, *std::move(title),
                     QString(), clock.now());
}

std::optional<CaptureData> takeSample(Desktop& desktop, const Clock& clock,
                                      const QStringList& installedBundleIds,
                                      const BrowserTable& browsers) {
    const auto front = frontmostCapture(desktop, clock);
    if (!front || front->bundleId == kivoBundleId ||
        !installedBundleIds.contains(front->bundleId)) {
        return std::nullopt;
    }
    auto texts = titleAndAddress(desktop, *front, browsers);
    if (!texts) {
        return std::nullopt;
    }
    // Scripts take time: the sample is dated when they have answered.
    return newSample(front->name, front->bundleId, std::move(texts->title),
                     std::move(texts->address), clock.now());
}

}  // namespace kivo
