#include "classify/regex_match.h"

#include <unicode/regex.h>

#include <QHashFunctions>
#include <memory>
#include <unordered_map>

#include "classify/regex_error.h"
#include "model/diagnostics.h"

namespace kivo {

namespace {

using SearchClock = MatchBudget::Clock;

// A pattern that backtracks without end gives up after this long instead of freezing the tick;
// once it has, it is known to be slow and gets much less.
constexpr std::chrono::milliseconds searchTimeLimit{10};
constexpr std::chrono::milliseconds slowPatternTimeLimit{1};

// Filters hold a few dozen patterns; the bound only stops a stream of distinct patterns (the
// filter editor checking each keystroke) from growing the cache without end.
constexpr std::size_t cacheCapacity = 4096;

const UChar* utf16Of(const QString& text) {
    return reinterpret_cast<const UChar*>(text.utf16());
}

struct CompiledPattern {
    std::unique_ptr<icu::RegexPattern> pattern;  // null when the text does not compile
    std::unique_ptr<icu::RegexMatcher> matcher;  // reused for every search with this pattern
    QString compileError;
    icu::UnicodeString input;          // aliases the text of the search in progress
    bool isSlow = false;               // has run out of its own time once
    SearchClock::time_point deadline;  // of the search in progress
};

// Called by ICU every few thousand steps of a search; a false answer stops it.
UBool U_CALLCONV isBeforeDeadline(const void* context, int32_t) {
    return SearchClock::now() < *static_cast<const SearchClock::time_point*>(context);
}

CompiledPattern compile(const QString& patternText) {
    CompiledPattern compiled;
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError{};
    const icu::UnicodeString source(utf16Of(patternText), static_cast<int32_t>(patternText.size()));
    compiled.pattern.reset(icu::RegexPattern::compile(source, 0, parseError, status));
    if (U_SUCCESS(status)) {
        compiled.matcher.reset(compiled.pattern->matcher(status));
    }
    if (U_FAILURE(status)) {
        compiled.matcher.reset();
        compiled.pattern.reset();
        compiled.compileError = QStringLiteral("%1 at offset %2 in the pattern \"%3\"")
                                    .arg(QLatin1StringView(u_errorName(status)))
                                    .arg(parseError.offset)
                                    .arg(patternText);
    }
    return compiled;
}

// Compiled once per pattern text; everything runs on the main thread, and a thread of its own
// would get its own cache.
CompiledPattern& compiledPattern(const QString& patternText) {
    thread_local std::unordered_map<QString, CompiledPattern> cache;
    const auto found = cache.find(patternText);
    if (found != cache.end()) {
        return found->second;
    }
    if (cache.size() >= cacheCapacity) {
        cache.clear();
    }
    return cache.emplace(patternText, compile(patternText)).first->second;
}

}  // namespace

std::optional<QString> firstRegexMatch(const QString& pattern, const QString& text,
                                       const MatchBudget* budget) {
    CompiledPattern& compiled = compiledPattern(pattern);
    if (!compiled.matcher) {
        printDiagnostic(regexErrorLine(compiled.compileError));
        return std::nullopt;
    }
    compiled.deadline =
        SearchClock::now() + (compiled.isSlow ? slowPatternTimeLimit : searchTimeLimit);
    const bool isCutByBudget = budget != nullptr && budget->deadline() < compiled.deadline;
    if (isCutByBudget) {
        compiled.deadline = budget->deadline();
    }
    compiled.input.setTo(false, utf16Of(text), static_cast<int32_t>(text.size()));
    icu::RegexMatcher& matcher = *compiled.matcher;
    matcher.reset(compiled.input);
    UErrorCode status = U_ZERO_ERROR;
    // Set at each search: the cache may have moved the pattern since the last one.
    matcher.setMatchCallback(isBeforeDeadline, &compiled.deadline, status);
    const bool found = U_SUCCESS(status) && matcher.find(status);
    if (status == U_REGEX_STOPPED_BY_CALLER) {
        // Running into the budget's end is not the pattern's fault.
        if (!isCutByBudget && !compiled.isSlow) {
            compiled.isSlow = true;
            printDiagnostic(regexErrorLine(
                QStringLiteral("the pattern \"%1\" ran out of time and counts as not matching; it "
                               "gets %2 ms a search from now on")
                    .arg(pattern)
                    .arg(slowPatternTimeLimit.count())));
        }
        return std::nullopt;
    }
    if (U_FAILURE(status)) {
        printDiagnostic(regexErrorLine(QStringLiteral("%1 while matching the pattern \"%2\"")
                                           .arg(QLatin1StringView(u_errorName(status)), pattern)));
        return std::nullopt;
    }
    if (!found) {
        return std::nullopt;
    }
    const int32_t start = matcher.start(status);
    const int32_t end = matcher.end(status);
    return text.mid(start, end - start);
}

bool isValidRegex(const QString& pattern) {
    return compiledPattern(pattern).pattern != nullptr;
}

}  // namespace kivo
