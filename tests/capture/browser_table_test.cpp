#include "capture/browser_table.h"

#include <gtest/gtest.h>

namespace kivo {
namespace {

QStringList listOf(std::initializer_list<const char16_t*> ids) {
    QStringList list;
    for (const char16_t* id : ids) {
        list.append(QString::fromUtf16(id));
    }
    return list;
}

TEST(BrowserTable, ListsKeepTheirMembersAndOrder) {
    const BrowserTable& table = builtInBrowserTable();
    EXPECT_EQ(table.scriptTitleBundleIds, listOf({u"net.mimikaki.mi"}));
    const QStringList activeTab =
        listOf({u"com.google.Chrome", u"com.microsoft.edgemac", u"com.brave.Browser",
                u"company.thebrowser.Browser", u"com.vivaldi.Vivaldi", u"com.pushplaylabs.sidekick",
                u"com.operasoftware.Opera", u"org.blisk.Blisk"});
    EXPECT_EQ(table.activeTabBundleIds, activeTab);
    EXPECT_EQ(table.currentTabBundleIds, listOf({u"com.apple.Safari"}));
    EXPECT_EQ(table.browserBundleIds, listOf({u"com.apple.Safari"}) + activeTab);
}

TEST(BrowserTable, ScriptTextsByteForByte) {
    const QString chrome = QStringLiteral("Google Chrome");
    EXPECT_EQ(tabTitleScript(chrome, TabWord::ActiveTab).toUtf8(),
              "    tell application \"Google Chrome\"\n"
              "        set appTitle to the name of the active tab of the front window\n"
              "    end tell\n"
              "    return appTitle");
    EXPECT_EQ(tabAddressScript(chrome, TabWord::ActiveTab).toUtf8(),
              "    tell application \"Google Chrome\"\n"
              "        set appURL to the URL of the active tab of the front window\n"
              "    end tell\n"
              "    return appURL");
    EXPECT_EQ(tabTitleScript(QStringLiteral("Safari"), TabWord::CurrentTab).toUtf8(),
              "    tell application \"Safari\"\n"
              "        set appTitle to the name of the current tab of the front window\n"
              "    end tell\n"
              "    return appTitle");
    EXPECT_EQ(tabAddressScript(QStringLiteral("Safari"), TabWord::CurrentTab).toUtf8(),
              "    tell application \"Safari\"\n"
              "        set appURL to the URL of the current tab of the front window\n"
              "    end tell\n"
              "    return appURL");
    EXPECT_EQ(windowTitleScript(QStringLiteral("mi")).toUtf8(),
              "    tell application \"mi\"\n"
              "        set appTitle to get the name of the front window\n"
              "    end tell\n"
              "    return appTitle");
}

}  // namespace
}  // namespace kivo
