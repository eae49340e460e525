#pragma once

#include "platform/values/PBValue.h"

#include <vector>

/// One place: an address, and every position that ever turned out to be there.
struct PlaceEntry {
    PBValue GeoId;       ///< the row's id; the null marker for an entry that lives in memory only
    PBValue AddressDict; ///< a dictionary; the null marker for positions that have no address
    std::vector<double> Longitude;
    std::vector<double> Latitude; ///< parallel to `Longitude`
};

/// A position nearer than this, in metres, to one of a place's own is at that place.
inline constexpr double placeRadius = 2000.0;

/// Metres along the Earth's surface: the haversine formula on a sphere of the mean radius, which is
/// within 0.6 % of the ellipsoid. Infinite if one of the positions is none (not finite, or beyond
/// the poles or the antimeridian).
[[nodiscard]] double distanceFromLocation(PBLocation location, PBLocation otherLocation);
