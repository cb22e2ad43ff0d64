#pragma once

#include <QString>
#include <optional>

#include "classify/match_budget.h"

namespace kivo {

// The text of the first whole match of `pattern` in `text` (case-sensitive, `.` stops at line
// ends, `^` and `$` anchor to the whole text), or nothing when there is no match. A pattern that
// does not compile prints one "正規表現エラー: " line and counts as no match. A search that runs
// out of time counts as no match too: a pattern's own limit is 10 ms, and a pattern that has once
// run out of it (said in one line, once) is remembered and gets 1 ms a search from then on. With
// a `budget`, no search runs past the budget's end.
std::optional<QString> firstRegexMatch(const QString& pattern, const QString& text,
                                       const MatchBudget* budget = nullptr);

// Whether `pattern` compiles with the options that matching uses. Prints nothing: the filter
// editor asks on every keystroke and shows the answer itself.
bool isValidRegex(const QString& pattern);

}  // namespace kivo
