#include "classify/filter_match.h"

#include <gtest/gtest.h>

#include "support/captured_diagnostics.h"

namespace kivo {
namespace {

const QString mailId = QStringLiteral("org.gnome.Evolution");

CaptureData captureOf(const QString& title, const QString& url = {}) {
    CaptureData capture;
    capture.name = QStringLiteral("Mail");
    capture.bundleId = mailId;
    capture.title = title;
    capture.url = url;
    return capture;
}

Filter filterFor(const QString& bundleId = mailId) {
    Filter filter;
    filter.appBundleId = bundleId;
    return filter;
}

TEST(MatchFilter, OnlyTheFiltersOwnApplicationQualifies) {
    CaptureData capture = captureOf(QStringLiteral("Inbox"));
    const CaptureData before = capture;
    EXPECT_FALSE(matchFilter(capture, filterFor(QStringLiteral("org.gnome.evolution"))));
    EXPECT_FALSE(matchFilter(capture, filterFor(QString())));
    EXPECT_EQ(capture, before);
    EXPECT_TRUE(matchFilter(capture, filterFor()));
}

TEST(MatchFilter, PlainKeywordIsACaseSensitiveSubstring) {
    Filter filter = filterFor();
    filter.matchExpressionOfTitle = QStringLiteral("Mail");
    CaptureData lower = captureOf(QStringLiteral("mail inbox"));
    CaptureData upper = captureOf(QStringLiteral("Inbox - Mail"));
    EXPECT_FALSE(matchFilter(lower, filter));
    EXPECT_TRUE(matchFilter(upper, filter));

    filter.matchExpressionOfTitle = QStringLiteral("^Inbox");
    EXPECT_FALSE(matchFilter(upper, filter)) << "a plain keyword is no pattern";
}

TEST(MatchFilter, EmptyExpressionsAcceptEveryCaptureOfTheApplication) {
    for (const std::int64_t logicalOperator : {0, 1, 7}) {
        Filter filter = filterFor();
        filter.logicalOperator = logicalOperator;
        CaptureData capture = captureOf(QString(), QStringLiteral("https://example.com/"));
        EXPECT_TRUE(matchFilter(capture, filter)) << logicalOperator;
    }
}

TEST(MatchFilter, EitherOperatorWithOneEmptySideAcceptsEverything) {
    Filter filter = filterFor();
    filter.logicalOperator = 1;
    filter.matchExpressionOfTitle = QStringLiteral("x");
    CaptureData capture = captureOf(QStringLiteral("no such letter"));
    EXPECT_TRUE(matchFilter(capture, filter));
}

TEST(MatchFilter, BothOperatorNeedsTitleAndAddress) {
    Filter filter = filterFor();
    filter.matchExpressionOfTitle = QStringLiteral("^Re:");
    filter.isTitleRegexOn = true;
    filter.matchExpressionOfUrl = QStringLiteral("example");
    const auto accepts = [&filter](const char16_t* title, const char16_t* url) {
        CaptureData capture = captureOf(QString::fromUtf16(title), QString::fromUtf16(url));
        return matchFilter(capture, filter);
    };
    EXPECT_TRUE(accepts(u"Re: lunch", u"https://example.com/inbox"));
    EXPECT_FALSE(accepts(u"Re: lunch", u"https://other.org/"));
    EXPECT_FALSE(accepts(u"Fwd: Re: lunch", u"https://example.com/inbox"));

    filter.logicalOperator = 1;
    EXPECT_TRUE(accepts(u"Re: lunch", u"https://other.org/"));
    EXPECT_TRUE(accepts(u"Fwd: Re: lunch", u"https://example.com/inbox"));
    EXPECT_FALSE(accepts(u"Fwd: Re: lunch", u"https://other.org/"));
}

TEST(MatchFilter, AcceptedCaptureCarriesTheCutTexts) {
    test::CapturedDiagnostics diagnostics;
    Filter filter = filterFor();
    filter.isPreprocessTitleOn = true;
    filter.regexOfPreprocessTitle = QStringLiteral("[^-]+");
    filter.isPreprocessUrlOn = true;
    filter.regexOfPreprocessUrl = QStringLiteral("^https://[^/]+");
    filter.matchExpressionOfUrl = QStringLiteral("mail.example.com$");
    filter.isUrlRegexOn = true;

    CaptureData capture = captureOf(QStringLiteral("Inbox - Work - Mail"),
                                    QStringLiteral("https://mail.example.com/u/0"));
    ASSERT_TRUE(matchFilter(capture, filter)) << "the condition sees the cut address";
    EXPECT_EQ(capture.title, QStringLiteral("Inbox "));
    EXPECT_EQ(capture.url, QStringLiteral("https://mail.example.com"));
    EXPECT_TRUE(diagnostics.lines().isEmpty());
}

TEST(MatchFilter, RejectedCaptureKeepsItsTextsEvenWhenCut) {
    Filter filter = filterFor();
    filter.isPreprocessTitleOn = true;
    filter.regexOfPreprocessTitle = QStringLiteral("[^-]+");
    filter.matchExpressionOfTitle = QStringLiteral("Work");
    CaptureData capture = captureOf(QStringLiteral("Inbox - Work - Mail"));
    const CaptureData before = capture;
    EXPECT_FALSE(matchFilter(capture, filter)) << "'Work' lies outside the cut title";
    EXPECT_EQ(capture, before);
}

TEST(MatchFilter, CutThatFindsNothingKeepsTheWholeTextAndNamesThePattern) {
    test::CapturedDiagnostics diagnostics;
    Filter filter = filterFor();
    filter.isPreprocessTitleOn = true;
    filter.regexOfPreprocessTitle = QStringLiteral("\\d+");
    filter.matchExpressionOfTitle = QStringLiteral("Inbox");
    CaptureData capture = captureOf(QStringLiteral("Inbox - Mail"));
    EXPECT_TRUE(matchFilter(capture, filter));
    EXPECT_EQ(capture.title, QStringLiteral("Inbox - Mail"));
    EXPECT_EQ(diagnostics.lines(), QStringList(QStringLiteral("正規表現エラー: \\d+")));
}

TEST(MatchFilter, InvalidCutPrintsTheFaultThenThePattern) {
    test::CapturedDiagnostics diagnostics;
    Filter filter = filterFor();
    filter.isPreprocessUrlOn = true;
    filter.regexOfPreprocessUrl = QStringLiteral("[a");
    CaptureData capture =
        captureOf(QStringLiteral("Inbox"), QStringLiteral("https://example.com/"));
    EXPECT_TRUE(matchFilter(capture, filter));
    EXPECT_EQ(capture.url, QStringLiteral("https://example.com/"));
    EXPECT_EQ(
        diagnostics.lines(),
        QStringList({QStringLiteral("正規表現エラー: U_REGEX_MISSING_CLOSE_BRACKET at offset 2 "
                                    "in the pattern \"[a\""),
                     QStringLiteral("正規表現エラー: [a")}));
}

TEST(MatchFilter, InvalidConditionIsFalseAndBothSidesReport) {
    test::CapturedDiagnostics diagnostics;
    Filter filter = filterFor();
    filter.matchExpressionOfTitle = QStringLiteral("(");
    filter.isTitleRegexOn = true;
    filter.matchExpressionOfUrl = QStringLiteral("(");
    filter.isUrlRegexOn = true;
    CaptureData capture = captureOf(QStringLiteral("("), QStringLiteral("("));
    EXPECT_FALSE(matchFilter(capture, filter));
    const QString line =
        QStringLiteral("正規表現エラー: U_REGEX_MISMATCHED_PAREN at offset 1 in the pattern \"(\"");
    EXPECT_EQ(diagnostics.lines(), QStringList({line, line}));

    filter.matchExpressionOfUrl.clear();
    filter.logicalOperator = 1;
    EXPECT_TRUE(matchFilter(capture, filter)) << "the empty side still holds";
}

}  // namespace
}  // namespace kivo
