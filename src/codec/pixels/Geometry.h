#pragma once

#include "core/Angles.h"

#include <QRectF>
#include <QSize>
#include <QSizeF>

/// Arithmetic of sizes, rectangles and quarter turns. Pure functions, any thread.
namespace PBUtilities {

/// Places a picture of the given size inside the rectangle, centred and keeping its aspect ratio,
/// writes the placed rectangle back and returns its scale. With `fitIn` the picture fills the
/// rectangle, enlarged or reduced; without it is only ever reduced. A size that is not above 0
/// changes nothing and gives 1.
double fitInRect(QRectF& rect, double width, double height, bool fitIn);

/// Width and height swapped for quarter turns (90 or 270 degrees once brought into [0, 360)).
[[nodiscard]] QSizeF rotateSize(QSizeF size, double rotateAngle);

} // namespace PBUtilities

namespace codec {

/// The size of a picture with its longest side reduced to `maxSize`: rounded, at least 1 by 1,
/// never enlarged; 0 keeps the size.
[[nodiscard]] QSize reducedSize(QSize size, int maxSize);

/// Whether both are the same shape, to within what rounding and padding of reduced pictures cost.
[[nodiscard]] bool sameShape(QSize one, QSize other);

} // namespace codec
