#include "places/PlaceIndex.h"

#include "places/Gazetteer.h"
#include "places/PlaceEntry.h"

#include <cmath>
#include <numbers>

namespace {

/// Metres; twice the radius, so that at most two cubes of each axis touch it. The reach is a little
/// longer than the radius, by far more than the rounding of the coordinates.
constexpr double cubeEdge = 2 * placeRadius + 2;
constexpr double reach = placeRadius + 1;

std::array<double, 3> metresFromCentre(PBLocation location) {
    constexpr double degree = std::numbers::pi / 180;
    const double latitude = location.latitude * degree;
    const double longitude = location.longitude * degree;
    const double equatorial = places::earthRadius * std::cos(latitude);
    return {
        equatorial * std::cos(longitude), equatorial * std::sin(longitude),
        places::earthRadius * std::sin(latitude)};
}

std::int32_t cubeNumber(double metres) {
    return static_cast<std::int32_t>(std::floor(metres / cubeEdge));
}

} // namespace

std::size_t PlaceIndex::CubeHash::operator()(const Cube& cube) const {
    std::uint64_t hash = 0;
    for (const std::int32_t number : cube) {
        // Numbers are below 2^12; the odd factor spreads them over all bits.
        hash = (hash ^ static_cast<std::uint32_t>(number)) * 0x9e3779b97f4a7c15u;
        hash ^= hash >> 29;
    }
    return hash;
}

void PlaceIndex::add(PBLocation location, std::size_t place) {
    if (!places::isValidLocation(location)) return;
    const auto [x, y, z] = metresFromCentre(location);
    _cubes[{cubeNumber(x), cubeNumber(y), cubeNumber(z)}].push_back({location, place});
}

std::optional<std::size_t> PlaceIndex::firstWithin(PBLocation location) const {
    if (!places::isValidLocation(location)) return std::nullopt;
    std::optional<std::size_t> first;
    const auto search = [&](const Cube& cube) {
        const auto found = _cubes.find(cube);
        if (found == _cubes.end()) return;
        for (const Position& position : found->second) {
            if ((!first || position.place < *first) &&
                distanceFromLocation(position.location, location) < placeRadius) {
                first = position.place;
            }
        }
    };
    const auto [x, y, z] = metresFromCentre(location);
    for (auto i = cubeNumber(x - reach); i <= cubeNumber(x + reach); ++i) {
        for (auto j = cubeNumber(y - reach); j <= cubeNumber(y + reach); ++j) {
            for (auto k = cubeNumber(z - reach); k <= cubeNumber(z + reach); ++k) {
                search({i, j, k});
            }
        }
    }
    return first;
}
