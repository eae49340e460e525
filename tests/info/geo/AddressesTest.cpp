#include "info/geo/Addresses.h"

#include "support/Support.h"

namespace {

using namespace PBUtilities;

using Entries = std::vector<std::pair<const char*, PBValue>>;

PBValue address(const Entries& entries) {
    PBDictionary dictionary;
    for (const auto& [key, value] : entries)
        dictionary.emplace(QString::fromLatin1(key), value);
    return dictionary;
}

PBArray lines(const QStringList& texts) {
    return PBArray(texts.begin(), texts.end());
}

TEST(AddressesTest, textsNameThePlaceFromSmallToLarge) {
    const PBValue name = u"Pier 3"_s;
    const PBValue quarter = u"Mitte"_s;
    const PBValue city = u"Berlin"_s;
    const PBValue sameState = u"BERLIN"_s;
    const PBValue otherState = u"Land Berlin"_s;
    const PBValue country = u"Germany"_s;
    const std::tuple<PBValue, QString, QString> table[] = {
        {address({}), {}, {}},
        {{}, {}, {}},
        {PBNull{}, {}, {}},
        {u"Berlin"_s, {}, {}},
        {address({{"Name", name}, {"Country", country}}), u"Pier 3, Germany"_s,
         u"Pier 3, Germany"_s},
        {address({{"City", city}, {"State", sameState}, {"Country", country}, {"Name", name}}),
         u"Berlin, Germany"_s, u"Berlin, Germany"_s},
        {address(
             {{"SubLocality", quarter},
              {"City", city},
              {"State", otherState},
              {"Country", country}}),
         u"Mitte, Berlin, Land Berlin"_s, u"Mitte, Berlin, Land Berlin"_s},
        {address({{"City", city}, {"FormattedAddressLines", lines({u"Pier 3"_s, u"Berlin"_s})}}),
         u"Berlin"_s, u"Pier 3, Berlin"_s},
        // Entries of the wrong type, or with nothing in them.
        {address(
             {{"City", 7},
              {"State", PBNull{}},
              {"SubLocality", QString(u""_s)},
              {"Country", country}}),
         u"Germany"_s, u"Germany"_s},
        {address({{"City", city}, {"FormattedAddressLines", PBArray{}}}), u"Berlin"_s, u"Berlin"_s},
        {address({{"City", city}, {"FormattedAddressLines", PBArray{PBNull{}, 3}}}), u"Berlin"_s,
         u"Berlin"_s},
        {address({{"City", city}, {"FormattedAddressLines", u"text"_s}}), u"Berlin"_s,
         u"Berlin"_s}};
    for (const auto& [address, shortText, longText] : table) {
        EXPECT_EQ(shortLocationStringForAddressDictionary(address), shortText);
        EXPECT_EQ(longLocationStringForAddressDictionary(address), longText);
        EXPECT_EQ(shortLocationStringForAddressDictionary(address).isNull(), shortText.isEmpty());
    }
}

TEST(AddressesTest, comparisonPutsWhatHasLessContentLater) {
    const QString key = u"LongLocation"_s;
    const PBValue full = address({{"City", u"Berlin"_s}});
    const PBValue textless = address({{"Latitude", 1.0}});
    const PBValue null = PBNull{};
    const PBValue absent;
    const std::vector<PBValue> ascending{full, textless, null, absent};
    support::expectAscending(ascending, [&](const PBValue& left, const PBValue& right) {
        const auto order = compareAddressDictionary(left, right);
        EXPECT_EQ(compareAddressDictionary(left, right, key), order);
        EXPECT_EQ(isEqualAddressDictionary(left, right), order == 0);
        return order;
    });
}

TEST(AddressesTest, placeGroupsOrderByTheLargestPartThatDiffers) {
    const auto place = [](const QString& country, const QString& state, const QString& city) {
        return state.isNull() ? address({{"Country", country}, {"City", city}})
                              : address({{"Country", country}, {"State", state}, {"City", city}});
    };
    const std::vector<PBValue> ascending{
        place(u"Austria"_s, u"Wien"_s, u"Zell"_s),
        place(u"germany"_s, u"Bavaria"_s, u"Zorneding"_s),
        place(u"Germany"_s, u"Hesse"_s, u"Kassel 2"_s),
        place(u"Germany"_s, u"Hesse"_s, u"Kassel 10"_s), place(u"Germany"_s, {}, u"Aachen"_s)};
    support::expectAscending(ascending, [](const PBValue& left, const PBValue& right) {
        return compareAddressDictionary(left, right);
    });
    // The same long text is the same place, whatever else differs.
    const PBArray sameLines = lines({u"A"_s, u"B"_s});
    EXPECT_EQ(
        compareAddressDictionary(
            address({{"Country", u"X"_s}, {"FormattedAddressLines", sameLines}}),
            address({{"Country", u"Y"_s}, {"FormattedAddressLines", lines({u"a"_s, u"b"_s})}})),
        0);
    EXPECT_EQ(compareAddressDictionary(ascending[1], ascending[2], u"Country"_s), 0);
    EXPECT_EQ(compareAddressDictionary(ascending[1], ascending[2], u"ShortLocation"_s), 1);
}

} // namespace
