#include "desktop/x11/window_title.h"

#include <gtest/gtest.h>

#include <QList>

namespace kivo {
namespace {

TEST(WindowTitleTest, DecodesEachPropertyTypeUpToTheFirstNul) {
    // COMPOUND_TEXT goes to the converter, which is faked here: it records and answers a marker.
    QList<QByteArray> converted;
    const auto decode = [&converted](QByteArrayView type, QByteArrayView bytes) {
        return decodeWindowTitle(type, bytes, [&converted](QByteArrayView text) {
            converted.append(text.toByteArray());
            return std::optional<QString>(QStringLiteral("converted"));
        });
    };
    const struct {
        const char* type;
        QByteArrayView bytes;
        std::optional<QString> title;
    } cases[] = {
        {"UTF8_STRING", "Caf\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac", QStringLiteral("Café 日本")},
        {"UTF8_STRING", QByteArrayView("first\0second", 12), QStringLiteral("first")},
        {"STRING", "Caf\xe9", QStringLiteral("Café")},
        {"COMPOUND_TEXT", QByteArrayView("\x1b$)B\xc6\xfc\0two", 10), QStringLiteral("converted")},
        {"CARDINAL", "abc", std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(decode(c.type, c.bytes), c.title) << c.type << " " << c.bytes.data();
    }
    EXPECT_EQ(converted, QList<QByteArray>{QByteArray("\x1b$)B\xc6\xfc")});
}

}  // namespace
}  // namespace kivo
