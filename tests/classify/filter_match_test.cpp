#include "classify/filter_match.h"

#include <gtest/gtest.h>

#include "support/captured_diagnostics.h"

namespace kivo {
namespace {

const QString mailId = QStringLiteral("org.gnome.Evolution");
const QString parenFault =
    QStringLiteral("正規表現エラー: U_REGEX_MISMATCHED_PAREN at offset 1 in the pattern \"(\"");

CaptureData captureOf(const char16_t* title, const char16_t* url = u"") {
    return {0.0,
            QStringLiteral("Mail"),
            mailId,
            QString::fromUtf16(title),
            QString::fromUtf16(url),
            false,
            {},
            {}};
}

Filter filterWith(const char16_t* title, bool isTitleRegex, const char16_t* url, bool isUrlRegex,
                  std::int64_t logicalOperator = 0) {
    Filter filter;
    filter.appBundleId = mailId;
    filter.matchExpressionOfTitle = QString::fromUtf16(title);
    filter.isTitleRegexOn = isTitleRegex;
    filter.matchExpressionOfUrl = QString::fromUtf16(url);
    filter.isUrlRegexOn = isUrlRegex;
    filter.logicalOperator = logicalOperator;
    return filter;
}

bool accepts(const Filter& filter, const char16_t* title, const char16_t* url = u"") {
    CaptureData capture = captureOf(title, url);
    return matchFilter(capture, filter);
}

TEST(MatchFilter, OnlyTheFiltersOwnApplicationQualifies) {
    Filter filter = filterWith(u"", false, u"", false);
    EXPECT_TRUE(accepts(filter, u"Inbox"));
    filter.appBundleId = QStringLiteral("org.gnome.evolution");
    EXPECT_FALSE(accepts(filter, u"Inbox"));
    filter.appBundleId.clear();
    EXPECT_FALSE(accepts(filter, u"Inbox"));
}

TEST(MatchFilter, ConditionsAndTheirOperator) {
    EXPECT_FALSE(accepts(filterWith(u"Mail", false, u"", false), u"mail inbox"));
    EXPECT_TRUE(accepts(filterWith(u"Mail", false, u"", false), u"Inbox - Mail"));
    EXPECT_FALSE(accepts(filterWith(u"^Inbox", false, u"", false), u"Inbox - Mail"));
    for (const std::int64_t logicalOperator : {0, 1, 7}) {
        EXPECT_TRUE(accepts(filterWith(u"", false, u"", false, logicalOperator), u"", u"x"));
    }
    EXPECT_TRUE(accepts(filterWith(u"x", false, u"", false, 1), u"no such letter"));

    const Filter both = filterWith(u"^Re:", true, u"example", false, 0);
    EXPECT_TRUE(accepts(both, u"Re: lunch", u"https://example.com/"));
    EXPECT_FALSE(accepts(both, u"Re: lunch", u"https://other.org/"));
    EXPECT_FALSE(accepts(both, u"Fwd: Re: lunch", u"https://example.com/"));
    const Filter either = filterWith(u"^Re:", true, u"example", false, 1);
    EXPECT_TRUE(accepts(either, u"Fwd: Re: lunch", u"https://example.com/"));
    EXPECT_FALSE(accepts(either, u"Fwd: Re: lunch", u"https://other.org/"));
}

TEST(MatchFilter, AcceptedCaptureCarriesTheCutTextsAndARejectedOneIsUntouched) {
    Filter filter = filterWith(u"", false, u"mail.example.com$", true);
    filter.isPreprocessTitleOn = true;
    filter.regexOfPreprocessTitle = QStringLiteral("[^-]+");
    filter.isPreprocessUrlOn = true;
    filter.regexOfPreprocessUrl = QStringLiteral("^https://[^/]+");
    CaptureData capture = captureOf(u"Inbox - Work - Mail", u"https://mail.example.com/u/0");
    ASSERT_TRUE(matchFilter(capture, filter)) << "the condition sees the cut address";
    EXPECT_EQ(capture.title, QStringLiteral("Inbox "));
    EXPECT_EQ(capture.url, QStringLiteral("https://mail.example.com"));

    filter.matchExpressionOfTitle = QStringLiteral("Work");
    CaptureData rejected = captureOf(u"Inbox - Work - Mail", u"https://mail.example.com/u/0");
    EXPECT_FALSE(matchFilter(rejected, filter)) << "'Work' lies outside the cut title";
    EXPECT_EQ(rejected, captureOf(u"Inbox - Work - Mail", u"https://mail.example.com/u/0"));
}

TEST(MatchFilter, CutThatFindsNothingOrDoesNotCompileKeepsTheWholeText) {
    test::CapturedDiagnostics diagnostics;
    Filter filter = filterWith(u"Inbox", false, u"", false);
    filter.isPreprocessTitleOn = true;
    filter.regexOfPreprocessTitle = QStringLiteral("\\d+");
    filter.isPreprocessUrlOn = true;
    filter.regexOfPreprocessUrl = QStringLiteral("(");
    CaptureData capture = captureOf(u"Inbox - Mail", u"https://example.com/");
    EXPECT_TRUE(matchFilter(capture, filter));
    EXPECT_EQ(capture, captureOf(u"Inbox - Mail", u"https://example.com/"));
    EXPECT_EQ(diagnostics.lines(), QStringList({QStringLiteral("正規表現エラー: \\d+"), parenFault,
                                                QStringLiteral("正規表現エラー: (")}));
}

TEST(MatchFilter, InvalidConditionIsFalseAndBothSidesReport) {
    test::CapturedDiagnostics diagnostics;
    EXPECT_FALSE(accepts(filterWith(u"(", true, u"(", true), u"(", u"("));
    EXPECT_EQ(diagnostics.lines(), QStringList({parenFault, parenFault}));
    EXPECT_TRUE(accepts(filterWith(u"(", true, u"", false, 1), u"(")) << "the empty side holds";
}

}  // namespace
}  // namespace kivo
