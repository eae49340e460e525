#include "info/geo/PlaceArray.h"

#include "info/geo/Addresses.h"
#include "info/geo/PBGeoManager.h"
#include "platform/Gazetteer.h"
#include "support/Support.h"

#include <numbers>

namespace {

/// The search that the index stands in for.
std::optional<std::size_t> linearMatch(const PlaceArray& places, PBLocation location) {
    for (std::size_t place = 0; place < places.size(); ++place)
        if (PBGeoManager::isMatchBetweenAddress(places.at(place), location)) return place;
    return std::nullopt;
}

double degreesOfMetres(double metres) {
    return metres / platform::earthRadius * (180 / std::numbers::pi);
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
    std::size_t tries = 0;
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
            ++tries;
        }
    }
    EXPECT_GT(hits, tries / 10);
    EXPECT_LT(hits, tries);
}

TEST(PlaceIndexTest, distanceIsTheWayAlongTheSurface) {
    struct Row {
        PBLocation from, to;
        double metres;
    };
    // Whole and half circles are known exactly; Berlin to Paris is 878 km on the ellipsoid.
    const double degree = std::numbers::pi * platform::earthRadius / 180;
    const Row table[] = {
        {{0, 0}, {0, 1}, degree},
        {{60, 10}, {60, 10.001}, degree * 0.001 * 0.5},
        {{0, 179.5}, {0, -179.5}, degree},
        {{89.5, 20}, {89.5, -160}, degree},
        {{90, 0}, {90, 123}, 0},
        {{-90, 0}, {90, 0}, degree * 180},
        {{10, 20}, {-10, -160}, degree * 180},
        {{52.52, 13.405}, {48.8566, 2.3522}, 877'465}};
    for (const auto& [from, to, metres] : table) {
        EXPECT_NEAR(distanceFromLocation(from, to), metres, 1e-4 * metres + 1e-6);
        EXPECT_EQ(distanceFromLocation(from, to), distanceFromLocation(to, from));
    }
}

TEST(PlaceIndexTest, limitOfAPlaceIsStrictlyBelowTwoKilometres) {
    for (const double bearing : {1.0, -1.0}) {
        PlaceArray places;
        places.append({1, PBDictionary{}, {7.0}, {0.0}});
        const auto at = [&](double metres) {
            return PBLocation{bearing * degreesOfMetres(metres), 7.0};
        };
        EXPECT_EQ(distanceFromLocation({0, 7}, at(2000)), 2000.0);
        EXPECT_FALSE(places.firstMatch(at(2000)));
        EXPECT_FALSE(places.firstMatch(at(2000.001)));
        EXPECT_EQ(places.firstMatch(at(1999.9)), 0u);
        EXPECT_EQ(places.firstMatch(at(0)), 0u);
    }
}

TEST(PlaceIndexTest, positionsThatAreNoneMatchNothing) {
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    PlaceArray places;
    places.append({1, PBDictionary{}, {notANumber, 0, 200}, {10, 91, 0}});
    places.append({2, PBDictionary{}, {0}, {90}});
    for (const PBLocation location :
         {PBLocation{10, notANumber}, PBLocation{91, 0}, PBLocation{0, 200},
          PBLocation{0, HUGE_VAL}}) {
        EXPECT_FALSE(places.firstMatch(location));
        EXPECT_FALSE(linearMatch(places, location));
        EXPECT_EQ(PBGeoManager::minDistanceBetweenAddress(places.at(0), location), 0x1p63);
    }
    EXPECT_EQ(places.firstMatch({90, 55}), 1u);
}

} // namespace
