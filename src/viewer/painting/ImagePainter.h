#pragma once

#include "viewer/feed/DisplayPicture.h"
#include "viewer/geometry/ImagePlacement.h"

#include <QColor>
#include <QImage>
#include <QString>

#include <optional>

class QFont;
class QPainter;

namespace ImagePainter {

/// The same in both themes, unless the user wants another one.
[[nodiscard]] QColor groundColor();

} // namespace ImagePainter

/// What the image area shows.
struct ImageScene {
    /// A picture in place of a photograph, stretched to its size.
    struct Picture {
        QImage image;
        /// Of the file, in pixels, before any rotation.
        QSizeF imageSize;
        /// Display rotation, clockwise.
        double angle = 0;
    };

    ImagePlacement placement;
    QColor ground = ImagePainter::groundColor();
    /// Without a photograph there is nothing.
    std::optional<Picture> picture;
    /// The picture at rest, resampled for the device; painted instead of it.
    const DisplayPicture* display = nullptr;
    /// What a swipe uncovers.
    std::optional<Picture> neighbour;
    /// One line in the middle; empty for none.
    QString message;
};

/// Paints the image area. Pictures are not interpolated: that is for motion, and at rest there is
/// `display`. Main thread.
namespace ImagePainter {

/// The part of the area that the painter's clip and the rectangle have in common, in points.
void paint(QPainter& painter, const ImageScene& scene, const QRectF& dirty, const QFont& font);

/// What `DisplayState` says of the placement, for a version of its picture.
[[nodiscard]] DisplayState displayStateOf(
    const ImagePlacement& placement, std::shared_ptr<const PBImages> images, std::size_t frame);

/// A version of another shape than the photograph, which was changed since, is not distorted: the
/// part of the photograph's pixels that it covers.
[[nodiscard]] QRectF coveredRect(const QSize& picture, const QSizeF& imageSize);

} // namespace ImagePainter
