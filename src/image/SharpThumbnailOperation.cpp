#include "image/SharpThumbnailOperation.h"

#include "codec/Bitmaps.h"
#include "group/PBImageFileItem.h"
#include "image/StandIn.h"
#include "platform/tasks/MainLoop.h"

#include <QColorSpace>

SharpThumbnailOperation::SharpThumbnailOperation(std::vector<Request> requests, Finished finished)
    : _requests(std::move(requests)), _finished(std::move(finished)) {
    setQueuePriority(platform::QueuePriority::Low); // whatever has no picture at all goes first
}

QImage SharpThumbnailOperation::read(const Request& request) const {
    const auto side = static_cast<unsigned>(request.side);
    PBImageImporterProtocol& importer = *request.imageImporter;
    importer.setUrgency(codec::Urgency::ThumbnailOnShow);
    if (!request.onlyEmbedded) return importer.createImageWithMaxSize(side, 0, stopToken());
    return standInFor(
        importer.createEmbeddedImage(side, stopToken()), request.imageFileItem->imageSize());
}

void SharpThumbnailOperation::main() {
    for (Request& request : _requests) {
        if (isCancelled()) return;
        QImage image = read(request);
        request.imageImporter.reset();
        if (isCancelled()) return;
        if (!image.isNull())
            image = PBUtilities::preloadedImageRef(std::move(image), QColorSpace());
        platform::MainLoop::instance()->post(
            platform::MainLoop::Mode::Common,
            [finished = _finished, item = std::move(request.imageFileItem), side = request.side,
             image] { finished(item, side, image); });
    }
}
