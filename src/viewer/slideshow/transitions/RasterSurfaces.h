#pragma once

#include "viewer/slideshow/transitions/RasterTransitions.h"

/// The transitions that bend what they show: paper and water.
namespace RasterSurfaces {

/// Each as `RasterTransitions::paintRows`.
void paintPageCurl(
    const TransitionFrame& frame, const RasterTransitions::Target& target, int firstRow,
    int endRow);
void paintRipple(
    const TransitionFrame& frame, const RasterTransitions::Target& target, int firstRow,
    int endRow);

} // namespace RasterSurfaces
