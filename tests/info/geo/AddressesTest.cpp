#include "info/geo/Addresses.h"

#include "support/Support.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace PBUtilities;

using Entries = std::vector<std::pair<const char*, PBValue>>;

PBValue address(const Entries& entries) {
    PBDictionary dictionary;
    for (const auto& [key, value] : entries) {
        dictionary.emplace(QString::fromLatin1(key), value);
    }
    return dictionary;
}

PBArray lines(const QStringList& texts) {
    return PBArray(texts.begin(), texts.end());
}

TEST(AddressesTest, textsNameThePlaceFromSmallToLarge) {
    const PBValue name = u"Pier 3"_qs;
    const PBValue quarter = u"Mitte"_qs;
    const PBValue city = u"Berlin"_qs;
    const PBValue sameState = u"BERLIN"_qs;
    const PBValue otherState = u"Land Berlin"_qs;
    const PBValue country = u"Germany"_qs;
    struct Row {
        PBValue address;
        QString shortText;
        QString longText;
    };
    const std::vector<Row> table{
        {address({}), {}, {}},
        {{}, {}, {}},
        {PBNull{}, {}, {}},
        {u"Berlin"_qs, {}, {}},
        {address({{"Name", name}, {"Country", country}}), u"Pier 3, Germany"_qs,
         u"Pier 3, Germany"_qs},
        {address({{"City", city}, {"State", sameState}, {"Country", country}, {"Name", name}}),
         u"Berlin, Germany"_qs, u"Berlin, Germany"_qs},
        {address(
             {{"SubLocality", quarter},
              {"City", city},
              {"State", otherState},
              {"Country", country}}),
         u"Mitte, Berlin, Land Berlin"_qs, u"Mitte, Berlin, Land Berlin"_qs},
        {address({{"City", city}, {"FormattedAddressLines", lines({u"Pier 3"_qs, u"Berlin"_qs})}}),
         u"Berlin"_qs, u"Pier 3, Berlin"_qs},
        // Entries of the wrong type, or with nothing in them.
        {address(
             {{"City", 7},
              {"State", PBNull{}},
              {"SubLocality", QString(u""_qs)},
              {"Country", country}}),
         u"Germany"_qs, u"Germany"_qs},
        {address({{"City", city}, {"FormattedAddressLines", PBArray{}}}), u"Berlin"_qs,
         u"Berlin"_qs},
        {address({{"City", city}, {"FormattedAddressLines", PBArray{PBNull{}, 3}}}), u"Berlin"_qs,
         u"Berlin"_qs},
        {address({{"City", city}, {"FormattedAddressLines", u"text"_qs}}), u"Berlin"_qs,
         u"Berlin"_qs}};
    for (const Row& row : table) {
        EXPECT_EQ(shortLocationStringForAddressDictionary(row.address), row.shortText);
        EXPECT_EQ(longLocationStringForAddressDictionary(row.address), row.longText);
        EXPECT_EQ(
            shortLocationStringForAddressDictionary(row.address).isNull(), row.shortText.isEmpty());
    }
}

TEST(AddressesTest, comparisonPutsWhatHasLessContentLater) {
    const QString key = u"LongLocation"_qs;
    const PBValue full = address({{"City", u"Berlin"_qs}});
    const PBValue textless = address({{"Latitude", 1.0}});
    const PBValue null = PBNull{};
    const PBValue absent;
    const std::vector<PBValue> ascending{full, textless, null, absent};
    for (std::size_t left = 0; left < ascending.size(); ++left) {
        for (std::size_t right = 0; right < ascending.size(); ++right) {
            const int expected = left < right ? -1 : left > right ? 1 : 0;
            EXPECT_EQ(compareAddressDictionary(ascending[left], ascending[right], key), expected);
            EXPECT_EQ(compareAddressDictionary(ascending[left], ascending[right]), expected);
            EXPECT_EQ(isEqualAddressDictionary(ascending[left], ascending[right]), left == right);
        }
    }
}

TEST(AddressesTest, placeGroupsOrderByTheLargestPartThatDiffers) {
    const auto place = [](const QString& country, const QString& state, const QString& city) {
        PBValue value = address({{"Country", country}, {"City", city}});
        if (state.isNull()) return value;
        return address({{"Country", country}, {"State", state}, {"City", city}});
    };
    const std::vector<PBValue> ascending{
        place(u"Austria"_qs, u"Wien"_qs, u"Zell"_qs),
        place(u"germany"_qs, u"Bavaria"_qs, u"Zorneding"_qs),
        place(u"Germany"_qs, u"Hesse"_qs, u"Kassel 2"_qs),
        place(u"Germany"_qs, u"Hesse"_qs, u"Kassel 10"_qs), place(u"Germany"_qs, {}, u"Aachen"_qs)};
    for (std::size_t left = 0; left < ascending.size(); ++left) {
        for (std::size_t right = 0; right < ascending.size(); ++right) {
            EXPECT_EQ(
                compareAddressDictionary(ascending[left], ascending[right]), left < right   ? -1
                                                                             : left > right ? 1
                                                                                            : 0)
                << left << " " << right;
        }
    }
    // The same long text is the same place, whatever else differs.
    const PBArray sameLines = lines({u"A"_qs, u"B"_qs});
    EXPECT_EQ(
        compareAddressDictionary(
            address({{"Country", u"X"_qs}, {"FormattedAddressLines", sameLines}}),
            address({{"Country", u"Y"_qs}, {"FormattedAddressLines", lines({u"a"_qs, u"b"_qs})}})),
        0);
    EXPECT_EQ(compareAddressDictionary(ascending[1], ascending[2], u"Country"_qs), 0);
    EXPECT_EQ(compareAddressDictionary(ascending[1], ascending[2], u"ShortLocation"_qs), 1);
}

} // namespace
