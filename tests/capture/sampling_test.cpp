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

class TakeSample : public testing::Test {
protected:
    std::optional<CaptureData> sample() {
        return takeSample(desktop, clock, installed, builtInBrowserTable());
    }
    FakeDesktop desktop;
    ManualClock clock;
    QStringList installed{editorId, chromeId, miId, kivoBundleId.toString(), safariId};
};

TEST_F(TakeSample, WindowTitleOrTheScriptsAnswersWrittenOutByteForByte) {
    desktop.showEditor();
    EXPECT_EQ(sample(), (CaptureData{0.0, u"Text Editor"_s, editorId, u"notes.txt"_s, u""_s, false,
                                     clock.now(), clock.now()}));
    EXPECT_TRUE(desktop.queries.empty()) << "an ordinary application is not asked";
    const QString tell =
        u"    tell application \"%1\"\n        set %2 of the %3 tab of the front window\n"
        u"    end tell\n    return %4"_s;
    const auto& asked = desktop.queries;
    for (const auto& [id, name, word] : {std::tuple{chromeId, u"Google Chrome"_s, u"active"_s},
                                         std::tuple{safariId, u"Safari"_s, u"current"_s}}) {
        desktop.queries.clear();
        desktop.showTab(u"News"_s, u"https://n.example/"_s, id, name);
        EXPECT_EQ(sample(), (CaptureData{0.0, name, id, u"News"_s, u"https://n.example/"_s, false,
                                         clock.now(), clock.now()}));
        ASSERT_EQ(asked.size(), 2u);
        EXPECT_EQ(asked[0].script, tell.arg(name, u"appTitle to the name", word, u"appTitle"));
        EXPECT_EQ(asked[1].script, tell.arg(name, u"appURL to the URL", word, u"appURL"));
        EXPECT_EQ(asked[1].field, BrowserField::Address);
        EXPECT_EQ(asked[1].bundleId, id);
    }
    // An application whose window title is asked by script has no address.
    desktop.queries.clear();
    desktop.show(miId, u"mi"_s, u"window"_s);
    desktop.tabTitle = u"draft.txt"_s;
    EXPECT_EQ(sample(), (CaptureData{0.0, u"mi"_s, miId, u"draft.txt"_s, u""_s, false, clock.now(),
                                     clock.now()}));
    EXPECT_EQ(asked.at(0).script,
              u"    tell application \"mi\"\n        set appTitle to get the name of the front "
              u"window\n    end tell\n    return appTitle"_s);
}

TEST_F(TakeSample, RefusedWhenTheDesktopCannotTellOrTheApplicationIsNotTracked) {
    EXPECT_FALSE(sample()) << "nothing in front";
    // Why a browser's sample is refused, and how many questions it was asked before.
    const std::tuple<const char*, std::size_t, std::function<void()>> refusals[] = {
        {"no titled window", 0, [this] { desktop.windowTitle.reset(); }},
        {"no identifier", 0, [this] { desktop.frontmost->bundleId.reset(); }},
        {"no name", 0, [this] { desktop.frontmost->localizedName.reset(); }},
        {"Kivo itself", 0, [this] { desktop.show(kivoBundleId.toString(), u"Kivo"_s, u"K"_s); }},
        {"not installed", 0, [this] { desktop.show(u"org.example.Tool"_s, u"Tool"_s, u"t"_s); }},
        {"title script failed", 1, [this] { desktop.tabTitle.reset(); }},
        {"address script failed", 2, [this] { desktop.tabAddress.reset(); }},
    };
    for (const auto& [why, questions, spoil] : refusals) {
        desktop.showTab(u"News"_s, u"https://n.example/"_s);
        desktop.queries.clear();
        spoil();
        EXPECT_FALSE(sample()) << why;
        EXPECT_EQ(desktop.queries.size(), questions) << why;
    }
    desktop.show(miId, u"mi"_s, u"draft"_s);
    desktop.tabTitle.reset();
    EXPECT_FALSE(sample()) << "window title script failed";
}

}  // namespace
}  // namespace kivo::test
