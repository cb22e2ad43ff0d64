#include "capture/browser_table.h"

namespace kivo {

namespace {

QStringList joined(const QStringList& first, const QStringList& second) {
    QStringList all = first;
    for (const QString& id : second) {
        if (!all.contains(id)) {
            all.append(id);
        }
    }
    return all;
}

}  // namespace

const BrowserTable& builtInBrowserTable() {
    static const BrowserTable table{
        {QStringLiteral("net.mimikaki.mi")},
        {QStringLiteral("com.apple.Safari"), QStringLiteral("com.google.Chrome"),
         QStringLiteral("com.microsoft.edgemac"), QStringLiteral("com.brave.Browser"),
         QStringLiteral("company.thebrowser.Browser"), QStringLiteral("com.vivaldi.Vivaldi"),
         QStringLiteral("com.pushplaylabs.sidekick"), QStringLiteral("com.operasoftware.Opera"),
         QStringLiteral("org.blisk.Blisk")},
        {QStringLiteral("com.google.Chrome"), QStringLiteral("com.microsoft.edgemac"),
         QStringLiteral("com.brave.Browser"), QStringLiteral("company.thebrowser.Browser"),
         QStringLiteral("com.vivaldi.Vivaldi"), QStringLiteral("com.pushplaylabs.sidekick"),
         QStringLiteral("com.operasoftware.Opera"), QStringLiteral("org.blisk.Blisk")},
        {QStringLiteral("com.apple.Safari")},
    };
    return table;
}

const BrowserTable& linuxBrowserTable() {
    // Every one of them runs the extension, so all are "active tab" browsers. Ubuntu's
    // chromium-browser and the beta and developer channels are named as their packages name them.
    static const QStringList browsers{
        QStringLiteral("chromium"),
        QStringLiteral("chromium-browser"),
        QStringLiteral("org.chromium.Chromium"),
        QStringLiteral("google-chrome"),
        QStringLiteral("google-chrome-beta"),
        QStringLiteral("google-chrome-unstable"),
        QStringLiteral("com.google.Chrome"),
        QStringLiteral("microsoft-edge"),
        QStringLiteral("microsoft-edge-beta"),
        QStringLiteral("microsoft-edge-dev"),
        QStringLiteral("com.microsoft.Edge"),
        QStringLiteral("brave-browser"),
        QStringLiteral("com.brave.Browser"),
        QStringLiteral("vivaldi-stable"),
        QStringLiteral("com.vivaldi.Vivaldi"),
        QStringLiteral("opera"),
        QStringLiteral("com.opera.Opera"),
        QStringLiteral("firefox"),
        QStringLiteral("firefox-esr"),
        QStringLiteral("org.mozilla.firefox"),
    };
    static const BrowserTable table{{}, browsers, browsers, {}};
    return table;
}

const BrowserTable& desktopBrowserTable() {
    static const BrowserTable table = [] {
        const BrowserTable& original = builtInBrowserTable();
        const BrowserTable& linuxIds = linuxBrowserTable();
        return BrowserTable{
            joined(original.scriptTitleBundleIds, linuxIds.scriptTitleBundleIds),
            joined(original.browserBundleIds, linuxIds.browserBundleIds),
            joined(original.activeTabBundleIds, linuxIds.activeTabBundleIds),
            joined(original.currentTabBundleIds, linuxIds.currentTabBundleIds),
        };
    }();
    return table;
}

}  // namespace kivo
