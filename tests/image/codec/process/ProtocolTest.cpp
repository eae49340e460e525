#include "image/codec/process/Protocol.h"

#include "support/Support.h"

#include <QCborArray>
#include <QCborMap>
#include <QCborValue>

using namespace codec::process;

TEST(ProtocolTest, everyKindOfValueComesBack) {
    const QString key = u"k"_s;
    const PBValue values[] = {
        PBValue(),
        PBNull(),
        true,
        false,
        std::numeric_limits<qint64>::min(),
        0.1,
        std::numeric_limits<double>::infinity(),
        QString::fromUtf8("ü\0😀"),
        QByteArray("\0\xff", 2),
        PBDate{-1.5},
        PBLocation{-90, 180},
        PBArray{1, u"two"_s, PBNull(), PBArray{}},
        PBDictionary{{u"inner"_s, PBDictionary{{key, 2.5}}}}};
    for (const PBValue& value : values) {
        SCOPED_TRACE(value.toText().toStdString());
        const auto decoded = decodeDictionary(encodeDictionary({{key, value}}));
        ASSERT_TRUE(decoded);
        EXPECT_EQ(decoded->at(key), value);
        EXPECT_EQ(decoded->at(key).isAbsent(), value.isAbsent());
        EXPECT_EQ(decoded->at(key).holds<bool>(), value.holds<bool>());
    }
}

TEST(ProtocolTest, foreignBytesAreRefused) {
    QCborValue deep = 1;
    for (int i = 0; i < 100; ++i)
        deep = QCborArray{deep};
    const QCborValue foreign[] = {
        QCborValue(1), QCborMap{{1, 2}}, QCborMap{{u"k"_s, deep}},
        QCborMap{{u"k"_s, QCborValue(QCborTag(1), 5)}}};
    for (const QCborValue& value : foreign)
        EXPECT_FALSE(decodeDictionary(value.toCbor()));

    // Whatever a process that was taken over sends, it ends in a dictionary or in nothing.
    const QByteArray good =
        encodeDictionary({{u"a"_s, PBArray{1, 2.5, u"x"_s}}, {u"b"_s, PBNull()}});
    std::mt19937 random(3);
    int refused = 0;
    for (int round = 0; round < 5000; ++round) {
        QByteArray bytes = good;
        support::damage(bytes, random, 3);
        if (!decodeDictionary(bytes.left(static_cast<qsizetype>(random() % 40)))) ++refused;
    }
    EXPECT_GT(refused, 1000);
}
