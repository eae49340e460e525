#pragma once

#include "viewer/slideshow/transitions/TransitionFrame.h"

class QWidget;

/// The widget that the frames of a transition appear on, black before the first. Main thread.
class TransitionSurface {
public:
    TransitionSurface() = default;
    TransitionSurface(const TransitionSurface&) = delete;
    TransitionSurface& operator=(const TransitionSurface&) = delete;
    virtual ~TransitionSurface() = default;

    [[nodiscard]] virtual QWidget& widget() = 0;
    /// Shows the frame as soon as it can; one that comes before that takes its place. A frame of
    /// another size than the widget's is stretched over it.
    virtual void showFrame(const TransitionFrame& frame) = 0;
};
