#include "places/PlaceArray.h"

#include "places/Addresses.h"
#include "places/Gazetteer.h"
#include "places/GeoBlobs.h"
#include "support/Rows.h"

#include <numbers>

using namespace PBUtilities;
using GeoBlobs::decodeCoordinates;
using GeoBlobs::encodeCoordinates;
using support::entries;

namespace {

/// The search that the index stands in for.
std::optional<std::size_t> linearMatch(const PlaceArray& places, PBLocation location) {
    for (std::size_t place = 0; place < places.size(); ++place)
        for (std::size_t index = 0; index < places.at(place).Longitude.size(); ++index)
            if (distanceFromLocation(
                    {places.at(place).Latitude[index], places.at(place).Longitude[index]},
                    location) < 2000)
                return place;
    return std::nullopt;
}

double degreesOfMetres(double metres) {
    return metres / places::earthRadius * (180 / std::numbers::pi);
}

TEST(PlaceIndexTest, indexAnswersAsTheLinearSearch) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> offset(-6000, 6000);
    // Around a city, the corner of a date line, both poles and a corner of the grid's cubes.
    const std::vector<PBLocation> centres{{52.5, 13.4}, {-16.8, 180}, {90, 0},   {-90, 0},
                                          {0, 0},       {0, 90},      {0, -180}, {66, -179.99}};
    const auto near = [&](PBLocation centre) {
        PBLocation location = centre;
        location.latitude += degreesOfMetres(offset(random));
        if (std::abs(location.latitude) > 90) {
            location.latitude = std::copysign(180, location.latitude) - location.latitude;
            location.longitude += 180;
        }
        const double circle = std::max(1e-4, std::cos(location.latitude * std::numbers::pi / 180));
        location.longitude += degreesOfMetres(offset(random)) / circle;
        location.longitude = std::remainder(location.longitude, 360);
        return location;
    };
    std::size_t hits = 0;
    for (const PBLocation& centre : centres) {
        PlaceArray places;
        for (std::size_t place = 0; place < 8; ++place) {
            places.append({static_cast<int>(place), PBDictionary{}, {}, {}});
            for (unsigned position = 0; position < random() % 4; ++position)
                places.appendLocation(place, near(centre));
        }
        for (int round = 0; round < 500; ++round) {
            if (round % 100 == 50) places.appendLocation(random() % places.size(), near(centre));
            const PBLocation location = near(centre);
            const auto expected = linearMatch(places, location);
            EXPECT_EQ(places.firstMatch(location), expected)
                << location.latitude << " " << location.longitude;
            hits += expected.has_value();
        }
    }
    EXPECT_GT(hits, 400u);
    EXPECT_LT(hits, 4000u);
}

