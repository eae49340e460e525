#include "image/PBPreloadThumbnailOperation.h"

#include "group/PBImageFileItem.h"
#include "platform/work/MainLoop.h"

PBPreloadThumbnailOperation::PBPreloadThumbnailOperation(
    std::vector<PBPreloadThumbnailObject> objects, ThumbnailLoader& loader, Finished finished)
    : _objects(std::move(objects)), _loader(loader), _finished(std::move(finished)) {}

void PBPreloadThumbnailOperation::main() {
    for (PBPreloadThumbnailObject& object : _objects) {
        if (isCancelled()) return;
        // Shown meanwhile, and loaded for that.
        if (object.imageFileItem->hasThumbnail()) continue;
        object.thumbnailRef = _loader.loadThumbnail(*object.imageFileItem);
        if (object.thumbnailRef.isNull()) continue;
        platform::MainLoop::instance()->post(
            platform::MainLoop::Mode::Common,
            [finished = _finished, result = std::move(object)] { finished(result); });
    }
}
