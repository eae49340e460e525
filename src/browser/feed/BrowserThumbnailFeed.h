#pragma once

#include "browser/feed/BrowserServices.h"
#include "browser/layout/BrowserLayout.h"
#include "browser/state/BrowserLeafList.h"
#include "image/SharpThumbnailOperation.h"

#include <QImage>

#include <functional>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

/// Tells the machinery of thumbnails which images matter now, and gives out what is there. Main
/// thread.
class BrowserThumbnailFeed {
public:
    /// All outlive this object. `arrived` is called with an image whose thumbnail has come from the
    /// preload queue. The clock tells seconds.
    BrowserThumbnailFeed(
        BrowserLayout& layout, const BrowserLeafList& leaves, BrowserServices& services,
        std::function<void(const PBImageFileItem&)> arrived, std::function<double()> clock);
    ~BrowserThumbnailFeed();
    BrowserThumbnailFeed(const BrowserThumbnailFeed&) = delete;
    BrowserThumbnailFeed& operator=(const BrowserThumbnailFeed&) = delete;

    /// Around a paint: thumbnails that are not in memory are loaded on the spot until `budget`
    /// seconds are spent; what is left over is loaded in the background. Of all of them, only the
    /// pixels are kept that their cells need at so many device pixels to the point.
    void beginPaint(double budget, double pixelRatio);
    void endPaint(const QRectF& visible);
    [[nodiscard]] bool hasTimeLeft() const;
    /// From memory or from the catalogue; null if there is none, or no time for it.
    [[nodiscard]] QImage
    thumbnail(const PBImageBrowserIndex& index, const std::shared_ptr<PBImageFileItem>& item);

    /// Loads half a page ahead and behind, the one in the direction of travel first; -1 is up.
    /// Earlier wishes are dropped.
    void preloadThumbnailWithPosition(const QRectF& visible, int flag);
    /// Builds what is on show first, then the page ahead.
    void adjustBuildThumb(const QRectF& visible, bool isScrollingDown);

    /// A thumbnail of fewer pixels than its cell needs was given out since this was asked last.
    [[nodiscard]] bool takeHasTooSmall() { return std::exchange(_hasTooSmall, false); }
    /// Loads such thumbnails of what is on show again, in the background; where even the stored
    /// ones are too small, decodes the images themselves.
    void loadLarger(const QRectF& visible);

    /// Something without a stored thumbnail was asked for that nobody has looked into yet.
    [[nodiscard]] bool takeLacksPicture() { return std::exchange(_lacksPicture, false); }
    /// Looks into the files of what is on show and has no thumbnail for the small pictures of the
    /// cameras, in the background: these stand in until the thumbnails are built.
    void loadStandIns(const QRectF& visible);
    /// Everything on show has a thumbnail in memory or such a picture.
    [[nodiscard]] bool isPictured(const QRectF& visible) const;

private:
    /// Of the thumbnail as it is stored; empty where that is not known.
    [[nodiscard]] QSize
    neededPixels(const PBImageBrowserIndex& index, const PBImageFileItem& item) const;
    [[nodiscard]] bool
    isTooSmall(const PBImageBrowserIndex& index, const PBImageFileItem& item) const;
    /// The stored thumbnail is too small, and its image has more to give.
    [[nodiscard]] bool
    couldBeSharper(const PBImageBrowserIndex& index, const PBImageFileItem& item) const;
    void sharpen(std::vector<SharpThumbnailOperation::Request> requests, const QRectF& visible);
    void sharpened(const std::shared_ptr<PBImageFileItem>& item, int side, const QImage& image);
    [[nodiscard]] QImage standIn(const PBImageFileItem& item);
    void noteLoaded(const PBImageFileItem& item, bool isReduced);
    [[nodiscard]] std::shared_ptr<platform::Operation>
    preloadOperation(std::vector<PBPreloadThumbnailObject> objects);
    [[nodiscard]] std::shared_ptr<platform::Operation>
    preloadThumbnailOperation(double topLine, double bottomLine);
    void cancelPreloads();
    void replacePreloads(std::initializer_list<std::shared_ptr<platform::Operation>> wanted);
    void preloadThumbnailFinished(const PBPreloadThumbnailObject& object);

    BrowserLayout& _layout;
    const BrowserLeafList& _leaves;
    BrowserServices& _services;
    const std::function<void(const PBImageFileItem&)> _arrived;
    const std::function<double()> _clock;
    /// Expires with this object: a thumbnail may arrive later.
    std::shared_ptr<BrowserThumbnailFeed*> _self;
    /// Images whose thumbnail has more pixels where it is stored than in memory.
    std::unordered_set<qint64> _reduced;
    /// Longer sides that images were decoded for since their thumbnails came from the catalogue.
    std::unordered_map<qint64, int> _sharpened;
    std::weak_ptr<platform::Operation> _loadingLarger;
    std::weak_ptr<platform::Operation> _sharpening;
    QRectF _sharpeningPart; // of the sheet
    double _pixelRatio = 1;
    /// By image; null where the file holds none.
    std::unordered_map<qint64, QImage> _standIns;
    std::weak_ptr<platform::Operation> _readingStandIns;
    QRectF _standInsPart; // of the sheet
    bool _lacksPicture = false;
    bool _hasTooSmall = false;
    double _paintEnd = 0;
    bool _hasMissed = false;
    int _direction = 1;
};