TEST(PlaceIndexTest, distanceIsTheWayAlongTheSurface) {
    // Whole and half circles are known exactly; Berlin to Paris is 878 km on the ellipsoid.
    const double degree = std::numbers::pi * places::earthRadius / 180;
    const std::tuple<PBLocation, PBLocation, double> table[] = {
        {{0, 0}, {0, 1}, degree},          {{60, 10}, {60, 10.001}, degree * 0.001 * 0.5},
        {{0, 179.5}, {0, -179.5}, degree}, {{89.5, 20}, {89.5, -160}, degree},
        {{-90, 0}, {90, 0}, degree * 180}, {{52.52, 13.405}, {48.8566, 2.3522}, 877'465}};
    for (const auto& [from, to, metres] : table)
        EXPECT_NEAR(distanceFromLocation(from, to), metres, 1e-4 * metres + 1e-6);
}

TEST(PlaceIndexTest, limitOfAPlaceOnEarthIsStrictlyBelowTwoKilometres) {
    PlaceArray places;
    places.append({1, PBDictionary{}, {7, NAN, 0, 200}, {0, 10, 91, 0}});
    places.append({2, PBDictionary{}, {0}, {90}});
    for (const int bearing : {1, -1}) {
        const auto at = [&](double metres) {
            return PBLocation{bearing * degreesOfMetres(metres), 7};
        };
        EXPECT_EQ(distanceFromLocation({0, 7}, at(2000)), 2000.0);
        EXPECT_FALSE(places.firstMatch(at(2000)));
        EXPECT_EQ(places.firstMatch(at(1999.9)), 0u);
    }
    for (const PBLocation none : {PBLocation{10, NAN}, PBLocation{91, 0}, PBLocation{0, 200}})
        EXPECT_FALSE(places.firstMatch(none));
    EXPECT_EQ(places.firstMatch({90, 55}), 1u);
}

TEST(PlaceIndexTest, firstPlaceOfAnAddressIsThatOfItsLongText) {
    const auto city = [](const QString& name) { return PBDictionary{{u"City"_s, name}}; };
    PlaceArray places;
    for (const QString& name : support::words("Ulm Bern ULM"))
        places.append({1, city(name), {}, {}});
    EXPECT_EQ(places.firstWithAddress(city(u"ulm"_s)), 0u);
    EXPECT_EQ(places.firstWithAddress(city(u"Bern"_s)), 1u);
    EXPECT_FALSE(places.firstWithAddress(city(u"Ulm 2"_s)));
    EXPECT_FALSE(places.firstWithAddress(PBNull{}) || places.firstWithAddress(PBDictionary{}));
    for (int round = 0; round < 2; ++round) {
        places.append({1, PBNull{}, {}, {}});
        places.append({1, PBDictionary{{u"Zip"_s, 1}}, {}, {}});
    }
    EXPECT_EQ(places.firstWithAddress(PBNull{}), 3u);
    EXPECT_EQ(places.firstWithAddress(PBDictionary{}), 4u);
}

PBValue lined(PBValue lines) {
    return PBDictionary{{u"City"_s, u"Berlin"_s}, {u"FormattedAddressLines"_s, lines}};
}

TEST(AddressesTest, textsNameThePlaceFromSmallToLarge) {
    const std::pair<PBValue, QString> table[] = {
        {PBDictionary{}, {}},
        {u"Berlin"_s, {}},
        {entries("Name=Pier-3 Country=Germany"), u"Pier-3, Germany"_s},
        {entries("Name=Pier-3 City=Berlin State=BERLIN Country=Germany"), u"Berlin, Germany"_s},
        {entries("SubLocality=Mitte City=Berlin State=Brandenburg Country=Germany"),
         u"Mitte, Berlin, Brandenburg"_s},
        // Entries of the wrong type, or with nothing in them.
        {entries("SubLocality= City=7 Country=Germany"), u"Germany"_s},
        {PBDictionary{{u"State"_s, PBNull{}}, {u"Country"_s, u"Germany"_s}}, u"Germany"_s},
        {lined(PBArray{}), u"Berlin"_s},
        {lined(PBArray{PBNull{}, 3}), u"Berlin"_s},
        {lined(u"text"_s), u"Berlin"_s}};
    for (const auto& [address, text] : table) {
        EXPECT_EQ(shortLocationStringForAddressDictionary(address), text);
        EXPECT_EQ(longLocationStringForAddressDictionary(address), text);
    }
    const PBValue two = lined(PBArray{u"Pier 3"_s, u"Berlin"_s});
    EXPECT_EQ(shortLocationStringForAddressDictionary(two), u"Berlin"_s);
    EXPECT_EQ(longLocationStringForAddressDictionary(two), u"Pier 3, Berlin"_s);
}

TEST(GeoBlobsTest, coordinatesComeBackUnchangedAndOtherBytesAreRefused) {
    const std::vector<double> given{
        0, -0.1, 13.40338, 180, -179.99999999999997, std::numeric_limits<double>::denorm_min()};
    EXPECT_EQ(decodeCoordinates(encodeCoordinates(given)), given);
    EXPECT_EQ(decodeCoordinates(encodeCoordinates({})), std::vector<double>());
    // [1, "x", -2.5, null, tag 1(5)]: what is no number keeps its place
    auto coordinates = decodeCoordinates(QByteArray::fromHex("85016178f9c100f6c105")).value();
    for (double& coordinate : coordinates)
        if (std::isnan(coordinate)) coordinate = 99;
    EXPECT_EQ(coordinates, (std::vector<double>{1, 99, -2.5, 99, 99}));
    std::vector<QByteArray> junk{{}, "bplist00", QByteArray(200'000, '\x81')};
    for (const char* hex : {"82fb40", "a0", "01", "61ff", "9b0fffffffffffffff"})
        junk.push_back(QByteArray::fromHex(hex));
    for (const QByteArray& bytes : junk)
        EXPECT_FALSE(decodeCoordinates(bytes)) << bytes.left(12).toHex().constData();
}

} // namespace
