#include "viewer/slideshow/LoadedSlideshowPictures.h"

#include "group/PBImageFileItem.h"
#include "image/large/ImageVersions.h"
#include "image/large/PBLoadImageManager.h"

SlideshowPicture LoadedSlideshowPictures::pictureOf(const IndexedImage& image) {
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
    _ahead.clear();
    for (const IndexedImage& image : images)
        _ahead.push_back(image.item);
    _requests.tryPreloadImages(images, current, *this);
}

void LoadedSlideshowPictures::loadImageFinished(
    const PBLoadImageOperation&, const LoadedImages& images, double scale,
    const std::shared_ptr<PBImageFileItem>& contextObj, std::int64_t index) {
    _requests.keepLoadedImages(images, scale, {contextObj, index}, _ahead);
    _listener(*contextObj);
}
