#pragma once

#include "image/PBPreloadThumbnailOperation.h"
#include "platform/tasks/OperationQueue.h"

#include <QImage>
#include <QSize>

#include <functional>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class PBThumbnailBufferManager;

/// What a strip takes its thumbnails from; all outlive it.
struct ThumbnailSources {
    ThumbnailLoader& loader;        ///< of the main thread
    ThumbnailLoader& preloadLoader; ///< of the preload queue
    platform::OperationQueue& preloadQueue;
    platform::OperationQueue& buildQueue;
    PBThumbnailBufferManager& buffer;
};

/// Tells the machinery of thumbnails which photographs a strip shows, and gives out what is there.
/// Main thread.
class StripThumbnails {
public:
    using Items = std::vector<std::shared_ptr<PBImageFileItem>>;

    /// `arrived` is called when a thumbnail has come from the preload queue. The clock tells
    /// seconds.
    StripThumbnails(
        const ThumbnailSources& sources, std::function<void(const PBImageFileItem&)> arrived,
        std::function<double()> clock);

    /// Until `budget` seconds are spent, thumbnails that are not in memory are loaded on the spot.
    /// Pictures are painted on so many device pixels at most, in either direction.
    void beginPaint(double budget, double side);
    [[nodiscard]] bool hasTimeLeft() const { return _clock() < _paintEnd; }
    /// Null if there is none, or no time for it.
    [[nodiscard]] QImage thumbnail(const std::shared_ptr<PBImageFileItem>& item);
    /// Something was left out for want of time since this was asked last.
    [[nodiscard]] bool takeHasMissed() { return std::exchange(_hasMissed, false); }

    /// Loads those without a thumbnail in the background, in this order, and those with one that
    /// the browser has reduced too far for the strip; earlier wishes are dropped.
    void preloadThumbnail(const Items& items);
    /// Thumbnails that are still to be built: those of the photographs on show come first.
    void adjustBuildThumb(const std::unordered_set<qint64>& shownFileIds);

    /// The strip is left.
    void clear() { _whole.clear(); }

private:
    /// There may be a larger one.
    [[nodiscard]] bool isTooSmall(const PBImageFileItem& item) const;
    void didLoad(const PBPreloadThumbnailObject& object);

    const ThumbnailSources _sources;
    const std::function<void(const PBImageFileItem&)> _arrived;
    const std::function<double()> _clock;
    /// Expires with this object: a thumbnail may arrive later.
    const std::shared_ptr<StripThumbnails*> _self;
    double _paintEnd = 0;
    double _side = 0;
    /// By file: the picture that has all pixels there are.
    std::unordered_map<qint64, qint64> _whole;
    bool _hasMissed = false;
};
