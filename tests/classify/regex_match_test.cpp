#include "classify/regex_match.h"

#include <gtest/gtest.h>

#include "support/captured_diagnostics.h"

namespace kivo {
namespace {

std::optional<QString> match(const char16_t* pattern, const char16_t* text) {
    return firstRegexMatch(QString::fromUtf16(pattern), QString::fromUtf16(text));
}

TEST(FirstRegexMatch, AnswersTheFirstWholeMatch) {
    test::CapturedDiagnostics diagnostics;
    EXPECT_EQ(match(u"(\\d+)-(\\d+)", u"ab 12-34 cd 56-78"), QStringLiteral("12-34"));
    EXPECT_EQ(match(u"x*", u"abc"), QString());
    EXPECT_EQ(match(u"[^-]+", u"Inbox - Work - Mail"), QStringLiteral("Inbox "));
    EXPECT_EQ(match(u"Mail", u"mail inbox"), std::nullopt);
    EXPECT_TRUE(diagnostics.lines().isEmpty());
}

TEST(FirstRegexMatch, AnchorsAndDotStayWithinTheWholeTextAndItsLines) {
    EXPECT_EQ(match(u"^b", u"a\nb"), std::nullopt);
    EXPECT_EQ(match(u"a.b", u"a\nb"), std::nullopt);
    EXPECT_EQ(match(u"^a.c$", u"abc"), QStringLiteral("abc"));
}

TEST(FirstRegexMatch, OffsetsCountInUtf16OutsideTheBasicPlane) {
    EXPECT_EQ(match(u"😀+b", u"件名 😀😀b!"), QStringLiteral("😀😀b"));
    EXPECT_EQ(match(u"[^ ]+$", u"😀 メール"), QStringLiteral("メール"));
}

TEST(FirstRegexMatch, InvalidPatternPrintsItsFaultAtEveryUse) {
    test::CapturedDiagnostics diagnostics;
    EXPECT_EQ(match(u"(", u"("), std::nullopt);
    EXPECT_EQ(match(u"(", u"anything"), std::nullopt);
    const QString line =
        QStringLiteral("正規表現エラー: U_REGEX_MISMATCHED_PAREN at offset 1 in the pattern \"(\"");
    EXPECT_EQ(diagnostics.lines(), QStringList({line, line}));
}

TEST(FirstRegexMatch, RunawayBacktrackingGivesUpAndThePatternStaysUsable) {
    test::CapturedDiagnostics diagnostics;
    const QString runaway = QStringLiteral("(a+)+$");
    EXPECT_EQ(firstRegexMatch(runaway, QString(40, u'a') + u'!'), std::nullopt);
    EXPECT_EQ(diagnostics.lines(),
              QStringList(QStringLiteral(
                  "正規表現エラー: U_REGEX_TIME_OUT while matching the pattern \"(a+)+$\"")));
    EXPECT_EQ(firstRegexMatch(runaway, QStringLiteral("baaa")), QStringLiteral("aaa"));
    EXPECT_EQ(diagnostics.lines().size(), 1);
}

}  // namespace
}  // namespace kivo
