#pragma once

#include "viewer/slideshow/transitions/TransitionFrame.h"

/// The transitions without a graphics processor.
namespace RasterTransitions {

/// Where a frame is painted: rows of the size of the frame's pictures.
struct Target {
    QRgb* pixels = nullptr;
    qsizetype stride = 0; ///< pixels from one row to the next
};
/// The image's own memory, which nobody else holds meanwhile.
[[nodiscard]] Target targetOf(QImage& image);

/// Paints the rows from the first up to the one before the end. Different rows may be painted by
/// different threads at once.
void paintRows(const TransitionFrame& frame, const Target& target, int firstRow, int endRow);

/// The whole frame, painted by this thread alone.
[[nodiscard]] QImage paintedFrame(const TransitionFrame& frame);

} // namespace RasterTransitions
