#include "ui/platform/window_title.h"

#include <gtest/gtest.h>

#include <QList>

namespace kivo {
namespace {

// Records what reaches the COMPOUND_TEXT converter and answers with a marker.
struct RecordingConverter {
    std::optional<QString> operator()(QByteArrayView bytes) {
        received->append(bytes.toByteArray());
        return QStringLiteral("converted");
    }
    QList<QByteArray>* received;
};

class WindowTitleTest : public ::testing::Test {
protected:
    std::optional<QString> decode(QByteArrayView type, QByteArrayView bytes) {
        return decodeWindowTitle(type, bytes, RecordingConverter{&converted_});
    }

    QList<QByteArray> converted_;
};

TEST_F(WindowTitleTest, Utf8StringIsUtf8) {
    EXPECT_EQ(decode("UTF8_STRING", "Caf\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac"),
              QStringLiteral("Café 日本"));
    EXPECT_EQ(decode("UTF8_STRING", ""), QString());
}

TEST_F(WindowTitleTest, StringIsLatin1) {
    EXPECT_EQ(decode("STRING", "Caf\xe9"), QStringLiteral("Café"));
}

TEST_F(WindowTitleTest, CompoundTextGoesToTheConverter) {
    EXPECT_EQ(decode("COMPOUND_TEXT", "\x1b$)B\xc6\xfc"), QStringLiteral("converted"));
    EXPECT_EQ(converted_, QList<QByteArray>{QByteArray("\x1b$)B\xc6\xfc")});
}

TEST_F(WindowTitleTest, TitleEndsAtTheFirstNul) {
    EXPECT_EQ(decode("UTF8_STRING", QByteArrayView("first\0second", 12)), QStringLiteral("first"));
    EXPECT_EQ(decode("COMPOUND_TEXT", QByteArrayView("one\0two", 7)), QStringLiteral("converted"));
    EXPECT_EQ(converted_, QList<QByteArray>{QByteArray("one")});
}

TEST_F(WindowTitleTest, OtherTypesHaveNoTitle) {
    EXPECT_FALSE(decode("CARDINAL", "abc"));
    EXPECT_FALSE(decode("", "abc"));
    EXPECT_TRUE(converted_.isEmpty());
}

}  // namespace
}  // namespace kivo
