#include "cli/json_writer.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace kivo {
namespace {

// Window titles and names can hold anything: every ASCII character, text beyond the Basic
// Multilingual Plane, and halves of surrogate pairs that lost their partner.
QString oddText() {
    QString text;
    for (char16_t unit = 0; unit < 0x80; ++unit) {
        text += QChar(unit);
    }
    text += u"é€日本";
    text += QString::fromUcs4(U"\U0001F600");
    text += QChar(0xD83D);  // a high half alone
    text += u"x";
    text += QChar(0xDE00);  // a low half alone
    return text;
}

// The same document written by Qt and by the writer, nested, with empty containers, numbers
// of every kind and odd texts, must come out byte for byte the same.
TEST(JsonWriter, WritesWhatQtWrites) {
    const QString odd = oddText();
    const QJsonObject inner{{u"empty"_qs, QJsonObject()}, {u"text"_qs, odd}};
    const QJsonArray list{1, u"two"_qs, QJsonArray(), inner, false};
    const QJsonObject document{
        {u"a"_qs, QJsonValue(qint64{-9'007'199'254'740'993})},
        {u"b"_qs, true},
        {u"c"_qs, 0.1},
        {u"d"_qs, 3.0},
        {u"e"_qs, 1e21},
        {u"f"_qs, -2.5e-7},
        {u"g"_qs, list},
        {u"h"_qs, QJsonArray()},
        {odd, 7},
    };

    JsonWriter json;
    json.beginObject();
    json.key(odd).value(7);  // first: it starts with the character 0
    json.key("a").value(std::int64_t{-9'007'199'254'740'993});
    json.key("b").value(true);
    json.key("c").value(0.1);
    json.key("d").value(3.0);
    json.key("e").value(1e21);
    json.key("f").value(-2.5e-7);
    json.key("g").beginArray();
    json.value(1);
    json.value(u"two"_qs);
    json.beginArray();
    json.endArray();
    json.beginObject();
    json.key("empty").beginObject();
    json.endObject();
    json.key("text").value(odd);
    json.endObject();
    json.value(false);
    json.endArray();
    json.key("h").beginArray();
    json.endArray();
    json.endObject();

    EXPECT_EQ(json.finish(), QJsonDocument(document).toJson(QJsonDocument::Indented));
}

}  // namespace
}  // namespace kivo
