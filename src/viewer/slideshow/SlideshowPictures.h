#pragma once

#include "image/large/LargeImageRequests.h"

#include <QImage>

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

class PBImageFileItem;

/// What a show has of a photograph at this moment.
struct SlideshowPicture {
    bool isOnItsWay = false; ///< the listener will be told
    QImage image;            ///< its first frame as stored; null for one that can't be loaded
};

/// Where a show gets its pictures from. Main thread.
class SlideshowPictures {
public:
    using Listener = std::function<void(const PBImageFileItem& item)>;

    SlideshowPictures() = default;
    SlideshowPictures(const SlideshowPictures&) = delete;
    SlideshowPictures& operator=(const SlideshowPictures&) = delete;
    virtual ~SlideshowPictures() = default;

    /// The picture, in any size that there is; where there is none, it is being loaded from now on,
    /// before all others.
    [[nodiscard]] virtual SlideshowPicture pictureOf(const IndexedImage& image) = 0;
    /// Loads what is missing of these, the last one first. Of those that wait already only the one
    /// of the index `current` moves to the head.
    virtual void preload(std::span<const IndexedImage> images, std::int64_t current) = 0;
    /// The show is over: nothing is asked for anew.
    virtual void forget() {}
    /// Is called when the load of a photograph has ended, well or not.
    virtual void setListener(Listener listener) = 0;
};
