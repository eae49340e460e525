#pragma once

#include "viewer/geometry/SwipeGeometry.h"

enum class ImageStep { Next, Previous, First, Last };

/// What gestures and keys do besides moving the picture.
enum class ImageCommand { RotateLeft, RotateRight, ToggleFlag, LeaveLargeView };

/// What the input wants of the view, and what it needs to know of it. Main thread.
class ImageInputHost {
public:
    virtual ~ImageInputHost() = default;
    [[nodiscard]] virtual SwipeNeighbours neighbours() const = 0;
    virtual void step(ImageStep step) = 0;
    virtual void perform(ImageCommand command) = 0;
    /// The file of the photograph leaves by a drag; comes back when that is over.
    virtual void beginFileDrag() = 0;
};
