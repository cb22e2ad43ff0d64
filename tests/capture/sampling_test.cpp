#include "capture/sampling.h"

#include <gtest/gtest.h>

#include "capture/kivo_bundle_id.h"
#include "support/fake_desktop.h"
#include "support/manual_clock.h"

namespace kivo::test {
namespace {

using namespace Qt::StringLiterals;

const QString miId = u"net.mimikaki.mi"_s, safariId = u"com.apple.Safari"_s;

TEST(BrowserTable, ListsKeepTheirMembersAndOrder) {
    const BrowserTable& table = builtInBrowserTable();
    const QStringList activeTab =
        u"com.google.Chrome com.microsoft.edgemac com.brave.Browser company.thebrowser.Browser "
        u"com.vivaldi.Vivaldi com.pushplaylabs.sidekick com.operasoftware.Opera org.blisk.Blisk"_s
            .split(u' ');
    EXPECT_EQ(table.scriptTitleBundleIds, QStringList(miId));
    EXPECT_EQ(table.activeTabBundleIds, activeTab);
    EXPECT_EQ(table.currentTabBundleIds, QStringList(safariId));
    EXPECT_EQ(table.browserBundleIds, QStringList(safariId) + activeTab);
}

TEST(BrowserTable, TheSamplerKnowsLinuxBrowsersAsActiveTabBrowsersBesideTheOriginalOnes) {
    const BrowserTable& table = desktopBrowserTable();
    // Debian packages, vendors' packages and Flatpaks of each browser the extension runs in.
    const QStringList linuxIds =
        u"chromium org.chromium.Chromium google-chrome com.google.Chrome microsoft-edge "
        u"com.microsoft.Edge brave-browser com.brave.Browser vivaldi-stable com.vivaldi.Vivaldi "
        u"opera com.opera.Opera firefox firefox-esr org.mozilla.firefox"_s.split(u' ');
    for (const QString& id : linuxIds) {
        EXPECT_TRUE(table.browserBundleIds.contains(id)) << id.toStdString();
        EXPECT_TRUE(table.activeTabBundleIds.contains(id)) << id.toStdString();
        EXPECT_FALSE(table.currentTabBundleIds.contains(id)) << id.toStdString();
    }
    for (const QString& id : builtInBrowserTable().browserBundleIds) {
        EXPECT_TRUE(table.browserBundleIds.contains(id)) << id.toStdString();
    }
    EXPECT_EQ(QStringList(table.browserBundleIds).removeDuplicates(), 0);
    EXPECT_EQ(table.currentTabBundleIds, QStringList(safariId));
    EXPECT_EQ(table.scriptTitleBundleIds, QStringList(miId));
}

class TakeSample : public testing::Test {
protected:
    std::optional<CaptureData> sample() {
        return takeSample(desktop.focus, desktop.tabs, clock, installed, desktopBrowserTable());
    }
    FakeDesktop desktop;
    ManualClock clock;
    QStringList installed{editorId, chromeId, miId, kivoBundleId.toString(), safariId};
};

TEST_F(TakeSample, WindowTitleOrTheBrowsersAnswer) {
    desktop.showEditor();
    EXPECT_EQ(sample(), (CaptureData{0.0, u"Text Editor"_s, editorId, u"notes.txt"_s, u""_s, false,
                                     clock.now(), clock.now()}));
    EXPECT_TRUE(desktop.tabs.asked.empty()) << "an ordinary application is not asked";
    for (const auto& [id, name] :
         {std::pair{chromeId, u"Google Chrome"_s}, std::pair{safariId, u"Safari"_s}}) {
        desktop.tabs.asked.clear();
        desktop.showTab(u"News"_s, u"https://n.example/"_s, id, name);
        clock.advance(1.0);
        EXPECT_EQ(sample(), (CaptureData{0.0, name, id, u"News"_s, u"https://n.example/"_s, false,
                                         clock.now(), clock.now()}));
        ASSERT_EQ(desktop.tabs.asked.size(), 1u);
        EXPECT_EQ(desktop.tabs.asked[0].bundleId, id) << "the focused window is the one asked";
        EXPECT_EQ(desktop.tabs.asked[0].title, name);
    }
    // An application whose window title is asked of it has no address.
    desktop.show(miId, u"mi"_s, u"window"_s);
    desktop.tabs.answer = BrowserTab{u"draft.txt"_s, u"file:///ignored"_s};
    EXPECT_EQ(sample(), (CaptureData{0.0, u"mi"_s, miId, u"draft.txt"_s, u""_s, false, clock.now(),
                                     clock.now()}));
}

TEST_F(TakeSample, RefusedWhenTheDesktopCannotTellOrTheApplicationIsNotTracked) {
    EXPECT_FALSE(sample()) << "nothing in front";
    for (const auto& [why, show] :
         {std::pair{"Kivo itself", std::function([this] {
                        desktop.show(kivoBundleId.toString(), u"Kivo"_s, u"K"_s);
                    })},
          std::pair{"not installed", std::function([this] {
                        desktop.show(u"org.example.Tool"_s, u"Tool"_s, u"t"_s);
                    })}}) {
        desktop.tabs.asked.clear();
        show();
        EXPECT_FALSE(sample()) << why;
        EXPECT_TRUE(desktop.tabs.asked.empty()) << why;
    }
}

TEST_F(TakeSample, BrowserThatCannotSayYetGivesItsWindowTitleWithoutAddress) {
    for (const auto& [id, name] :
         {std::pair{chromeId, u"Google Chrome"_s}, std::pair{miId, u"mi"_s}}) {
        desktop.show(id, name, u"News - "_s + name);
        desktop.tabs.answer = BrowserCannotAnswer{};
        EXPECT_EQ(sample(), (CaptureData{0.0, name, id, u"News - "_s + name, std::nullopt, false,
                                         clock.now(), clock.now()}))
            << id.toStdString();
    }
}

TEST_F(TakeSample, WithoutABridgeABrowserIsRecordedByItsWindowTitle) {
    installed.append(u"chromium"_s);
    // Flatpak Chrome shares its identifier with the original table; Debian's chromium is new.
    for (const auto& [id, name] :
         {std::pair{chromeId, u"Google Chrome"_s}, std::pair{u"chromium"_s, u"Chromium"_s},
          std::pair{miId, u"mi"_s}}) {
        desktop.show(id, name, u"News - "_s + name);
        desktop.tabs.answer = BrowserNotConnected{};
        desktop.tabs.asked.clear();
        EXPECT_EQ(sample(), (CaptureData{0.0, name, id, u"News - "_s + name, u""_s, false,
                                         clock.now(), clock.now()}))
            << id.toStdString();
        EXPECT_EQ(desktop.tabs.asked.size(), 1u) << id.toStdString();
    }
}

}  // namespace
}  // namespace kivo::test
