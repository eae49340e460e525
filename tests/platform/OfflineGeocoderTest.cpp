#include "platform/OfflineGeocoder.h"
#include "platform/CountryNames.h"
#include "platform/Places.h"
#include "support/Support.h"

#include <QThread>

#include <gtest/gtest.h>

#include <future>
#include <limits>

namespace {

using platform::GeocodeAnswer;
using platform::GeocodeError;
using platform::OfflineGeocoder;
using platform::PlaceLookup;

const QStringList english{QStringLiteral("en-GB"), QStringLiteral("en")};

QString gazetteerPath() {
    return platform::Places::sharedFile(QStringLiteral("gazetteer.bin"));
}

// City, SubLocality, State, Country and Name, with "-" for a missing one.
QString summary(const std::optional<PBDictionary>& address) {
    if (!address) return QStringLiteral("nothing");
    QStringList texts;
    for (const char* key : {"City", "SubLocality", "State", "Country", "Name"}) {
        const auto found = address->find(QString::fromLatin1(key));
        texts << (found == address->end() ? QStringLiteral("-") : found->second.toText());
    }
    return texts.join(u'|');
}

TEST(PlaceLookupTest, knownPositionsHaveTheAddressAPhotographerExpects) {
    PlaceLookup lookup(gazetteerPath(), english);
    const std::vector<std::tuple<PBLocation, QString>> table{
        {{52.4997, 13.4034}, u"Berlin|Kreuzberg|State of Berlin|Germany|Kreuzberg"_qs},
        {{51.5138, -0.134}, u"London|Soho|England|United Kingdom|Soho"_qs},
        {{40.758, -73.9855}, u"New York City|Times Square|New York|United States|Times Square"_qs},
        {{19.257, -99.103}, u"Mexico City|Xochimilco|Mexico City|Mexico|Xochimilco"_qs},
        {{-23.6678, -46.4614}, u"Mauá|-|São Paulo|Brazil|Mauá"_qs},
        {{35.6892, 139.6915}, u"Tokyo|-|Tokyo|Japan|Tokyo"_qs},
        {{48.9362, 2.3574}, u"Saint-Denis|-|Île-de-France|France|Saint-Denis"_qs},
        {{48.1374, 11.5755}, u"Munich|-|Bavaria|Germany|Munich"_qs},
        {{-33.9249, 18.4241}, u"Cape Town|-|Western Cape|South Africa|Cape Town"_qs},
        {{-12.0432, -77.0282}, u"Lima|-|Lima Province|Peru|Lima"_qs},
        {{64.147, -21.94}, u"Reykjavík|-|Capital Region|Iceland|Reykjavík"_qs},
        // Towns on both sides of a border, 1.1 km apart.
        {{47.6603, 9.1758}, u"Konstanz|-|Baden-Wurttemberg|Germany|Konstanz"_qs},
        {{47.6505, 9.175}, u"Kreuzlingen|-|Thurgau|Switzerland|Kreuzlingen"_qs},
        // States without divisions, or a city that is one.
        {{1.2834, 103.8607}, u"Singapore|Marina Bay|-|Singapore|Marina Bay"_qs},
        {{41.9029, 12.4534}, u"Vatican City|-|-|Vatican City|Vatican City"_qs},
        // In the mountains, the next village; a station on the ice.
        {{46.5586, 7.8926}, u"Lauterbrunnen|-|Bern|Switzerland|Lauterbrunnen"_qs},
        {{-77.8463, 166.6683}, u"McMurdo Station|-|-|Antarctica|McMurdo Station"_qs},
        // Ocean, both poles, the ice sheet.
        {{0, 0}, u"nothing"_qs},
        {{-48.87, -123.4}, u"nothing"_qs},
        {{90, 0}, u"nothing"_qs},
        {{-90, 180}, u"nothing"_qs},
        {{72.58, -38.46}, u"nothing"_qs},
        // Positions that are none.
        {{91, 13.4}, u"nothing"_qs},
        {{52.5, std::numeric_limits<double>::quiet_NaN()}, u"nothing"_qs},
        {{-std::numeric_limits<double>::infinity(), 13.4}, u"nothing"_qs}};
    for (const auto& [location, expected] : table) {
        EXPECT_EQ(summary(lookup.addressOf(location)), expected);
    }
}

TEST(PlaceLookupTest, placesAreFoundAcrossTheAntimeridian) {
    PlaceLookup lookup(gazetteerPath(), english);
    const QString west = summary(lookup.addressOf(PBLocation{-16.8, 179.999}));
    EXPECT_TRUE(west.contains(u"Fiji")) << qPrintable(west);
    EXPECT_EQ(summary(lookup.addressOf(PBLocation{-16.8, -179.999})), west);
    EXPECT_EQ(
        summary(lookup.addressOf(PBLocation{-16.8, 180})),
        summary(lookup.addressOf(PBLocation{-16.8, -180})));
}

TEST(PlaceLookupTest, addressLinesGoFromSmallToLargeAndNameEachPartOnce) {
    PlaceLookup lookup(gazetteerPath(), {QStringLiteral("de-AT"), QStringLiteral("de")});
    const auto linesAt = [&lookup](PBLocation location) {
        return lookup.addressOf(location)->at(QStringLiteral("FormattedAddressLines")).toText();
    };
    EXPECT_EQ(linesAt({52.4997, 13.4034}), u"Kreuzberg,Berlin,State of Berlin,Deutschland"_qs);
    EXPECT_EQ(linesAt({35.6892, 139.6915}), u"Tokyo,Japan"_qs);
    EXPECT_EQ(linesAt({1.2834, 103.8607}), u"Marina Bay,Singapore"_qs + u",Singapur"_qs);
}

TEST(PlaceLookupTest, gazetteerThatCannotBeUsedIsToldOnceAndNamesNothing) {
    ::testing::internal::CaptureStderr();
    PlaceLookup lookup(QStringLiteral("/no/such/gazetteer.bin"), english);
    EXPECT_FALSE(lookup.addressOf(PBLocation{91, 0}));
    EXPECT_FALSE(lookup.addressOf(PBLocation{52.5, 13.4}));
    EXPECT_FALSE(lookup.addressOf(PBLocation{48.1, 11.6}));
    const std::string told = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(told.find("/no/such/gazetteer.bin"), std::string::npos);
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1);
}

