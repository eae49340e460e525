#pragma once

#include "image/large/PBImages.h"

#include <QImage>
#include <QRect>
#include <QSizeF>
#include <QTransform>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

/// What a view shows at rest: a picture, where it lies, and which part of it is to be seen.
struct DisplayState {
    std::shared_ptr<const PBImages> images;
    std::size_t frame = 0;
    /// Of the file, in pixels, before any rotation; `images` are stretched to it.
    QSizeF imageSize;
    /// Takes pixels of the file to device pixels of the view: a scale, a quarter turn, a place.
    QTransform toDevicePixels;
    /// The part of the view that is to be seen, in its device pixels.
    QRect visible;

    friend bool operator==(const DisplayState&, const DisplayState&) = default;
};

/// The visible part of a picture, one pixel for each device pixel. Painted at `rect` without any
/// further scaling.
struct DisplayPicture {
    DisplayState state;
    QImage image; ///< null: the picture does not lie within what is visible
    QRect rect;   ///< device pixels of the view; within `state.visible`
};

/// The device pixels that the picture takes of what is visible; nothing where the state has no
/// picture or another angle than quarter turns.
[[nodiscard]] std::optional<QRect> visibleRect(const DisplayState& state);

/// What resampling takes: the device pixels that are made and the picture's own that are read.
[[nodiscard]] double pixelsTouched(const DisplayState& state);

/// Resamples for the device's pixels: filtered where the picture is reduced, smoothly up to twice
/// its size, the nearest pixel above. Never larger than the visible part.
/// Null where `visibleRect` has nothing, when stopped, and when memory is refused. Any thread;
/// `isStopped` is asked for each row.
[[nodiscard]] DisplayPicture
resampledPicture(const DisplayState& state, const std::function<bool()>& isStopped = {});
