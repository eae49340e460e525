#include "platform/PBValue.h"

#include "support/Support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(PBValueTest, absentNullAndValueStayApart) {
    const PBValue absent;
    const PBValue null{PBNull()};
    const PBValue empty{QString()};
    EXPECT_TRUE(absent.isAbsent());
    EXPECT_FALSE(absent.isNull());
    EXPECT_TRUE(null.isNull());
    EXPECT_FALSE(null.isAbsent());
    EXPECT_FALSE(null.hasValue());
    EXPECT_TRUE(empty.hasValue());
    EXPECT_FALSE(absent == null);
    EXPECT_FALSE(null == empty);
    EXPECT_TRUE(absent == PBValue());
}

TEST(PBValueTest, numbersCompareByValueAcrossStoredTypes) {
    EXPECT_EQ(PBValue(1), PBValue(1.0));
    EXPECT_EQ(PBValue(true), PBValue(qint64(1)));
    EXPECT_EQ(PBValue(0.5f), PBValue(0.5));
    EXPECT_FALSE(PBValue(std::numeric_limits<quint64>::max()) == PBValue(qint64(-1)));
    EXPECT_FALSE(PBValue(1) == PBValue(QStringLiteral("1")));
}

TEST(PBValueTest, numbersConvertWithinTheirRange) {
    EXPECT_EQ(PBValue(1e300).toInteger(), std::numeric_limits<qint64>::max());
    EXPECT_EQ(PBValue(-1e300).toInteger(), std::numeric_limits<qint64>::min());
    EXPECT_EQ(PBValue(std::nan("")).toInteger(), 0);
    EXPECT_EQ(
        PBValue(std::numeric_limits<quint64>::max()).toInteger(),
        std::numeric_limits<qint64>::max());
    EXPECT_EQ(PBValue(-2.9).toInteger(), -2);
    EXPECT_EQ(PBValue(QStringLiteral(" 12abc")).toInteger(), 12);
    EXPECT_EQ(PBValue(QStringLiteral("9007199254740993")).toInteger(), 9007199254740993);
    EXPECT_DOUBLE_EQ(PBValue(QStringLiteral("-1.5e2x")).toDouble(), -150.0);
    EXPECT_DOUBLE_EQ(PBValue(QStringLiteral("e5")).toDouble(), 0.0);
}

TEST(PBValueTest, textFormIsTheShortestThatReadsBack) {
    EXPECT_EQ(PBValue(0.1).toText(), QStringLiteral("0.1"));
    EXPECT_EQ(PBValue(0.1f).toText(), QStringLiteral("0.1"));
    EXPECT_EQ(PBValue(100.0).toText(), QStringLiteral("100"));
    EXPECT_EQ(PBValue(true).toText(), QStringLiteral("1"));
    EXPECT_EQ(PBValue(PBArray{2, 3, 0}).toText(), QStringLiteral("2,3,0"));
    EXPECT_EQ(PBValue(PBNull()).toText(), QString());
    EXPECT_EQ(PBValue(PBDate{0}).toText(), QStringLiteral("1970-01-01 00:00:00 +0000"));
}

TEST(PBValueTest, nestedValuesCompareByContent) {
    const PBDictionary inner{{QStringLiteral("City"), QStringLiteral("Bern")}};
    EXPECT_EQ(PBValue(PBArray{PBValue(inner)}), PBValue(PBArray{PBValue(inner)}));
    EXPECT_FALSE(PBValue(inner) == PBValue(PBDictionary{}));
}

} // namespace
