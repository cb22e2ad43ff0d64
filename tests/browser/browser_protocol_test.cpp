#include "browser/browser_protocol.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QFile>
#include <QJsonDocument>
#include <cstring>

namespace kivo::test {
namespace {

using namespace Qt::StringLiterals;
namespace protocol = browser_protocol;

QByteArray rawFrame(std::uint32_t length, const QByteArray& body) {
    QByteArray bytes(protocol::lengthSize, Qt::Uninitialized);
    std::memcpy(bytes.data(), &length, protocol::lengthSize);
    return bytes + body;
}

// What the reader makes of `chunks`: each message's title, or "!" for a dropped frame.
QStringList readAll(const QList<QByteArray>& chunks) {
    protocol::FrameReader reader;
    QStringList seen;
    for (const QByteArray& chunk : chunks) {
        reader.append(chunk);
        for (auto next = reader.next(); !std::holds_alternative<protocol::NeedMoreBytes>(next);
             next = reader.next()) {
            if (const auto* message = std::get_if<QJsonObject>(&next)) {
                seen.append(message->value(u"title").toString());
            } else {
                seen.append(u"!"_s);
            }
        }
    }
    return seen;
}

QList<QByteArray> bytewise(const QByteArray& bytes) {
    QList<QByteArray> chunks;
    for (const char byte : bytes) {
        chunks.append(QByteArray(1, byte));
    }
    return chunks;
}

TEST(FrameReader, CutsTheStreamIntoMessagesWhateverPiecesItComesIn) {
    const QByteArray a = protocol::frame({{u"title"_s, u"A"_s}});
    const QByteArray b = protocol::frame({{u"title"_s, u"Bé"_s}});
    const QByteArray huge = rawFrame(protocol::maximumMessageSize + 1,
                                     QByteArray(protocol::maximumMessageSize + 1, 'x'));
    const struct {
        const char* why;
        QList<QByteArray> chunks;
        QStringList expected;
    } cases[] = {
        {"two frames at once", {a + b}, {u"A"_s, u"Bé"_s}},
        {"one byte at a time", bytewise(a + b), {u"A"_s, u"Bé"_s}},
        {"cut inside the length",
         {a.first(2), a.sliced(2) + b.first(7), b.sliced(7)},
         {u"A"_s, u"Bé"_s}},
        {"oversize frame skipped as it arrives",
         {a + huge.first(1000), huge.sliced(1000, 600'000), huge.sliced(601'000) + b},
         {u"A"_s, u"!"_s, u"Bé"_s}},
        {"oversize frame whole", {huge + b}, {u"!"_s, u"Bé"_s}},
        {"not JSON", {rawFrame(5, "{oops") + a}, {u"!"_s, u"A"_s}},
        {"JSON but not an object", {rawFrame(7, "[1,2,3]") + a}, {u"!"_s, u"A"_s}},
        {"empty frame", {rawFrame(0, {}) + a}, {u"!"_s, u"A"_s}},
        {"unfinished frame waits", {a + b.first(b.size() - 1)}, {u"A"_s}},
        {"largest allowed frame",
         {rawFrame(protocol::maximumMessageSize,
                   "{\"title\":\"" + QByteArray(protocol::maximumMessageSize - 12, 'y') + "\"}")},
         {QString(protocol::maximumMessageSize - 12, u'y')}},
    };
    for (const auto& [why, chunks, expected] : cases) {
        EXPECT_EQ(readAll(chunks), expected) << why;
    }
}

TEST(FrameReader, TheLengthIsInTheMachinesByteOrderAsBrowsersWriteIt) {
    const QByteArray bytes = protocol::frame({{u"type"_s, u"report"_s}});
    std::uint32_t length = 0;
    std::memcpy(&length, bytes.constData(), sizeof length);
    EXPECT_EQ(length, static_cast<std::uint32_t>(bytes.size() - 4));
    EXPECT_EQ(bytes.sliced(4), R"({"type":"report"})");
}

// The extension's ID is derived from the public key in its manifest; the host manifests name it.
TEST(Extension, ItsFixedKeyGivesTheIdTheHostAllows) {
    QFile file(QStringLiteral(KIVO_EXTENSION_DIR "/manifest.json"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QJsonObject manifest = QJsonDocument::fromJson(file.readAll()).object();
    const QByteArray key = QByteArray::fromBase64(manifest.value(u"key").toString().toLatin1());
    const QByteArray hash =
        QCryptographicHash::hash(key, QCryptographicHash::Sha256).toHex().first(32);
    QString id;
    for (const char digit : hash) {
        id.append(QChar(u'a' + QByteArray(1, digit).toInt(nullptr, 16)));
    }
    EXPECT_EQ(id, protocol::chromiumExtensionId);
    EXPECT_EQ(manifest.value(u"browser_specific_settings")[u"gecko"][u"id"].toString(),
              protocol::firefoxExtensionId);
}

}  // namespace
}  // namespace kivo::test
