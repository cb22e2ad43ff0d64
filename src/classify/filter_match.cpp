#include "classify/filter_match.h"

#include "classify/regex_error.h"
#include "classify/regex_match.h"
#include "model/diagnostics.h"

namespace kivo {

namespace {

// The part of `text` that `pattern` finds. When it finds nothing the text stays whole and the
// pattern is named, so that a cut which never applies shows up in the output.
QString cutDown(const QString& pattern, const QString& text) {
    if (auto match = firstRegexMatch(pattern, text)) {
        return *std::move(match);
    }
    printDiagnostic(regexErrorLine(pattern));
    return text;
}

// An empty expression asks for nothing and holds for every text.
bool conditionHolds(const QString& expression, bool isRegex, const QString& text) {
    if (expression.isEmpty()) {
        return true;
    }
    if (isRegex) {
        return firstRegexMatch(expression, text).has_value();
    }
    return text.contains(expression, Qt::CaseSensitive);
}

}  // namespace

bool matchFilter(CaptureData& capture, const Filter& filter) {
    if (filter.appBundleId != capture.bundleId) {
        return false;
    }
    QString title = capture.title.value_or(QString());
    QString url = capture.url.value_or(QString());
    if (filter.isPreprocessTitleOn) {
        title = cutDown(filter.regexOfPreprocessTitle, title);
    }
    if (filter.isPreprocessUrlOn) {
        url = cutDown(filter.regexOfPreprocessUrl, url);
    }
    // Both conditions are always evaluated, so that each reports its own faulty pattern.
    const bool titleHolds =
        conditionHolds(filter.matchExpressionOfTitle, filter.isTitleRegexOn, title);
    const bool urlHolds = conditionHolds(filter.matchExpressionOfUrl, filter.isUrlRegexOn, url);
    const bool isAccepted =
        filter.logicalOperator == 0 ? titleHolds && urlHolds : titleHolds || urlHolds;
    if (isAccepted) {
        capture.title = std::move(title);
        capture.url = std::move(url);
    }
    return isAccepted;
}

}  // namespace kivo
