// Reverse geocoding of random positions on land, against a bare nearest-neighbour search in the
// same tree; the start of the gazetteer; and the search among known places against a linear one.
#include "places/PlaceArray.h"
#include "places/PlaceLookup.h"
#include "platform/program/StandardFolders.h"
#include "support/Ratio.h"

#include <QCoreApplication>
#include <QFile>

#include <cmath>
#include <numbers>
#include <random>

namespace {

using places::Gazetteer;
using places::PlaceLookup;

const QStringList languages{QStringLiteral("de"), QStringLiteral("en")};

QString gazetteerPath() {
    return platform::StandardFolders::sharedFile(QStringLiteral("gazetteer.bin"));
}

/// Within 25 km of random places: where there are places there is land, mostly.
std::vector<PBLocation> landPoints(const Gazetteer& gazetteer, int count) {
    std::mt19937 random(1);
    std::uniform_int_distribution<std::uint32_t> place(0, gazetteer.placeCount() - 1);
    std::uniform_real_distribution<double> offset(-0.22, 0.22);
    std::vector<PBLocation> points;
    while (std::ssize(points) < count) {
        PBLocation point = gazetteer.location(place(random));
        point.longitude += offset(random) / std::cos(point.latitude * std::numbers::pi / 180);
        point.latitude += offset(random);
        if (places::isValidLocation(point)) points.push_back(point);
    }
    return points;
}

bool measureStart() {
    double fastest = std::numeric_limits<double>::infinity();
    for (int round = 0; round < 7; ++round) {
        PlaceLookup lookup(gazetteerPath(), languages);
        fastest = std::min(fastest, bench::millisecondsOf([&] {
                               bench::keep(lookup.addressOf(PBLocation{52.5, 13.4}).has_value());
                           }));
    }
    bench::printRatio(
        "start-up with the first address, to reading the file", 7,
        [] {
            QFile file(gazetteerPath());
            if (file.open(QIODevice::ReadOnly)) bench::keep(file.readAll().size());
        },
        [] {
            PlaceLookup lookup(gazetteerPath(), languages);
            bench::keep(lookup.addressOf(PBLocation{52.5, 13.4}).has_value());
        });
    return bench::printFigure("start-up with the first address", fastest, "ms", 50);
}

bool measureGeocoding(const Gazetteer& gazetteer, const std::vector<PBLocation>& points) {
    PlaceLookup lookup(gazetteerPath(), languages);
    double fastest = std::numeric_limits<double>::infinity();
    std::size_t found = 0;
    const auto geocode = [&] {
        found = 0;
        const double time = bench::millisecondsOf([&] {
            for (const PBLocation& point : points) {
                found += lookup.addressOf(point).has_value();
            }
        });
        fastest = std::min(fastest, time);
        return time;
    };
    bench::printRatio(
        "addresses of 100,000 positions, to the bare search", 9,
        [&] {
            std::size_t sum = 0;
            for (const PBLocation& point : points) {
                const auto nearest = gazetteer.nearest(point, places::placeReach);
                sum += nearest ? nearest->place : 0;
            }
            bench::keep(sum);
        },
        geocode);
    bench::printFigure(
        "positions with an address",
        100.0 * static_cast<double>(found) / static_cast<double>(points.size()), "%");
    return bench::printFigure(
        "addresses a second, warm", static_cast<double>(points.size()) * 1000 / fastest, "/s",
        200'000, bench::Bound::AtLeast);
}

/// The floor: every position of the place is asked.
bool holds(const PlaceEntry& place, PBLocation location) {
    for (std::size_t index = 0; index < place.Longitude.size(); ++index) {
        const PBLocation position{place.Latitude[index], place.Longitude[index]};
        if (distanceFromLocation(position, location) < placeRadius) return true;
    }
    return false;
}

/// A library of two thousand places with ten positions each.
bool measureKnownPlaces(const std::vector<PBLocation>& points) {
    PlaceArray places;
    for (std::size_t place = 0; place < 2000; ++place) {
        PlaceEntry entry{static_cast<qint64>(place), PBDictionary{}, {}, {}};
        for (std::size_t position = 0; position < 10; ++position) {
            entry.Longitude.push_back(points[place * 10 + position].longitude);
            entry.Latitude.push_back(points[place * 10 + position].latitude);
        }
        places.append(std::move(entry));
    }
    constexpr std::size_t searches = 200;
    return bench::printRatio(
        "200 searches among 20,000 known positions, to linear", 3,
        [&] {
            std::size_t matches = 0;
            for (std::size_t search = 0; search < searches; ++search) {
                for (std::size_t place = 0; place < places.size(); ++place) {
                    if (holds(places.at(place), points[search * 400])) {
                        ++matches;
                        break;
                    }
                }
            }
            bench::keep(matches);
        },
        [&] {
            std::size_t matches = 0;
            for (std::size_t search = 0; search < searches; ++search) {
                matches += places.firstMatch(points[search * 400]).has_value();
            }
            bench::keep(matches);
        },
        0.1);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    QString reason;
    const auto gazetteer = Gazetteer::open(gazetteerPath(), &reason);
    if (gazetteer == nullptr) {
        std::fprintf(stderr, "%s: %s\n", qUtf8Printable(gazetteerPath()), qUtf8Printable(reason));
        return 1;
    }
    const std::vector<PBLocation> points = landPoints(*gazetteer, 100'000);
    const bool startIsQuick = measureStart();
    const bool geocodingIsQuick = measureGeocoding(*gazetteer, points);
    const bool searchIsQuick = measureKnownPlaces(points);
    return startIsQuick && geocodingIsQuick && searchIsQuick ? 0 : 1;
}
