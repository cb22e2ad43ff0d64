#pragma once

#include <QString>

namespace kivo {

// The diagnostic line of a regular-expression fault: "正規表現エラー: " and what went wrong.
inline QString regexErrorLine(const QString& description) {
    return QStringLiteral("正規表現エラー: ") + description;
}

}  // namespace kivo
