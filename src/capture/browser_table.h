#pragma once

#include <QString>
#include <QStringList>

namespace kivo {

// The applications whose title, and for browsers the address, are asked for by script instead
// of read from the focused window. Identifiers compare exactly, case included.
struct BrowserTable {
    QStringList scriptTitleBundleIds;  // window title by script, no address
    QStringList browserBundleIds;      // front tab's title and address by script
    QStringList activeTabBundleIds;    // browsers whose scripts say "active tab"
    QStringList currentTabBundleIds;   // browsers whose scripts say "current tab"
};

const BrowserTable& builtInBrowserTable();

enum class TabWord { ActiveTab, CurrentTab };

// The script texts: four lines, the application addressed by its display name.
QString tabTitleScript(const QString& appName, TabWord tabWord);
QString tabAddressScript(const QString& appName, TabWord tabWord);
QString windowTitleScript(const QString& appName);

}  // namespace kivo
