#include "desktop/x11/window_title.h"

namespace kivo {

std::optional<QString> decodeWindowTitle(QByteArrayView typeName, QByteArrayView bytes,
                                         const CompoundTextDecoder& decodeCompoundText) {
    const qsizetype nul = bytes.indexOf('\0');
    const QByteArrayView first = nul < 0 ? bytes : bytes.first(nul);
    if (typeName == "UTF8_STRING") {
        return QString::fromUtf8(first);
    }
    if (typeName == "STRING") {
        return QString::fromLatin1(first);
    }
    if (typeName == "COMPOUND_TEXT") {
        return decodeCompoundText(first);
    }
    return std::nullopt;
}

}  // namespace kivo
