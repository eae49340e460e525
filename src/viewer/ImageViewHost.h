#pragma once

#include "image/large/LargeImageRequests.h"

#include <QPoint>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <vector>

/// What the image view asks of its surroundings: the photographs, which it doesn't own, and what
/// follows from what the user did. All on the main thread; outlives the view.
class ImageViewHost {
public:
    virtual ~ImageViewHost() = default;

    /// The photograph that is shown; nullptr when there is none.
    [[nodiscard]] virtual std::shared_ptr<PBImageFileItem> focusImageFileItem() const = 0;
    /// Its place in the list, from 0; -1 when there is none.
    [[nodiscard]] virtual std::int64_t focusIndex() const = 0;
    /// Its neighbours; nullptr at the ends.
    [[nodiscard]] virtual std::shared_ptr<PBImageFileItem> nextImageFileItem() const = 0;
    [[nodiscard]] virtual std::shared_ptr<PBImageFileItem> prevImageFileItem() const = 0;
    /// Up to so many photographs beside the focus, on the side that the last move went to: the
    /// nearest last when that was backwards, else the nearest first.
    [[nodiscard]] virtual std::vector<IndexedImage>
    preloadImageFileItemWithCount(int count) const = 0;
    /// Those that the strip shows: their large pictures stay in memory.
    [[nodiscard]] virtual std::vector<std::shared_ptr<PBImageFileItem>>
    visibleImageFileItems() const = 0;

    /// Steps; nothing at the ends. Each that leads somewhere calls `PBImageView::showImage`.
    virtual void navigateToNextImage() = 0;
    virtual void navigateToPreviousImage() = 0;
    virtual void navigateToFirstImage() = 0;
    virtual void navigateToLastImage() = 0;

    /// Commands on the photograph that is shown. What they change comes back as
    /// `PBImageView::imageDidChange`.
    virtual void rotateLeft() = 0;
    virtual void rotateRight() = 0;
    virtual void toggleFlag() = 0;
    /// Back to the thumbnails.
    virtual void leaveLargeView() = 0;
    virtual void showContextMenu(const QPoint& globalPosition) = 0;

    /// The scale has changed, or its limits: slider, label, what can be zoomed.
    virtual void updateZoomSizeSlider() = 0;
    /// An animation of the scale or the angle has ended: what commands are possible.
    virtual void revalidateToolbar() = 0;

    /// Whether a file or folder that is dragged over the view can be opened: a folder, or a file
    /// that some importer takes. Looks at the disk at most for a moment.
    [[nodiscard]] virtual bool canOpenPath(const QString& path) const = 0;
    /// Files and folders were dropped on the view: they are shown in the large view.
    virtual void openDroppedPaths(const QStringList& paths) = 0;

    /// A slideshow covers everything: nothing is painted, asked for or preloaded here.
    [[nodiscard]] virtual bool isSlideShowMode() const = 0;
};
