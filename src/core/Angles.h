#pragma once

/// Angles of display in degrees, counter-clockwise positive. Pure functions, any thread.
namespace PBUtilities {

/// The angle in degrees, counter-clockwise positive, at which a picture of this EXIF orientation
/// (1 to 8) is shown; mirrored orientations and all else give 0.
[[nodiscard]] double orientationToAngle(int orientation);

/// The angle brought into [0, 360).
[[nodiscard]] double positiveAngle(double angle);
/// The same with -90 for 270, so that quarter turns are -90, 0, 90 and 180.
[[nodiscard]] double normalizeAngle(double angle);

} // namespace PBUtilities
