#include "capture/sampling.h"

#include <gtest/gtest.h>

#include "capture/kivo_bundle_id.h"
#include "support/fake_desktop.h"
#include "support/manual_clock.h"

namespace kivo {
namespace {

const QString editorId = QStringLiteral("org.gnome.TextEditor");
const QString chromeId = QStringLiteral("com.google.Chrome");
const QString miId = QStringLiteral("net.mimikaki.mi");

class TakeSample : public testing::Test {
protected:
    std::optional<CaptureData> sample(const BrowserTable& table = builtInBrowserTable()) {
        return takeSample(desktop, clock, installed, table);
    }

    void showEditor() {
        desktop.show(editorId, QStringLiteral("Text Editor"), QStringLiteral("notes.txt"));
    }

    void showTab(const QString& bundleId, const QString& name) {
        desktop.showTab(bundleId, name, QStringLiteral("News"),
                        QStringLiteral("https://n.example/"));
    }

    QStringList scriptsAsked() const {
        QStringList scripts;
        for (const BrowserQuery& query : desktop.queries) {
            scripts.append(query.script);
        }
        return scripts;
    }

    test::FakeDesktop desktop;
    test::ManualClock clock;
    QStringList installed{editorId,
                          chromeId,
                          miId,
                          kivoBundleId.toString(),
                          QStringLiteral("com.apple.Safari"),
                          QStringLiteral("org.blisk.Blisk")};
};

TEST_F(TakeSample, OrdinaryApplicationGivesItsWindowTitleAndAnEmptyAddress) {
    showEditor();
    EXPECT_EQ(sample(), (CaptureData{0.0, QStringLiteral("Text Editor"), editorId,
                                     QStringLiteral("notes.txt"), QString(), false, clock.now(),
                                     clock.now()}));
    EXPECT_TRUE(desktop.queries.empty());
}

TEST_F(TakeSample, RefusedWhenTheDesktopCannotTellOrTheApplicationIsNotTracked) {
    EXPECT_FALSE(sample()) << "nothing in front";
    showEditor();
    desktop.windowTitle.reset();
    EXPECT_FALSE(sample()) << "no titled window";
    showEditor();
    desktop.frontmost->bundleId.reset();
    EXPECT_FALSE(sample()) << "no identifier";
    showEditor();
    desktop.frontmost->localizedName.reset();
    EXPECT_FALSE(sample()) << "no name";
    desktop.show(kivoBundleId.toString(), QStringLiteral("Kivo"), QStringLiteral("Kivo"));
    EXPECT_FALSE(sample()) << "Kivo itself";
    desktop.show(QStringLiteral("org.example.Tool"), QStringLiteral("Tool"), QStringLiteral("t"));
    EXPECT_FALSE(sample()) << "not installed";

    showTab(chromeId, QStringLiteral("Google Chrome"));
    desktop.windowTitle.reset();
    EXPECT_FALSE(sample()) << "a browser without window";
    EXPECT_TRUE(desktop.queries.empty()) << "is not asked";
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
    desktop.whileAnswering = [this](const BrowserQuery&) { clock.advance(0.25); };
    showTab(chromeId, QStringLiteral("Google Chrome"));
    const auto chrome = sample();
    ASSERT_TRUE(chrome);
    EXPECT_EQ(chrome->title, QStringLiteral("News")) << "the tab's title, not the window's";
    EXPECT_EQ(chrome->url, QStringLiteral("https://n.example/"));
    EXPECT_EQ(chrome->createdAt, clock.now()) << "dated when the scripts have answered";
    EXPECT_EQ(chrome->updatedAt, clock.now());
    const QString chromeName = QStringLiteral("Google Chrome");
    EXPECT_EQ(scriptsAsked(), QStringList({tabTitleScript(chromeName, TabWord::ActiveTab),
                                           tabAddressScript(chromeName, TabWord::ActiveTab)}));
    EXPECT_EQ(desktop.queries[0].field, BrowserField::Title);
    EXPECT_EQ(desktop.queries[1].field, BrowserField::Address);
    EXPECT_EQ(desktop.queries[1].bundleId, chromeId);
    EXPECT_EQ(desktop.queries[1].appName, chromeName);

    desktop.queries.clear();
    showTab(QStringLiteral("com.apple.Safari"), QStringLiteral("Safari"));
    ASSERT_TRUE(sample());
    EXPECT_EQ(scriptsAsked(),
              QStringList({tabTitleScript(QStringLiteral("Safari"), TabWord::CurrentTab),
                           tabAddressScript(QStringLiteral("Safari"), TabWord::CurrentTab)}));

    desktop.queries.clear();
    showTab(QStringLiteral("org.blisk.Blisk"), QStringLiteral("Blisk"));
    ASSERT_TRUE(sample());
    EXPECT_EQ(scriptsAsked().at(0), tabTitleScript(QStringLiteral("Blisk"), TabWord::ActiveTab));
}

TEST_F(TakeSample, ScriptTitleApplicationAndUnlistedBrowserHaveNoAddress) {
    desktop.show(miId, QStringLiteral("mi"), QStringLiteral("window"));
    desktop.tabTitle = QStringLiteral("draft.txt");
    const auto mi = sample();
    ASSERT_TRUE(mi);
    EXPECT_EQ(mi->title, QStringLiteral("draft.txt"));
    EXPECT_EQ(mi->url, QString());
    EXPECT_EQ(scriptsAsked(), QStringList(windowTitleScript(QStringLiteral("mi"))));

    desktop.queries.clear();
    BrowserTable table = builtInBrowserTable();
    table.activeTabBundleIds.removeAll(chromeId);
    showTab(chromeId, QStringLiteral("Google Chrome"));
    const auto chrome = sample(table);
    ASSERT_TRUE(chrome);
    EXPECT_EQ(chrome->title, QStringLiteral("Google Chrome"));
    EXPECT_EQ(chrome->url, QString());
    EXPECT_TRUE(desktop.queries.empty());
}

}  // namespace
}  // namespace kivo
