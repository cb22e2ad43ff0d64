#pragma once

#include <QString>
#include <QStringList>

namespace kivo {

// The applications whose title, and for browsers the address, are asked of the browser instead
// of read from the focused window. Identifiers compare exactly, case included.
struct BrowserTable {
    QStringList scriptTitleBundleIds;  // window title asked of the application, no address
    QStringList browserBundleIds;      // front tab's title and address asked of the browser
    QStringList activeTabBundleIds;    // browsers whose scripts say "active tab"
    QStringList currentTabBundleIds;   // browsers whose scripts say "current tab"
};

// The browsers by the identifiers of the platform the tracker was first written for.
const BrowserTable& builtInBrowserTable();

// The same browsers by their desktop-file IDs on Linux: distribution packages and Flatpaks.
const BrowserTable& linuxBrowserTable();

// Both tables in one, as the sampler uses them.
const BrowserTable& desktopBrowserTable();

}  // namespace kivo
