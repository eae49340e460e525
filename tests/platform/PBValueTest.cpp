#include "platform/values/PBValue.h"

#include "support/Support.h"

TEST(PBValueTest, absentNullAndValueStayApartAndNumbersCompareByValue) {
    const PBValue null{PBNull()};
    EXPECT_TRUE(PBValue().isAbsent() && !PBValue().isNull() && PBValue(QString()).hasValue());
    EXPECT_TRUE(null.isNull() && !null.isAbsent() && !null.hasValue());
    EXPECT_FALSE(PBValue() == null || null == PBValue(QString()));
    EXPECT_TRUE(PBValue(1) == PBValue(1.0) && PBValue(true) == PBValue(qint64(1)));
    EXPECT_FALSE(PBValue(std::numeric_limits<quint64>::max()) == PBValue(qint64(-1)));
    EXPECT_FALSE(PBValue(quint64(3)) == PBValue(4) || PBValue(4) == PBValue(quint64(3)));
    EXPECT_EQ(PBValue(quint64(3)), PBValue(3));
    EXPECT_FALSE(PBValue(1) == PBValue(u"1"_s));
    EXPECT_EQ(PBValue(PBArray{1, PBArray{2}}), PBValue(PBArray{1.0, PBArray{2}}));
    EXPECT_FALSE(PBValue(PBDictionary{{u"a"_s, 1}}) == PBValue(PBDictionary{{u"a"_s, 2}}));
    const PBDictionary dictionary{{u"a"_s, PBNull()}};
    EXPECT_TRUE(valueForKey(dictionary, u"a"_s).isNull());
    EXPECT_TRUE(valueForKey(dictionary, u"b"_s).isAbsent());
}

TEST(PBValueTest, numbersConvertWithinTheirRange) {
    constexpr qint64 most = std::numeric_limits<qint64>::max();
    using Whole = std::pair<PBValue, qint64>;
    for (const auto& [value, number] :
         {Whole(1e300, most), Whole(-1e300, -most - 1), Whole(std::nan(""), 0),
          Whole(std::numeric_limits<quint64>::max(), most), Whole(-2.9, -2), Whole(u" 12abc"_s, 12),
          Whole(u"9007199254740993"_s, 9007199254740993),
          Whole(9223372036854774784.0, 9223372036854774784), Whole(QByteArray("5"), 0)})
        EXPECT_EQ(value.toInteger(), number) << value.toText().toStdString();
    using Number = std::pair<PBValue, double>;
    for (const auto& [value, number] :
         {Number(u"-1.5e2x"_s, -150), Number(u"-1.5e+"_s, -1.5), Number(u".5."_s, 0.5),
          Number(u"e5"_s, 0), Number(PBDate{-2.5}, -2.5)})
        EXPECT_EQ(value.toDouble(), number) << value.toText().toStdString();
    EXPECT_EQ(PBValue(QByteArray("5")).toBytes() + PBValue(u"5"_s).toBytes(), "5");
}

TEST(PBValueTest, textFormIsTheShortestThatReadsBack) {
    using Row = std::pair<PBValue, const char*>;
    for (const auto& [value, text] :
         {Row(0.1, "0.1"), Row(0.1f, "0.1"), Row(100.0, "100"), Row(true, "1"), Row(1e16f, "1e+16"),
          Row(16777217.0, "16777217"), Row(QByteArray("ab"), "ab"),
          Row(PBLocation{1.5, -2}, "1.5,-2"), Row(PBArray{2, 3, 0}, "2,3,0"), Row(PBNull(), ""),
          Row(PBDictionary{{u"a"_s, 1}, {u"b"_s, u"x"_s}}, "a=1,b=x"),
          Row(PBDate{0}, "1970-01-01 00:00:00 +0000")})
        EXPECT_EQ(value.toText(), QString::fromLatin1(text));
}
