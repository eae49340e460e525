#include "places/PlaceEntry.h"

#include "places/Gazetteer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

double distanceFromLocation(PBLocation location, PBLocation otherLocation) {
    if (!places::isValidLocation(location) || !places::isValidLocation(otherLocation)) {
        return std::numeric_limits<double>::infinity();
    }
    constexpr double degree = std::numbers::pi / 180;
    const double south = std::sin((otherLocation.latitude - location.latitude) * (degree / 2));
    const double east = std::sin((otherLocation.longitude - location.longitude) * (degree / 2));
    const double square = south * south + std::cos(location.latitude * degree) *
                                              std::cos(otherLocation.latitude * degree) * east *
                                              east;
    return 2 * places::earthRadius * std::asin(std::min(1.0, std::sqrt(square)));
}
