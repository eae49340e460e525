#pragma once

#include <QImage>

/// What is seen at the pointer while the file of a photograph is dragged.
namespace ImageDragOut {

/// Points, of both sides.
inline constexpr int side = 140;

/// The thumbnail as it is shown, in the middle of a square; transparent without one.
[[nodiscard]] QImage picture(const QImage& thumbnail, double rotateAngle, double ratio);

} // namespace ImageDragOut
