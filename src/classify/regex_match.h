#pragma once

#include <QString>
#include <optional>

namespace kivo {

// The text of the first whole match of `pattern` in `text` (case-sensitive, `.` stops at line
// ends, `^` and `$` anchor to the whole text), or nothing when there is no match. A pattern that
// does not compile, or a search that runs out of time, prints one "正規表現エラー: " line and
// counts as no match.
std::optional<QString> firstRegexMatch(const QString& pattern, const QString& text);

}  // namespace kivo
