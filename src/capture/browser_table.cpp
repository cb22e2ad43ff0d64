#include "capture/browser_table.h"

namespace kivo {

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

}  // namespace kivo
