#pragma once

#include "image/large/LargeImageRequests.h"
#include "image/large/PBLoadImageDelegate.h"
#include "viewer/ImageViewServices.h"
#include "viewer/feed/DisplayPictureFeed.h"
#include "viewer/state/FramePlayer.h"

#include <QImage>

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

class ImageViewHost;
class ImagePlacement;

/// The pictures that the image view paints: the best version of a photograph that is there, its
/// thumbnail until there is one, and what is resampled for the picture at rest. Asks the load line
/// for what is missing and keeps what comes of it. Main thread.
class ImageViewPictures final : public PBLoadImageDelegate {
public:
    struct Picture {
        /// The version, or the thumbnail as one; nullptr without either.
        std::shared_ptr<const PBImages> images;
        std::size_t frame = 0;
        QImage image;
        bool isThumbnail = false;
        double scale = 0;    ///< of the version
        bool isDone = false; ///< there is nothing more to load
        bool isUnreadable = false;
    };

    struct Changes {
        /// Something of that photograph has come, or is known not to come.
        std::function<void(const std::shared_ptr<PBImageFileItem>&)> didLoad;
        /// The resampled picture of the state wanted last is there.
        std::function<void()> didResample;
    };

    /// The host outlives this object.
    ImageViewPictures(ImageViewHost& host, const ImageViewServices& services, Changes changes);
    ~ImageViewPictures() override;

    /// For a zoom in points for each pixel; nothing is asked for.
    [[nodiscard]] Picture
    pictureOf(const PBImageFileItem& item, double zoomScale, std::size_t frame = 0) const;
    /// The stored thumbnail; null where there is none.
    [[nodiscard]] QImage thumbnailOf(const PBImageFileItem& item) const;
    /// Asks for the version of the focus that the zoom needs, unless it is there or on its way.
    void requestFocus(double zoomScale);
    void tryPreloadNextOrPrevImage();
    void tryPreloadOriginalImage();
    /// The focus is another photograph: loads of what is not near it end.
    void focusDidChange();

    /// The resampled picture for this place; nullptr while it is not there.
    const DisplayPicture* displayPicture(const ImagePlacement& placement, const Picture& picture);
    /// The picture moves, or is left.
    void clearDisplayPicture() { _displayFeed.clear(); }

    /// The frames of the focus at the zoom, for as long as the version is held; can't play where
    /// they are no animation.
    [[nodiscard]] FramePlayer::Frames framesOf(const PBImageFileItem& item, double zoomScale) const;

    /// The file is out of reach: its disk is not there, or its folder is not known.
    [[nodiscard]] bool isAway(const PBImageFileItem& item) const;

    void loadImageFinished(
        const PBLoadImageOperation& operation, const LoadedImages& images, double scale,
        const std::shared_ptr<PBImageFileItem>& contextObj, std::int64_t index) override;

private:
    struct Thumbnail {
        qint64 fileId = 0;
        qint64 cacheKey = 0; // of the item's own picture when it was read
        std::shared_ptr<const PBImages> images;
    };
    [[nodiscard]] std::shared_ptr<const PBImages>
    thumbnailImages(const PBImageFileItem& item) const;
    [[nodiscard]] IndexedImage focus() const;

    ImageViewHost& _host;
    const ImageViewServices _services;
    const Changes _changes;
    LargeImageRequests _requests;
    DisplayPictureFeed _displayFeed;
    /// Of the focus, both neighbours, and the one that was left last.
    mutable std::array<Thumbnail, 4> _thumbnails;
    mutable std::size_t _nextThumbnail = 0;
};
