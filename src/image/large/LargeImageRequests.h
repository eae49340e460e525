#pragma once

#include "image/large/ImageVersions.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

class PBImageBufferManager;
class PBImageFileItem;
class PBImageImporterManager;
class PBLoadImageDelegate;
class PBLoadImageManager;
class PBLoadImageOperation;

/// An item, and where it stands in the list that a display walks.
struct IndexedImage {
    std::shared_ptr<PBImageFileItem> item;
    std::int64_t index = 0;
};

/// What a display asks of the load line: the picture that it paints, and those that may come next.
/// Main thread. What it is built on outlives it.
class LargeImageRequests {
public:
    /// Where an item's file is; empty for one that can't be reached.
    using PathOfItem = std::function<QString(const PBImageFileItem&)>;

    LargeImageRequests(
        PBLoadImageManager& manager, PBImageBufferManager& buffer,
        PBImageImporterManager& importers, PathOfItem pathOfItem);

    /// The best version for a zoom (points for each pixel of the file).
    [[nodiscard]] AppropriateImage
    imageForZoom(const PBImageFileItem& item, double zoomScale) const;
    /// The same, and the load of what is missing joined or put at the head of the line, where there
    /// is something to load.
    AppropriateImage
    requestForZoom(const IndexedImage& image, double zoomScale, const PBLoadImageDelegate& display);

    /// The fit-in pictures of the neighbours, in that order, behind all that waits.
    void tryPreloadNextOrPrevImage(
        std::span<const IndexedImage> neighbours, const PBLoadImageDelegate& display);
    /// The focus at full size, behind all that waits.
    void tryPreloadOriginalImage(const IndexedImage& focus, const PBLoadImageDelegate& display);
    /// For the slideshow: the fit-in pictures, each at the head of the line, so that the last one
    /// given is the first to come. One that waits moves to the head only if it is `current`.
    void tryPreloadImages(
        std::span<const IndexedImage> images, std::int64_t current,
        const PBLoadImageDelegate& display);

    /// What a display does first with a load that has ended: the item gets what came of it, and the
    /// item is pushed on the buffer. False where the load was cancelled.
    bool keepLoadedImages(
        const LoadedImages& images, double scale, const IndexedImage& image,
        std::span<const std::shared_ptr<PBImageFileItem>> keepItems = {});

private:
    enum class Place { Head, AheadAtHead, End };
    /// The job that was joined; nullptr where there was none, or nothing is to be loaded.
    std::shared_ptr<PBLoadImageOperation> preload(
        const IndexedImage& image, double scale, Place place, const PBLoadImageDelegate& display);
    std::shared_ptr<PBLoadImageOperation>
    joined(const PBImageFileItem& item, double scale, const PBLoadImageDelegate& display);
    /// A new job; nothing where the item has no path.
    void
    load(const IndexedImage& image, double scale, Place place, const PBLoadImageDelegate& display);

    PBLoadImageManager& _manager;
    PBImageBufferManager& _buffer;
    PBImageImporterManager& _importers;
    const PathOfItem _pathOfItem;
};
