#include "info/geo/GeoBlobs.h"

#include "support/Support.h"

TEST(GeoBlobsTest, coordinatesAndAddressesComeBackUnchanged) {
    const std::vector<double> coordinates{
        0, -0.1, 13.40338, 180, -179.99999999999997, std::numeric_limits<double>::denorm_min()};
    EXPECT_EQ(GeoBlobs::decodeCoordinates(GeoBlobs::encodeCoordinates(coordinates)), coordinates);
    EXPECT_EQ(GeoBlobs::decodeCoordinates(GeoBlobs::encodeCoordinates({})), std::vector<double>());

    const PBDictionary address{
        {u"City"_s, u"Århus 東京 \U0001F600"_s},
        {u"FormattedAddressLines"_s, PBArray{u"a"_s, PBNull{}, 7ll, 1.5, true}},
        {u"Bytes"_s, QByteArray("\0\xff", 2)},
        {u"Inner"_s, PBDictionary{{u"Key"_s, PBNull{}}}},
        {QString(), u""_s}};
    EXPECT_EQ(GeoBlobs::decodeAddress(GeoBlobs::encodeAddress(address)), address);
}

TEST(GeoBlobsTest, singleValuesThatCannotBeReadAreSkipped) {
    // [1, "x", -2.5, null, tag 1(5)]: numbers stay where they are.
    const auto coordinates = GeoBlobs::decodeCoordinates(QByteArray::fromHex("8501617"
                                                                             "8f9c100f6c105"));
    ASSERT_TRUE(coordinates);
    ASSERT_EQ(coordinates->size(), 5u);
    EXPECT_EQ((*coordinates)[0], 1);
    EXPECT_EQ((*coordinates)[2], -2.5);
    for (const std::size_t index : {1u, 3u, 4u})
        EXPECT_TRUE(std::isnan((*coordinates)[index]));
    // {"a": undefined, 1: "b", "c": "d", "e": [undefined, 2], "f": a date}
    const auto address = GeoBlobs::decodeAddress(
        QByteArray::fromHex("a5"
                            "6161f7"
                            "016162"
                            "61636164"
                            "616582f702"
                            "6166c074323031332d30332d32315432303a30343a30305a"));
    EXPECT_EQ(address, (PBDictionary{{u"c"_s, u"d"_s}, {u"e"_s, PBArray{qint64{2}}}}));
    const PBDictionary unstorable{
        {u"Absent"_s, PBValue()}, {u"Date"_s, PBDate{3}}, {u"Place"_s, PBLocation{1, 2}}};
    EXPECT_EQ(GeoBlobs::decodeAddress(GeoBlobs::encodeAddress(unstorable)), PBDictionary());
}

TEST(GeoBlobsTest, bytesThatAreNoBlobAreRefused) {
    std::vector<QByteArray> junk{
        {},
        "bplist00",
        // Lengths beyond all memory.
        QByteArray::fromHex("9bffffffffffffffff"),
        QByteArray::fromHex("9b0fffffffffffffff"),
        QByteArray::fromHex("bb7fffffffffffffff"),
        QByteArray::fromHex("a15b7fffffffffffffff"),
        // Arrays within arrays, without end.
        QByteArray(200'000, '\x81'),
        QByteArray(200'000, '\x9f')};
    for (const char* hex : {"ff", "82fb40", "a1", "01", "6161", "9f", "61ff"})
        junk.push_back(QByteArray::fromHex(hex));
    for (const QByteArray& bytes : junk) {
        EXPECT_FALSE(GeoBlobs::decodeCoordinates(bytes)) << bytes.left(12).toHex().constData();
        EXPECT_FALSE(GeoBlobs::decodeAddress(bytes)) << bytes.left(12).toHex().constData();
    }
    EXPECT_FALSE(GeoBlobs::decodeAddress(GeoBlobs::encodeCoordinates(std::vector{1.0})));
    EXPECT_FALSE(GeoBlobs::decodeCoordinates(GeoBlobs::encodeAddress({})));
}

TEST(GeoBlobsTest, damagedBlobsNeverCrashTheDecoder) {
    const QByteArray good = GeoBlobs::encodeAddress(
        {{u"City"_s, u"Berlin"_s},
         {u"FormattedAddressLines"_s, PBArray{u"Mitte"_s, u"Berlin"_s, u"Germany"_s}}});
    std::mt19937 random(11);
    int readable = 0;
    for (int round = 0; round < 20'000; ++round) {
        QByteArray bytes =
            good.left(static_cast<qsizetype>(1 + random() % static_cast<unsigned>(good.size())));
        support::damage(bytes, random, 1 + random() % 3);
        readable += GeoBlobs::decodeAddress(bytes).has_value();
        readable += GeoBlobs::decodeCoordinates(bytes).has_value();
    }
    EXPECT_GT(readable, 0);
}
