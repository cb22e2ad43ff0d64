#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <string_view>
#include <vector>

namespace kivo {

// Writes JSON text exactly as QJsonDocument::toJson(QJsonDocument::Indented) would, straight
// into one buffer: building the document first took most of a year report's JSON time. Like a
// QJsonObject, an object's keys must come in sorted order; the caller writes them so.
class JsonWriter {
public:
    void beginObject();
    void endObject();
    void beginArray();
    void endArray();

    // The key of the next value in the current object.
    JsonWriter& key(const char* name);  // plain ASCII, nothing to escape
    JsonWriter& key(const QString& name);

    void value(const QString& text);
    void value(std::int64_t number);
    void value(int number) { value(std::int64_t{number}); }
    void value(double number);
    void value(bool truth);

    // The text, ending with a line break as QJsonDocument's does.
    QByteArray finish();

private:
    void beginElement();
    void open(char bracket);
    void close(char bracket);

    QByteArray text_;
    std::vector<bool> hasElements_;  // per open container
    bool isAfterKey_ = false;
};

// `text` as a JSON string, quotes included, escaped as QJsonDocument escapes it.
void appendJsonString(QByteArray& out, const QString& text);

}  // namespace kivo
