#include "platform/PBValue.h"

#include "support/Support.h"

TEST(PBValueTest, absentNullAndValueStayApart) {
    const PBValue null{PBNull()};
    EXPECT_TRUE(PBValue().isAbsent() && !PBValue().isNull());
    EXPECT_TRUE(null.isNull() && !null.isAbsent() && !null.hasValue());
    EXPECT_TRUE(PBValue(QString()).hasValue());
    EXPECT_FALSE(PBValue() == null || null == PBValue(QString()));
}

TEST(PBValueTest, numbersCompareByValueAcrossStoredTypes) {
    EXPECT_EQ(PBValue(1), PBValue(1.0));
    EXPECT_EQ(PBValue(true), PBValue(qint64(1)));
    EXPECT_EQ(PBValue(0.5f), PBValue(0.5));
    EXPECT_FALSE(PBValue(std::numeric_limits<quint64>::max()) == PBValue(qint64(-1)));
    EXPECT_FALSE(PBValue(1) == PBValue(u"1"_s));
}

TEST(PBValueTest, numbersConvertWithinTheirRange) {
    EXPECT_EQ(PBValue(1e300).toInteger(), std::numeric_limits<qint64>::max());
    EXPECT_EQ(PBValue(-1e300).toInteger(), std::numeric_limits<qint64>::min());
    EXPECT_EQ(PBValue(std::nan("")).toInteger(), 0);
    EXPECT_EQ(
        PBValue(std::numeric_limits<quint64>::max()).toInteger(),
        std::numeric_limits<qint64>::max());
    EXPECT_EQ(PBValue(-2.9).toInteger(), -2);
    EXPECT_EQ(PBValue(u" 12abc"_s).toInteger(), 12);
    EXPECT_EQ(PBValue(u"9007199254740993"_s).toInteger(), 9007199254740993);
    EXPECT_DOUBLE_EQ(PBValue(u"-1.5e2x"_s).toDouble(), -150.0);
    EXPECT_DOUBLE_EQ(PBValue(u"e5"_s).toDouble(), 0.0);
}

TEST(PBValueTest, textFormIsTheShortestThatReadsBack) {
    const std::pair<PBValue, const char*> cases[] = {
        {0.1, "0.1"},
        {0.1f, "0.1"},
        {100.0, "100"},
        {true, "1"},
        {PBArray{2, 3, 0}, "2,3,0"},
        {PBNull(), ""},
        {PBDate{0}, "1970-01-01 00:00:00 +0000"}};
    for (const auto& [value, text] : cases)
        EXPECT_EQ(value.toText(), QString::fromLatin1(text));
}
