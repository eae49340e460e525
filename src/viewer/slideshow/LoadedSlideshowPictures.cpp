#include "viewer/slideshow/LoadedSlideshowPictures.h"

#include "group/PBImageFileItem.h"
#include "image/large/ImageVersions.h"
#include "image/large/PBLoadImageManager.h"
#include "platform/tasks/MainThread.h"

LoadedSlideshowPictures::LoadedSlideshowPictures(
    LargeImageRequests& requests, PBLoadImageManager& manager)
    : _requests(requests), _manager(manager) {
    // Those that are ready have the colours of another screen.
    _manager.addColoursObserver(
        this, [this] { _requests.tryPreloadImages(_preloaded, _current, *this); });
}

LoadedSlideshowPictures::~LoadedSlideshowPictures() {
    _manager.removeColoursObserver(this);
}

void LoadedSlideshowPictures::forget() {
    platform::assertMainThread();
    _ahead.clear();
    _preloaded.clear();
}

SlideshowPicture LoadedSlideshowPictures::pictureOf(const IndexedImage& image) {
    platform::assertMainThread();
    const double scale = _manager.screen().fitInScaleForImageSize(image.item->imageSize());
    const auto found = [&] { return appropriateImageForScale(*image.item, scale); };
    if (const auto there = found(); there.images || there.hasNullImage)
        return {.image = there.images ? there.images->firstImage() : QImage()};
    _requests.tryPreloadImages(std::span(&image, 1), image.index, *this);
    // No load was begun for a file that can't be reached.
    SlideshowPicture picture;
    picture.isOnItsWay = !!_manager.loadImageOperationOfContextObj(*image.item, scale).operation;
    return picture;
}

void LoadedSlideshowPictures::preload(std::span<const IndexedImage> images, std::int64_t current) {
    platform::assertMainThread();
    _ahead.clear();
    for (const IndexedImage& image : images)
        _ahead.push_back(image.item);
    _preloaded.assign(images.begin(), images.end());
    _current = current;
    _requests.tryPreloadImages(images, current, *this);
}

void LoadedSlideshowPictures::loadImageFinished(
    const PBLoadImageOperation&, const LoadedImages& images, double scale,
    const std::shared_ptr<PBImageFileItem>& contextObj, std::int64_t index) {
    platform::assertMainThread();
    _requests.keepLoadedImages(images, scale, {contextObj, index}, _ahead);
    _listener(*contextObj);
}
