#include "cli/json_writer.h"

#include <QLocale>

namespace kivo {

namespace {

constexpr int indentWidth = 4;

char hexDigit(unsigned value) {
    return static_cast<char>(value < 10 ? '0' + value : 'a' + (value - 10));
}

void appendEscapedUnit(QByteArray& out, char16_t unit) {
    out += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) {
        out += hexDigit((unit >> shift) & 0xf);
    }
}

void appendUtf8(QByteArray& out, char32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xc0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3f));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xe0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3f));
        out += static_cast<char>(0x80 | (code & 0x3f));
    } else {
        out += static_cast<char>(0xf0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3f));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3f));
        out += static_cast<char>(0x80 | (code & 0x3f));
    }
}

void appendAscii(QByteArray& out, char16_t unit) {
    switch (unit) {
        case u'"':
            out += "\\\"";
            return;
        case u'\\':
            out += "\\\\";
            return;
        case u'\b':
            out += "\\b";
            return;
        case u'\f':
            out += "\\f";
            return;
        case u'\n':
            out += "\\n";
            return;
        case u'\r':
            out += "\\r";
            return;
        case u'\t':
            out += "\\t";
            return;
        default:
            if (unit < 0x20) {
                appendEscapedUnit(out, unit);
            } else {
                out += static_cast<char>(unit);
            }
    }
}

}  // namespace

void appendJsonString(QByteArray& out, const QString& text) {
    out += '"';
    const char16_t* unit = reinterpret_cast<const char16_t*>(text.utf16());
    const char16_t* const end = unit + text.size();
    for (; unit != end; ++unit) {
        if (*unit < 0x80) {
            appendAscii(out, *unit);
        } else if (QChar::isHighSurrogate(*unit) && unit + 1 != end &&
                   QChar::isLowSurrogate(unit[1])) {
            appendUtf8(out, QChar::surrogateToUcs4(unit[0], unit[1]));
            ++unit;
        } else if (QChar::isSurrogate(*unit)) {
            // A lone half of a pair has no UTF-8 form; it stays readable as an escape.
            appendEscapedUnit(out, *unit);
        } else {
            appendUtf8(out, *unit);
        }
    }
    out += '"';
}

void JsonWriter::beginObject() {
    open('{');
}

void JsonWriter::endObject() {
    close('}');
}

void JsonWriter::beginArray() {
    open('[');
}

void JsonWriter::endArray() {
    close(']');
}

JsonWriter& JsonWriter::key(const char* name) {
    beginElement();
    text_ += '"';
    text_ += name;
    text_ += "\": ";
    isAfterKey_ = true;
    return *this;
}

JsonWriter& JsonWriter::key(const QString& name) {
    beginElement();
    appendJsonString(text_, name);
    text_ += ": ";
    isAfterKey_ = true;
    return *this;
}

void JsonWriter::value(const QString& text) {
    beginElement();
    appendJsonString(text_, text);
}

void JsonWriter::value(std::int64_t number) {
    beginElement();
    text_ += QByteArray::number(static_cast<qint64>(number));
}

void JsonWriter::value(double number) {
    beginElement();
    text_ += qIsFinite(number) ? QByteArray::number(number, 'g', QLocale::FloatingPointShortest)
                               : QByteArray("null");
}

void JsonWriter::value(bool truth) {
    beginElement();
    text_ += truth ? "true" : "false";
}

QByteArray JsonWriter::finish() {
    text_ += '\n';
    return std::move(text_);
}

// An array's element or an object's key starts on its own line, after a comma from the one
// before; the value after a key follows it on the same line.
void JsonWriter::beginElement() {
    if (isAfterKey_) {
        isAfterKey_ = false;
        return;
    }
    if (hasElements_.empty()) {
        return;
    }
    if (hasElements_.back()) {
        text_ += ",\n";
    }
    hasElements_.back() = true;
    text_.append(static_cast<qsizetype>(hasElements_.size()) * indentWidth, ' ');
}

void JsonWriter::open(char bracket) {
    beginElement();
    text_ += bracket;
    text_ += '\n';
    hasElements_.push_back(false);
}

void JsonWriter::close(char bracket) {
    if (hasElements_.back()) {
        text_ += '\n';
    }
    hasElements_.pop_back();
    text_.append(static_cast<qsizetype>(hasElements_.size()) * indentWidth, ' ');
    text_ += bracket;
}

}  // namespace kivo
