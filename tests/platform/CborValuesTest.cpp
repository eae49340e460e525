#include "platform/values/CborValues.h"

#include "support/Support.h"

#include <QCborArray>
#include <QCborMap>
#include <QCborValue>

using namespace platform;

TEST(CborValuesTest, everyKindOfValueComesBack) {
    const QString key = u"k"_s;
    for (const PBValue& value :
         {PBValue(), PBValue(PBNull()), PBValue(true), PBValue(false),
          PBValue(std::numeric_limits<qint64>::min()), PBValue(0.1),
          PBValue(std::numeric_limits<double>::infinity()), PBValue(QString::fromUtf8("ü\0😀")),
          PBValue(QByteArray("\0\xff", 2)), PBValue(PBDate{-1.5}), PBValue(PBLocation{-90, 180}),
          PBValue(PBArray{1, u"two"_s, PBNull(), PBArray{}}),
          PBValue(PBDictionary{{u"inner"_s, PBDictionary{{key, 2.5}}}})}) {
        SCOPED_TRACE(value.toText().toStdString());
        const auto decoded = decodeDictionary(encodeDictionary({{key, value}}));
        ASSERT_TRUE(decoded);
        EXPECT_EQ(decoded->at(key), value);
        EXPECT_EQ(decoded->at(key).isAbsent(), value.isAbsent());
        EXPECT_EQ(decoded->at(key).holds<bool>(), value.holds<bool>());
    }
}

TEST(CborValuesTest, foreignBytesAreRefused) {
    // Lengths beyond all memory; arrays within arrays, without end.
    for (const char* hex : {"9bffffffffffffffff", "bb7fffffffffffffff", "a15b7fffffffffffffff"})
        EXPECT_FALSE(decodeDictionary(QByteArray::fromHex(hex))) << hex;
    EXPECT_FALSE(decodeDictionary(QByteArray(200'000, '\x81')));
    QCborValue deep = 1;
    for (int level = 1; level <= 18; ++level) {
        deep = level % 2 == 0 ? QCborValue(QCborArray{deep}) : QCborMap{{u"k"_s, deep}};
        const QCborMap whole{{u"k"_s, deep}};
        EXPECT_EQ(decodeDictionary(QCborValue(whole).toCbor()).has_value(), level <= 16) << level;
    }
    const auto tagged = [](auto tag, const QCborValue& value) {
        return QCborValue(QCborMap{{u"k"_s, QCborValue(QCborTag(tag), value)}});
    };
    for (const QCborValue& value :
         {QCborValue(1), QCborValue(QCborMap{{1, 2}}), tagged(1, 5), tagged(80001, u"today"_s),
          tagged(80002, QCborArray{1.0}), tagged(80003, QCborArray{1.0, 2.0})})
        EXPECT_FALSE(decodeDictionary(value.toCbor()));
}
