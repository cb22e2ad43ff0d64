#include "capture/sampling.h"

#include <gtest/gtest.h>

#include "capture/kivo_bundle_id.h"
#include "support/fake_desktop.h"
#include "support/manual_clock.h"

namespace kivo {
namespace {

const QString editorId = QStringLiteral("org.gnome.TextEditor");
const QString chromeId = QStringLiteral("com.google.Chrome");
const QString safariId = QStringLiteral("com.apple.Safari");
const QString miId = QStringLiteral("net.mimikaki.mi");

class TakeSample : public testing::Test {
protected:
    std::optional<CaptureData> sample() {
        return takeSample(desktop, clock, installed, builtInBrowserTable());
    }

    test::FakeDesktop desktop;
    test::ManualClock clock;
    QStringList installed{editorId,
                          chromeId,
                          safariId,
                          miId,
                          kivoBundleId.toString(),
                          QStringLiteral("org.blisk.Blisk")};
};

TEST_F(TakeSample, WindowTitleAndEmptyAddressOfAnOrdinaryApplication) {
    desktop.show(editorId, QStringLiteral("Text Editor"), QStringLiteral("notes.txt"));
    const auto taken = sample();
    ASSERT_TRUE(taken);
    EXPECT_EQ(*taken, (CaptureData{0.0, QStringLiteral("Text Editor"), editorId,
                                   QStringLiteral("notes.txt"), QString(), false, clock.now(),
                                   clock.now()}));
    EXPECT_TRUE(desktop.queries.empty());
}

TEST_F(TakeSample, RefusedWhenTheDesktopCannotTellOrTheApplicationIsNotTracked) {
    EXPECT_FALSE(sample()) << "nothing in front";
    desktop.show(editorId, QStringLiteral("Text Editor"), QStringLiteral("notes.txt"));
    desktop.windowTitle.reset();
    EXPECT_FALSE(sample()) << "no titled window";
    desktop.show(editorId, QStringLiteral("Text Editor"), QStringLiteral("notes.txt"));
    desktop.frontmost->bundleId.reset();
    EXPECT_FALSE(sample()) << "no identifier";
    desktop.show(editorId, QStringLiteral("Text Editor"), QStringLiteral("notes.txt"));
    desktop.frontmost->localizedName.reset();
    EXPECT_FALSE(sample()) << "no name";
    desktop.show(kivoBundleId.toString(), QStringLiteral("Kivo"), QStringLiteral("Kivo"));
    EXPECT_FALSE(sample()) << "Kivo itself";
    desktop.show(QStringLiteral("org.example.Tool"), QStringLiteral("Tool"), QStringLiteral("t"));
    EXPECT_FALSE(sample()) << "not installed";

    desktop.showTab(chromeId, QStringLiteral("Google Chrome"), QStringLiteral("News"),
                    QStringLiteral("https://news.example/"));
    desktop.windowTitle.reset();
    EXPECT_FALSE(sample()) << "a browser without window is not asked";
    EXPECT_TRUE(desktop.queries.empty());
    desktop.windowTitle = QStringLiteral("Google Chrome");
    desktop.tabTitle.reset();
    EXPECT_FALSE(sample()) << "title script failed";
    EXPECT_EQ(desktop.queries.size(), 1u) << "the address is not asked after a failed title";
    desktop.tabTitle = QStringLiteral("News");
    desktop.tabAddress.reset();
    EXPECT_FALSE(sample()) << "address script failed";
    desktop.show(miId, QStringLiteral("mi"), QStringLiteral("draft"));
    desktop.tabTitle.reset();
    EXPECT_FALSE(sample()) << "window title script failed";
}

TEST_F(TakeSample, BrowsersAnswerWithTheirFrontTabByTheirOwnScripts) {
    desktop.showTab(chromeId, QStringLiteral("Google Chrome"), QStringLiteral("News"),
                    QStringLiteral("https://news.example/"));
    const auto chrome = sample();
    ASSERT_TRUE(chrome);
    EXPECT_EQ(chrome->title, QStringLiteral("News"));
    EXPECT_EQ(chrome->url, QStringLiteral("https://news.example/"));
    ASSERT_EQ(desktop.queries.size(), 2u);
    const BrowserQuery& title = desktop.queries[0];
    const BrowserQuery& address = desktop.queries[1];
    EXPECT_EQ(title.bundleId, chromeId);
    EXPECT_EQ(title.appName, QStringLiteral("Google Chrome"));
    EXPECT_EQ(title.field, BrowserField::Title);
    EXPECT_EQ(title.script, tabTitleScript(QStringLiteral("Google Chrome"), TabWord::ActiveTab));
    EXPECT_EQ(address.field, BrowserField::Address);
    EXPECT_EQ(address.script,
              tabAddressScript(QStringLiteral("Google Chrome"), TabWord::ActiveTab));

    desktop.queries.clear();
    desktop.showTab(safariId, QStringLiteral("Safari"), QStringLiteral("News"),
                    QStringLiteral("https://news.example/"));
    ASSERT_TRUE(sample());
    ASSERT_EQ(desktop.queries.size(), 2u);
    EXPECT_EQ(desktop.queries[0].script,
              tabTitleScript(QStringLiteral("Safari"), TabWord::CurrentTab));
    EXPECT_EQ(desktop.queries[1].script,
              tabAddressScript(QStringLiteral("Safari"), TabWord::CurrentTab));

    desktop.queries.clear();
    desktop.showTab(QStringLiteral("org.blisk.Blisk"), QStringLiteral("Blisk"),
                    QStringLiteral("News"), QStringLiteral("https://news.example/"));
    ASSERT_TRUE(sample());
    EXPECT_EQ(desktop.queries.at(0).script,
              tabTitleScript(QStringLiteral("Blisk"), TabWord::ActiveTab));
}

TEST_F(TakeSample, ScriptTitleApplicationHasNoAddress) {
    desktop.show(miId, QStringLiteral("mi"), QStringLiteral("window"));
    desktop.tabTitle = QStringLiteral("draft.txt");
    const auto taken = sample();
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->title, QStringLiteral("draft.txt"));
    EXPECT_EQ(taken->url, QString());
    ASSERT_EQ(desktop.queries.size(), 1u);
    EXPECT_EQ(desktop.queries[0].script, windowTitleScript(QStringLiteral("mi")));
}

TEST_F(TakeSample, BrowserInNeitherTabListKeepsItsWindowTitle) {
    BrowserTable table = builtInBrowserTable();
    table.activeTabBundleIds.removeAll(chromeId);
    desktop.showTab(chromeId, QStringLiteral("Google Chrome"), QStringLiteral("News"),
                    QStringLiteral("https://news.example/"));
    const auto taken = takeSample(desktop, clock, installed, table);
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->title, QStringLiteral("Google Chrome"));
    EXPECT_EQ(taken->url, QString());
    EXPECT_TRUE(desktop.queries.empty());
}

TEST_F(TakeSample, DatedWhenTheScriptsHaveAnswered) {
    desktop.whileAnswering = [this](const BrowserQuery&) { clock.advance(0.25); };
    desktop.showTab(chromeId, QStringLiteral("Google Chrome"), QStringLiteral("News"),
                    QStringLiteral("https://news.example/"));
    const auto taken = sample();
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->createdAt, clock.now());
    EXPECT_EQ(taken->updatedAt, clock.now());
}

}  // namespace
}  // namespace kivo
