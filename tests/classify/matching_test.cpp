#include <gtest/gtest.h>

#include "classify/filter_match.h"
#include "classify/regex_match.h"
#include "support/captured_diagnostics.h"

namespace kivo {
namespace {

using namespace Qt::StringLiterals;

const QString mailId = u"org.gnome.Evolution"_s;
const QString parenFault =
    u"正規表現エラー: U_REGEX_MISMATCHED_PAREN at offset 1 in the pattern \"(\""_s;

CaptureData captureOf(const QString& title, const QString& url = {}) {
    return {0.0, u"Mail"_s, mailId, title, url, false, {}, {}};
}

// A filter of the mail application; an empty cut is off.
Filter filterWith(const QString& title, bool isTitleRegex, const QString& url = {},
                  bool isUrlRegex = false, std::int64_t logicalOperator = 0,
                  const QString& titleCut = {}, const QString& urlCut = {}) {
    Filter filter;
    filter.appBundleId = mailId;
    filter.matchExpressionOfTitle = title;
    filter.isTitleRegexOn = isTitleRegex;
    filter.matchExpressionOfUrl = url;
    filter.isUrlRegexOn = isUrlRegex;
    filter.logicalOperator = logicalOperator;
    filter.isPreprocessTitleOn = !titleCut.isEmpty();
    filter.regexOfPreprocessTitle = titleCut;
    filter.isPreprocessUrlOn = !urlCut.isEmpty();
    filter.regexOfPreprocessUrl = urlCut;
    return filter;
}

bool accepts(const Filter& filter, const QString& title, const QString& url = {}) {
    CaptureData capture = captureOf(title, url);
    return matchFilter(capture, filter);
}

TEST(FirstRegexMatch, AnswersTheFirstWholeMatchWithinTheWholeTextAndATimeLimit) {
    test::CapturedDiagnostics diagnostics;
    const std::tuple<QString, QString, std::optional<QString>> cases[] = {
        {u"(\\d+)-(\\d+)"_s, u"ab 12-34 cd 56-78"_s, u"12-34"_s},
        {u"x*"_s, u"abc"_s, u""_s},
        {u"^b"_s, u"a\nb"_s, std::nullopt},  // anchors hold for the whole text, not its lines
        {u"a.b"_s, u"a\nb"_s, std::nullopt},
        {u"😀+b"_s, u"件名 😀😀b!"_s, u"😀😀b"_s},  // offsets count in UTF-16
    };
    for (const auto& [pattern, text, match] : cases) {
        EXPECT_EQ(firstRegexMatch(pattern, text), match) << pattern.toStdString();
    }
    EXPECT_TRUE(diagnostics.lines.isEmpty());
    // Runaway backtracking gives up, said once for the pattern; the pattern stays usable.
    for (int search = 0; search < 3; ++search) {
        EXPECT_EQ(firstRegexMatch(u"(a+)+$"_s, QString(40, u'a') + u'!'), std::nullopt);
    }
    EXPECT_EQ(firstRegexMatch(u"(a+)+$"_s, u"baaa"_s), u"aaa"_s);
    EXPECT_EQ(diagnostics.lines,
              QStringList(u"正規表現エラー: the pattern \"(a+)+$\" ran out of time and counts as "
                          u"not matching; it gets 1 ms a search from now on"_s));
}

TEST(MatchFilter, SpentBudgetStopsTheSearchAndRejectsWithoutBlamingThePattern) {
    test::CapturedDiagnostics diagnostics;
    const Filter slow = filterWith(u"(b+)+$"_s, true, {}, false, 0, u"(b+)+c"_s);
    CaptureData capture = captureOf(QString(40, u'b') + u'!');
    const MatchBudget spent(std::chrono::milliseconds(2));
    EXPECT_FALSE(matchFilter(capture, slow, &spent));
    EXPECT_TRUE(spent.isSpent());
    EXPECT_EQ(capture.title, QString(40, u'b') + u'!');
    EXPECT_TRUE(diagnostics.lines.isEmpty()) << diagnostics.lines.join(u'\n').toStdString();
    // With time left, an ordinary filter decides as always.
    const MatchBudget fresh;
    EXPECT_TRUE(matchFilter(capture, filterWith(u"b!"_s, false), &fresh));
}

TEST(MatchFilter, ConditionsAndTheirOperator) {
    // Title expression and whether it is a pattern, address keyword, operator (0 is AND, any other
    // value OR), the capture's title and address, accepted. An empty expression always holds.
    const std::tuple<QString, bool, QString, int, QString, QString, bool> cases[] = {
        {u"Mail"_s, false, {}, 0, u"mail inbox"_s, {}, false},  // keywords are case-sensitive
        {u"Mail"_s, false, {}, 0, u"Inbox - Mail"_s, {}, true},
        {u"^Inbox"_s, false, {}, 0, u"Inbox - Mail"_s, {}, false},  // a keyword is no pattern
        {{}, false, {}, 0, {}, u"x"_s, true},
        {u"x"_s, false, {}, 1, u"no such letter"_s, {}, true},
        {u"^Re:"_s, true, u"example"_s, 0, u"Re: lunch"_s, u"https://example.com/"_s, true},
        {u"^Re:"_s, true, u"example"_s, 0, u"Re: lunch"_s, u"https://other.org/"_s, false},
        {u"^Re:"_s, true, u"example"_s, 0, u"Fwd: Re: lunch"_s, u"https://example.com/"_s, false},
        {u"^Re:"_s, true, u"example"_s, 7, u"Fwd: Re: lunch"_s, u"https://example.com/"_s, true},
        {u"^Re:"_s, true, u"example"_s, 1, u"Fwd: Re: lunch"_s, u"https://other.org/"_s, false},
    };
    for (const auto& [title, isRegex, url, op, seenTitle, seenUrl, accepted] : cases) {
        const Filter filter = filterWith(title, isRegex, url, false, op);
        EXPECT_EQ(accepts(filter, seenTitle, seenUrl), accepted) << seenTitle.toStdString();
    }
}

TEST(MatchFilter, AcceptedCaptureCarriesTheCutTextsAndARejectedOneIsUntouched) {
    Filter filter =
        filterWith({}, false, u"mail.example.com$"_s, true, 0, u"[^-]+"_s, u"^https://[^/]+"_s);
    const CaptureData original =
        captureOf(u"Inbox - Work - Mail"_s, u"https://mail.example.com/u/0"_s);
    CaptureData capture = original;
    ASSERT_TRUE(matchFilter(capture, filter)) << "the condition sees the cut address";
    EXPECT_EQ(capture, captureOf(u"Inbox "_s, u"https://mail.example.com"_s));

    filter.matchExpressionOfTitle = u"Work"_s;
    capture = original;
    EXPECT_FALSE(matchFilter(capture, filter)) << "'Work' lies outside the cut title";
    EXPECT_EQ(capture, original);
}

TEST(MatchFilter, FaultyPatternsReportAndCutsThatFailKeepTheWholeText) {
    test::CapturedDiagnostics diagnostics;
    const Filter filter = filterWith(u"Inbox"_s, false, {}, false, 0, u"\\d+"_s, u"("_s);
    CaptureData capture = captureOf(u"Inbox - Mail"_s, u"https://example.com/"_s);
    EXPECT_TRUE(matchFilter(capture, filter));
    EXPECT_EQ(capture, captureOf(u"Inbox - Mail"_s, u"https://example.com/"_s));
    EXPECT_EQ(diagnostics.lines,
              QStringList({u"正規表現エラー: \\d+"_s, parenFault, u"正規表現エラー: ("_s}));

    // An invalid condition is false, both sides report, and an empty OR side still holds.
    diagnostics.lines.clear();
    EXPECT_FALSE(accepts(filterWith(u"("_s, true, u"("_s, true), u"("_s, u"("_s));
    EXPECT_EQ(diagnostics.lines, QStringList({parenFault, parenFault}));
    EXPECT_TRUE(accepts(filterWith(u"("_s, true, {}, false, 1), u"("_s));
}

}  // namespace
}  // namespace kivo
