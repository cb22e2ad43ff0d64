#pragma once

#include <QByteArrayView>
#include <QString>
#include <functional>
#include <optional>

namespace kivo {

// Turns COMPOUND_TEXT bytes into text; nothing when they cannot be converted.
using CompoundTextDecoder = std::function<std::optional<QString>(QByteArrayView)>;

// The text of a window-title property whose type atom is named `typeName`: UTF8_STRING is UTF-8,
// STRING is Latin-1 and COMPOUND_TEXT goes to `decodeCompoundText`. The title ends at the first
// NUL (a property may hold a list). Nothing for any other type.
std::optional<QString> decodeWindowTitle(QByteArrayView typeName, QByteArrayView bytes,
                                         const CompoundTextDecoder& decodeCompoundText);

}  // namespace kivo
