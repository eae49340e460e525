#include "codec/metadata/TextDecoding.h"

#include "support/Support.h"

using codec::decodeComment;
using codec::decodeText;
using codec::decodeUtf16;

TEST(TextDecodingTest, bytesOfAnyOriginBecomeValidText) {
    const std::pair<QByteArray, QString> rows[] = {
        {"  Canon \0\0", u"Canon"_s},
        {"Gr\xC3\xBCn", u"Grün"_s},
        {"Gr\xFCn \x80 \x93q\x94", u"Grün € “q”"_s},
        {"cut \xE4\xBD\xA0\xE5\xA5", u"cut 你"_s},
        {QByteArray("first\0second", 12), u"first"_s},
        {"a\x01\x1B[31mb\tc\nd\x7F", u"a[31mb\tc\nd"_s},
        {"", QString()},
        {" \n ", QString()}};
    for (const auto& [bytes, text] : rows)
        EXPECT_EQ(decodeText(bytes), text) << bytes.toHex().toStdString();
    EXPECT_TRUE(decodeText("\xED\xA0\x80").isValidUtf16()) << "a surrogate is no UTF-8";
    EXPECT_LE(decodeText(QByteArray(10'000'000, 'x')).size(), 32768);
    EXPECT_EQ(decodeUtf16(QByteArray("\xFE\xFF\0a\xD8\x00\0b", 8), true), u"a\uFFFDb"_s);
}

TEST(TextDecodingTest, commentsAreReadInTheCharacterSetThatTheyName) {
    EXPECT_EQ(decodeComment(QByteArray("ASCII\0\0\0hello   \0\0", 18), true), u"hello"_s);
    EXPECT_EQ(decodeComment(QByteArray("UNICODE\0h\0i\0", 12), true), u"hi"_s);
    // In the other order than the file says, and not in UTF-16 at all.
    EXPECT_EQ(decodeComment(QByteArray("UNICODE\0h\0i\0", 12), false), u"hi"_s);
    EXPECT_EQ(decodeComment(QByteArray("UNICODE\0plain text", 18), true), u"plain text"_s);
    EXPECT_EQ(decodeComment(QByteArray("UNICODE\0eightlet", 16), true), u"eightlet"_s);
    EXPECT_EQ(decodeComment(QByteArray("UNICODE\0\x60\x4F\x7D\x59", 12), true), u"你好"_s);
    EXPECT_EQ(decodeComment(QByteArray("\0\0\0\0\0\0\0\0caf\xC3\xA9", 13), true), u"café"_s);
    EXPECT_EQ(decodeComment(QByteArray("ASCII\0\0\0", 8), true), QString());
    EXPECT_EQ(decodeComment(QByteArray("AS", 2), true), QString());
}
