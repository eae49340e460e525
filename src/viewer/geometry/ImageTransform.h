#pragma once

#include "codec/pixels/Geometry.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QTransform>

/// How a picture is put on a view: one point of it on one point of the view, turned and scaled
/// about them. Coordinates of views and of pictures run right and down; a picture's are its pixels
/// before any rotation, with (0, 0) at its corner. Angles are degrees and turn clockwise on the
/// screen. Pure functions, any thread.
namespace PBUtilities {

/// Takes points of the picture to points of the view.
[[nodiscard]] QTransform transformWithImageAnchor(
    const QPointF& imageAnchor, const QPointF& drawAnchor, double angle, double scale);

/// The bounding rectangle of the whole picture on the view.
[[nodiscard]] QRectF imageFrameWithTransform(const QTransform& transform, const QSizeF& imageSize);

/// The scale at which the bounding rectangle of the turned picture fits the size, in units of the
/// size for each pixel. Without `fitInSmall` at most 1. A picture without a size gives 1, a view
/// without one gives 0.
[[nodiscard]] double
fitInScaleWithAngle(double angle, const QSizeF& imageSize, const QSizeF& drawSize, bool fitInSmall);

struct FitInValues {
    QPointF imageAnchor; // the picture's centre
    QPointF drawAnchor;  // the centre of the size, not rounded
    double scale = 1.0;
};

/// A picture in the middle of the size, at `fitInScaleWithAngle`.
[[nodiscard]] FitInValues
calcFitInWithAngle(double angle, const QSizeF& imageSize, const QSizeF& drawSize, bool fitInSmall);

} // namespace PBUtilities
