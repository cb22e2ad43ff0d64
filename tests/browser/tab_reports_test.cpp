#include "browser/tab_reports.h"

#include <gtest/gtest.h>

#include "support/manual_clock.h"

namespace kivo::test {
namespace {

using namespace Qt::StringLiterals;

constexpr std::int64_t chromiumPid = 100, firefoxPid = 200;

FocusedWindow windowOf(std::int64_t pid, const QString& title) {
    return {pid, u"chromium"_s, u"Chromium"_s, title};
}

// Renders an answer for comparison: the tab, or why there is none.
QString shown(const TabReports::Lookup& lookup) {
    if (!lookup.toAsk.empty()) {
        return u"ask"_s;
    }
    if (const auto* tab = std::get_if<BrowserTab>(&lookup.answer)) {
        return tab->title + u" | "_s + tab->address;
    }
    return std::holds_alternative<BrowserNotConnected>(lookup.answer) ? u"not connected"_s
                                                                      : u"cannot answer"_s;
}

class TabReportsTest : public testing::Test {
protected:
    void report(TabReports::ConnectionId connection, std::int64_t windowId, const QString& title,
                const QString& url, bool incognito = false) {
        reports.reported(connection, {windowId, title, url, incognito, clock.now()});
    }
    QString lookup(std::int64_t pid, const QString& title) {
        return shown(reports.lookup(windowOf(pid, title), clock.now()));
    }

    ManualClock clock;
    TabReports reports{{Seconds{30.0}, Seconds{60.0}}};
};

TEST_F(TabReportsTest, TheReportWhoseTitleTheWindowShowsAnswers) {
    reports.opened(1, chromiumPid);
    report(1, 7, u"News"_s, u"https://n.example/"_s);
    report(1, 8, u"News and weather"_s, u"https://w.example/"_s);
    report(1, 9, u"Bank"_s, u"https://bank.example/"_s, true);
    report(1, 10, u""_s, u"about:blank"_s);
    reports.opened(2, firefoxPid);
    report(2, 1, u"Mail"_s, u"https://mail.example/"_s);
    const struct {
        std::int64_t pid;
        const char* windowTitle;
        const char* expected;
    } cases[] = {
        {chromiumPid, "News - Chromium", "News | https://n.example/"},
        {chromiumPid, "News and weather - Chromium", "News and weather | https://w.example/"},
        {chromiumPid, "Bank - Chromium", "Private window | "},
        {chromiumPid, "Mail - Chromium", "ask"},  // another browser's tab
        {chromiumPid, "Downloads - Chromium", "ask"},
        {firefoxPid, "Mail — Mozilla Firefox", "Mail | https://mail.example/"},
        {0, "Mail — Mozilla Firefox", "Mail | https://mail.example/"},  // no pid: titles decide
        {300, "News - Chromium", "not connected"},
    };
    for (const auto& [pid, windowTitle, expected] : cases) {
        EXPECT_EQ(lookup(pid, QString::fromUtf8(windowTitle)), QString::fromUtf8(expected))
            << windowTitle;
    }
    // Of two windows on the same page, the later report wins.
    clock.advance(1.0);
    report(1, 11, u"News"_s, u"https://n.example/later"_s);
    EXPECT_EQ(lookup(chromiumPid, u"News - Chromium"_s), u"News | https://n.example/later"_s);
    reports.windowClosed(1, 11);
    EXPECT_EQ(lookup(chromiumPid, u"News - Chromium"_s), u"News | https://n.example/"_s);
}

TEST_F(TabReportsTest, AnAgedReportIsAskedAgainAndAFreshOneAnswers) {
    reports.opened(1, chromiumPid);
    report(1, 7, u"News"_s, u"https://n.example/"_s);
    clock.advance(30.0);
    EXPECT_EQ(lookup(chromiumPid, u"News - Chromium"_s), u"News | https://n.example/"_s);
    clock.advance(0.5);
    const auto aged = reports.lookup(windowOf(chromiumPid, u"News - Chromium"_s), clock.now());
    EXPECT_EQ(aged.toAsk, std::vector<TabReports::ConnectionId>{1});
    EXPECT_TRUE(std::holds_alternative<BrowserCannotAnswer>(aged.answer));
    report(1, 7, u"News"_s, u"https://n.example/"_s);
    EXPECT_EQ(lookup(chromiumPid, u"News - Chromium"_s), u"News | https://n.example/"_s);
}

TEST_F(TabReportsTest, ABrowserWhoseExtensionWentAwayCannotAnswerUntilTheGraceRunsOut) {
    EXPECT_EQ(lookup(chromiumPid, u"News - Chromium"_s), u"not connected"_s);
    reports.opened(1, chromiumPid);
    report(1, 7, u"News"_s, u"https://n.example/"_s);
    reports.closed(1, clock.now());
    EXPECT_EQ(lookup(chromiumPid, u"News - Chromium"_s), u"cannot answer"_s);
    EXPECT_EQ(lookup(firefoxPid, u"News - Firefox"_s), u"not connected"_s);
    // The extension comes back: its new connection starts with nothing reported.
    reports.opened(2, chromiumPid);
    EXPECT_EQ(lookup(chromiumPid, u"News - Chromium"_s), u"ask"_s);
    reports.closed(2, clock.now());
    clock.advance(60.0);
    EXPECT_EQ(lookup(chromiumPid, u"News - Chromium"_s), u"cannot answer"_s);
    clock.advance(0.5);
    EXPECT_EQ(lookup(chromiumPid, u"News - Chromium"_s), u"not connected"_s);
    // Reports on a connection that never said hello, or has closed, are not kept.
    report(2, 7, u"News"_s, u"https://n.example/"_s);
    EXPECT_EQ(lookup(chromiumPid, u"News - Chromium"_s), u"not connected"_s);
}

}  // namespace
}  // namespace kivo::test
