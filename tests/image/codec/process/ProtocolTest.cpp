#include "image/codec/process/Protocol.h"

#include "support/Support.h"

#include <QCborArray>
#include <QCborMap>
#include <QCborValue>

#include <gtest/gtest.h>

#include <limits>
#include <random>

using namespace codec::process;

namespace {

TEST(ProtocolTest, everyKindOfValueComesBack) {
    const QString key = QStringLiteral("k");
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
        PBArray{1, QStringLiteral("two"), PBNull(), PBArray{}},
        PBDictionary{{QStringLiteral("inner"), PBDictionary{{key, 2.5}}}},
    };
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
        QCborValue(1), QCborMap{{1, 2}}, QCborMap{{QStringLiteral("k"), deep}},
        QCborMap{{QStringLiteral("k"), QCborValue(QCborTag(1), 5)}}};
    for (const QCborValue& value : foreign)
        EXPECT_FALSE(decodeDictionary(value.toCbor()));

    // Whatever a process that was taken over sends, it ends in a dictionary or in nothing.
    const QByteArray good = encodeDictionary(
        {{QStringLiteral("a"), PBArray{1, 2.5, QStringLiteral("x")}},
         {QStringLiteral("b"), PBNull()}});
    std::mt19937 random(3);
    int refused = 0;
    for (int round = 0; round < 5000; ++round) {
        QByteArray bytes = good;
        for (int change = 0; change < 3; ++change) {
            bytes[static_cast<qsizetype>(random() % static_cast<unsigned>(bytes.size()))] =
                static_cast<char>(random());
        }
        if (!decodeDictionary(bytes.left(static_cast<qsizetype>(random() % 40)))) ++refused;
    }
    EXPECT_GT(refused, 1000);
}

} // namespace
