#include "platform/OfflineGeocoder.h"
#include "platform/CountryNames.h"
#include "platform/Places.h"
#include "support/Support.h"

#include <QThread>

#include <future>

namespace {

using platform::GeocodeAnswer;
using platform::GeocodeError;
using platform::OfflineGeocoder;
using platform::PlaceLookup;

const QStringList english{u"en-GB"_s, u"en"_s};

QString gazetteerPath() {
    return platform::Places::sharedFile(u"gazetteer.bin"_s);
}

// City, SubLocality, State, Country and Name, with "-" for a missing one.
QString summary(const std::optional<PBDictionary>& address) {
    if (!address) return u"nothing"_s;
    QStringList texts;
    for (const char* key : {"City", "SubLocality", "State", "Country", "Name"}) {
        const auto found = address->find(QString::fromLatin1(key));
        texts << (found == address->end() ? u"-"_s : found->second.toText());
    }
    return texts.join(u'|');
}

TEST(PlaceLookupTest, knownPositionsHaveTheAddressAPhotographerExpects) {
    PlaceLookup lookup(gazetteerPath(), english);
    const std::vector<std::tuple<PBLocation, QString>> table{
        {{52.4997, 13.4034}, u"Berlin|Kreuzberg|State of Berlin|Germany|Kreuzberg"_s},
        {{40.758, -73.9855}, u"New York City|Times Square|New York|United States|Times Square"_s},
        {{-23.6678, -46.4614}, u"Mauá|-|São Paulo|Brazil|Mauá"_s},
        {{35.6892, 139.6915}, u"Tokyo|-|Tokyo|Japan|Tokyo"_s},
        {{48.9362, 2.3574}, u"Saint-Denis|-|Île-de-France|France|Saint-Denis"_s},
        // Towns on both sides of a border, 1.1 km apart.
        {{47.6603, 9.1758}, u"Konstanz|-|Baden-Wurttemberg|Germany|Konstanz"_s},
        {{47.6505, 9.175}, u"Kreuzlingen|-|Thurgau|Switzerland|Kreuzlingen"_s},
        // States without divisions, or a city that is one.
        {{1.2834, 103.8607}, u"Singapore|Marina Bay|-|Singapore|Marina Bay"_s},
        {{41.9029, 12.4534}, u"Vatican City|-|-|Vatican City|Vatican City"_s},
        // In the mountains, the next village; a station on the ice.
        {{46.5586, 7.8926}, u"Lauterbrunnen|-|Bern|Switzerland|Lauterbrunnen"_s},
        {{-77.8463, 166.6683}, u"McMurdo Station|-|-|Antarctica|McMurdo Station"_s},
        // Ocean, both poles, the ice sheet.
        {{0, 0}, u"nothing"_s},
        {{90, 0}, u"nothing"_s},
        {{-90, 180}, u"nothing"_s},
        {{72.58, -38.46}, u"nothing"_s}};
    for (const auto& [location, expected] : table)
        EXPECT_EQ(summary(lookup.addressOf(location)), expected);
    // On both sides of the antimeridian.
    const QString west = summary(lookup.addressOf(PBLocation{-16.8, 179.999}));
    EXPECT_TRUE(west.contains(u"Fiji")) << qPrintable(west);
    EXPECT_EQ(summary(lookup.addressOf(PBLocation{-16.8, -179.999})), west);
}

TEST(PlaceLookupTest, gazetteerThatCannotBeUsedIsToldOnceAndNamesNothing) {
    ::testing::internal::CaptureStderr();
    PlaceLookup lookup(u"/no/such/gazetteer.bin"_s, english);
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
    EXPECT_EQ(countryName(u"DE"_s, list("zh-Hans-CN")), u"德国"_s);
    EXPECT_EQ(countryName(u"XK"_s, list("de")), u"Kosovo"_s);
    EXPECT_EQ(countryName(u"DE"_s, list("qq-ZZ", "es")), u"Alemania"_s);
    EXPECT_EQ(countryName(u"DE"_s, {}), u"Germany"_s);
    EXPECT_EQ(countryName(u"QZ"_s, list("de")), u"QZ"_s);
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
