#pragma once

#include "viewer/slideshow/transitions/TransitionStyle.h"

#include <QImage>

#include <functional>

/// The picture area of a show, as its controller uses it. Main thread.
class SlideshowStage {
public:
    using Ended = std::function<void(bool finished)>;

    SlideshowStage() = default;
    SlideshowStage(const SlideshowStage&) = delete;
    SlideshowStage& operator=(const SlideshowStage&) = delete;
    virtual ~SlideshowStage() = default;

    /// Of the next transition.
    virtual void setTransitionStyle(TransitionStyle style) = 0;
    /// Seconds.
    virtual void setTransitionDuration(double duration) = 0;
    /// From what is shown to the picture, turned clockwise by so many degrees; a null picture is
    /// black. One that runs ends first, unfinished.
    virtual void transitionToImage(const QImage& image, double angle) = 0;
    /// Black at once; what runs ends without a word.
    virtual void clearTransition() = 0;
    /// Is called at the end of each transition; not finished if another one came before. From
    /// black to black it is called at once.
    virtual void setAnimationDidStop(Ended ended) = 0;
};