TEST(CountryNamesTest, firstLanguageThatHasANameGivesIt) {
    using platform::countryName;
    const auto list = [](auto... tags) { return QStringList{QString::fromLatin1(tags)...}; };
    EXPECT_EQ(countryName(u"DE"_qs, list("fr-CA", "fr")), u"Allemagne"_qs);
    EXPECT_EQ(countryName(u"DE"_qs, list("zh-Hans-CN")), u"德国"_qs);
    EXPECT_EQ(countryName(u"XK"_qs, list("de")), u"Kosovo"_qs);
    EXPECT_EQ(countryName(u"DE"_qs, list("qq-ZZ", "es")), u"Alemania"_qs);
    EXPECT_EQ(countryName(u"DE"_qs, list("C")), u"Germany"_qs);
    EXPECT_EQ(countryName(u"DE"_qs, {}), u"Germany"_qs);
    EXPECT_EQ(countryName(u"QZ"_qs, list("de")), u"QZ"_qs);
}

TEST(OfflineGeocoderTest, answersOnAnotherThreadOncePerRequest) {
    OfflineGeocoder geocoder(gazetteerPath(), english);
    std::promise<std::pair<GeocodeAnswer, QThread*>> found;
    geocoder.reverseGeocodeLocation({52.4997, 13.4034}, [&](const GeocodeAnswer& answer) {
        found.set_value({answer, QThread::currentThread()});
    });
    const auto [answer, thread] = found.get_future().get();
    ASSERT_EQ(answer.placemarks.size(), 1u);
    EXPECT_EQ(answer.error, GeocodeError::None);
    ASSERT_TRUE(answer.placemarks.front().addressDictionary.isDictionary());
    EXPECT_NE(thread, QThread::currentThread());

    std::promise<GeocodeAnswer> none;
    geocoder.reverseGeocodeLocation(
        {0, 0}, [&](const GeocodeAnswer& other) { none.set_value(other); });
    const GeocodeAnswer nothing = none.get_future().get();
    EXPECT_TRUE(nothing.placemarks.empty());
    EXPECT_EQ(static_cast<int>(nothing.error), 8);
}

TEST(OfflineGeocoderTest, cancelledRequestsAreAnsweredAsSuchAndLaterOnesAreNot) {
    OfflineGeocoder geocoder(gazetteerPath(), english);
    std::promise<void> firstRuns;
    std::promise<void> go;
    std::promise<GeocodeError> second;
    std::promise<GeocodeError> third;
    geocoder.reverseGeocodeLocation({0, 0}, [&](const GeocodeAnswer&) {
        firstRuns.set_value();
        go.get_future().wait();
    });
    firstRuns.get_future().wait();
    geocoder.reverseGeocodeLocation(
        {48.1, 11.6}, [&](const GeocodeAnswer& answer) { second.set_value(answer.error); });
    geocoder.cancelGeocode();
    geocoder.reverseGeocodeLocation(
        {48.1, 11.6}, [&](const GeocodeAnswer& answer) { third.set_value(answer.error); });
    go.set_value();
    EXPECT_EQ(second.get_future().get(), GeocodeError::Cancelled);
    EXPECT_EQ(third.get_future().get(), GeocodeError::None);
}

TEST(OfflineGeocoderTest, noCompletionRunsAfterTheEnd) {
    std::atomic<bool> hasEnded = false;
    std::atomic<bool> wasLate = false;
    for (int round = 0; round < 20; ++round) {
        hasEnded = false;
        {
            OfflineGeocoder geocoder(gazetteerPath(), english);
            for (int request = 0; request < 50; ++request) {
                geocoder.reverseGeocodeLocation({0, 0}, [&](const GeocodeAnswer&) {
                    if (hasEnded) wasLate = true;
                });
            }
        }
        hasEnded = true;
    }
    EXPECT_FALSE(wasLate);
}

} // namespace
