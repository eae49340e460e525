#include "image/large/LargeImageRequests.h"

#include "group/PBImageFileItem.h"
#include "image/large/PBImageBufferManager.h"
#include "image/large/PBLoadImageManager.h"
#include "platform/tasks/MainThread.h"

LargeImageRequests::LargeImageRequests(
    PBLoadImageManager& manager, PBImageBufferManager& buffer, PBImageImporterManager& importers,
    PathOfItem pathOfItem)
    : _manager(manager), _buffer(buffer), _importers(importers),
      _pathOfItem(std::move(pathOfItem)) {}

AppropriateImage
LargeImageRequests::imageForZoom(const PBImageFileItem& item, double zoomScale) const {
    return appropriateImageForScale(item, _manager.screen().imageScaleForZoomScale(zoomScale));
}

AppropriateImage LargeImageRequests::requestForZoom(
    const IndexedImage& image, double zoomScale, const PBLoadImageDelegate& display) {
    const AppropriateImage found = imageForZoom(*image.item, zoomScale);
    if (!found.needsLoad()) return found;
    const LargeImageScreen& screen = _manager.screen();
    const double fitIn = screen.fitInScaleForImageSize(image.item->imageSize());
    // At the fit-in zoom of a full screen both are one number, to within rounding.
    const bool needsOriginal = fitIn * (1 + 1e-9) < screen.imageScaleForZoomScale(zoomScale);
    const double scale = needsOriginal ? 1.0 : fitIn;
    if (const auto job = joined(*image.item, scale, display))
        _manager.moveLoadImageOperaToHead(*job);
    else
        load(image, scale, Place::Head, display);
    return found;
}

void LargeImageRequests::tryPreloadNextOrPrevImage(
    std::span<const IndexedImage> neighbours, const PBLoadImageDelegate& display) {
    for (const IndexedImage& image : neighbours) {
        const double scale = _manager.screen().fitInScaleForImageSize(image.item->imageSize());
        preload(image, scale, Place::End, display);
    }
}

void LargeImageRequests::tryPreloadOriginalImage(
    const IndexedImage& focus, const PBLoadImageDelegate& display) {
    preload(focus, 1.0, Place::End, display);
}

void LargeImageRequests::tryPreloadImages(
    std::span<const IndexedImage> images, std::int64_t current,
    const PBLoadImageDelegate& display) {
    for (const IndexedImage& image : images) {
        const double scale = _manager.screen().fitInScaleForImageSize(image.item->imageSize());
        const Place place = image.index == current ? Place::Head : Place::AheadAtHead;
        const auto job = preload(image, scale, place, display);
        if (job && image.index == current) _manager.moveLoadImageOperaToHead(*job);
    }
}

std::shared_ptr<PBLoadImageOperation> LargeImageRequests::preload(
    const IndexedImage& image, double scale, Place place, const PBLoadImageDelegate& display) {
    if (!appropriateImageForScale(*image.item, scale).needsLoad()) return nullptr;
    auto job = joined(*image.item, scale, display);
    if (!job) load(image, scale, place, display);
    return job;
}

std::shared_ptr<PBLoadImageOperation> LargeImageRequests::joined(
    const PBImageFileItem& item, double scale, const PBLoadImageDelegate& display) {
    platform::assertMainThread();
    auto job = _manager.loadImageOperationOfContextObj(item, scale).operation;
    if (job) job->addDelegate(display);
    return job;
}

void LargeImageRequests::load(
    const IndexedImage& image, double scale, Place place, const PBLoadImageDelegate& display) {
    platform::assertMainThread();
    const QString path = _pathOfItem(*image.item);
    if (path.isEmpty()) return;
    auto operation = std::make_shared<PBLoadImageOperation>(
        PBLoadImageOperation::Job{
            .filePath = path,
            .imageSize = image.item->imageSize(),
            .scale = scale,
            .contextObj = image.item,
            .index = image.index,
            .colorSpace = _manager.screen().colorSpace,
            .isAhead = place != Place::Head},
        _importers);
    operation->addDelegate(display);
    _manager.addLoadImageOperation(std::move(operation), place == Place::End);
}

bool LargeImageRequests::keepLoadedImages(
    const LoadedImages& images, double scale, const IndexedImage& image,
    std::span<const std::shared_ptr<PBImageFileItem>> keepItems) {
    platform::assertMainThread();
    if (images.kind == LoadedImages::Kind::Nothing) return false;
    addImage(*image.item, images, scale);
    _buffer.pushImageFileItem(image.item, image.index, keepItems);
    return true;
}
