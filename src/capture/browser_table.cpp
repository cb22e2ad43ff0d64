#include "capture/browser_table.h"

namespace kivo {

namespace {

QString tabWordText(TabWord tabWord) {
    return tabWord == TabWord::ActiveTab ? QStringLiteral("active tab")
                                         : QStringLiteral("current tab");
}

QString script(const QString& appName, const QString& statement, const QString& result) {
    return u"    tell application \"" + appName + u"\"\n        " + statement +
           u"\n    end tell\n    return " + result;
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

QString tabTitleScript(const QString& appName, TabWord tabWord) {
    return script(
        appName,
        u"set appTitle to the name of the " + tabWordText(tabWord) + u" of the front window",
        QStringLiteral("appTitle"));
}

QString tabAddressScript(const QString& appName, TabWord tabWord) {
    return script(appName,
                  u"set appURL to the URL of the " + tabWordText(tabWord) + u" of the front window",
                  QStringLiteral("appURL"));
}

QString windowTitleScript(const QString& appName) {
    return script(appName, QStringLiteral("set appTitle to get the name of the front window"),
                  QStringLiteral("appTitle"));
}

}  // namespace kivo
