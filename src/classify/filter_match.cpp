#include "classify/filter_match.h"

#include "classify/regex_error.h"
#include "classify/regex_match.h"
#include "model/diagnostics.h"

namespace kivo {

namespace {

// The part of `text` that `pattern` finds. When it finds nothing the text stays whole and the
// pattern is named, so that a cut which never applies shows up in the output; a search that the
// budget stopped says nothing about the pattern.
QString cutDown(const QString& pattern, const QString& text, const MatchBudget* budget) {
    if (auto match = firstRegexMatch(pattern, text, budget)) {
        return *std::move(match);
    }
    if (budget == nullptr || !budget->isSpent()) {
        printDiagnostic(regexErrorLine(pattern));
    }
    return text;
}

// An empty expression asks for nothing and holds for every text.
bool conditionHolds(const QString& expression, bool isRegex, const QString& text,
                    const MatchBudget* budget) {
    if (expression.isEmpty()) {
        return true;
    }
    if (isRegex) {
        return firstRegexMatch(expression, text, budget).has_value();
    }
    return text.contains(expression, Qt::CaseSensitive);
}

}  // namespace

bool matchFilter(CaptureData& capture, const Filter& filter, const MatchBudget* budget) {
    if (filter.appBundleId != capture.bundleId) {
        return false;
    }
    QString title = capture.title.value_or(QString());
    QString url = capture.url.value_or(QString());
    if (filter.isPreprocessTitleOn) {
        title = cutDown(filter.regexOfPreprocessTitle, title, budget);
    }
    if (filter.isPreprocessUrlOn) {
        url = cutDown(filter.regexOfPreprocessUrl, url, budget);
    }
    // Both conditions are always evaluated, so that each reports its own faulty pattern.
    const bool titleHolds =
        conditionHolds(filter.matchExpressionOfTitle, filter.isTitleRegexOn, title, budget);
    const bool urlHolds =
        conditionHolds(filter.matchExpressionOfUrl, filter.isUrlRegexOn, url, budget);
    const bool isCutShort = budget != nullptr && budget->isSpent();
    const bool isAccepted = !isCutShort && (filter.logicalOperator == 0 ? titleHolds && urlHolds
                                                                        : titleHolds || urlHolds);
    if (isAccepted) {
        capture.title = std::move(title);
        capture.url = std::move(url);
    }
    return isAccepted;
}

}  // namespace kivo
