#include "core/Angles.h"

#include <cmath>

namespace PBUtilities {

double orientationToAngle(int orientation) {
    switch (orientation) {
    case 3:
        return 180;
    case 6:
        return -90;
    case 8:
        return 90;
    default:
        return 0; // Nothing here ever mirrors a picture.
    }
}

double positiveAngle(double angle) {
    const double remainder = std::fmod(angle, 360.0);
    if (remainder >= 0) return remainder;
    const double positive = remainder + 360.0;
    return positive < 360.0 ? positive : 0; // a hair below 0 rounds up
}

double normalizeAngle(double angle) {
    const double positive = positiveAngle(angle);
    return positive == 270 ? -90 : positive;
}

} // namespace PBUtilities
