#include "image/PBPreloadThumbnailOperation.h"

#include "group/PBImageFileItem.h"
#include "platform/tasks/MainLoop.h"

QImage reducedThumbnail(const QImage& thumbnail, QSize pixels) {
    if (pixels.isEmpty() || thumbnail.width() <= pixels.width() ||
        thumbnail.height() <= pixels.height())
        return thumbnail;
    return thumbnail.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

PBPreloadThumbnailOperation::PBPreloadThumbnailOperation(
    std::vector<PBPreloadThumbnailObject> objects, ThumbnailLoader& loader, Finished finished)
    : _objects(std::move(objects)), _loader(loader), _finished(std::move(finished)) {}

void PBPreloadThumbnailOperation::main() {
    for (PBPreloadThumbnailObject& object : _objects) {
        if (isCancelled()) return;
        // Shown meanwhile, and loaded for that.
        if (object.imageFileItem->hasThumbnail() && !object.isAgain) continue;
        const QImage stored = _loader.loadThumbnail(*object.imageFileItem);
        if (stored.isNull()) continue;
        object.thumbnailRef = reducedThumbnail(stored, object.pixels);
        object.isReduced = object.thumbnailRef.size() != stored.size();
        platform::MainLoop::instance()->post(
            platform::MainLoop::Mode::Common,
            [finished = _finished, result = std::move(object)] { finished(result); });
    }
}
