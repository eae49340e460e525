#pragma once

#include "viewer/slideshow/transitions/TransitionMap.h"
#include "viewer/slideshow/transitions/TransitionStyle.h"

#include <QImage>

#include <memory>

/// What a frame is made of. Both pictures are plain: RGB32, of the view's size in device pixels.
/// `map` is that of the style and size. A value; any thread.
struct TransitionFrame {
    TransitionStyle style = TransitionStyle::Fade;
    double progress = 0; ///< 0 to 1
    QImage from;
    QImage to;
    std::shared_ptr<const TransitionMap> map;
};
