#include "viewer/ImageViewPictures.h"

#include "group/PBImageFileItem.h"
#include "image/PBPreloadThumbnailOperation.h"
#include "image/large/PBImageBufferManager.h"
#include "image/large/PBLoadImageManager.h"
#include "platform/tasks/MainThread.h"
#include "viewer/ImageViewHost.h"
#include "viewer/painting/ImagePainter.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace {

/// Photographs beside the focus that are loaded ahead.
constexpr int preloadCount = 7;
/// The browser keeps thumbnails no larger than it needs: from this side on they do here, too.
constexpr int enoughThumbnail = 200;

int longerSide(const QImage& image) {
    return std::max(image.width(), image.height());
}

} // namespace

ImageViewPictures::ImageViewPictures(
    ImageViewHost& host, const ImageViewServices& services, Changes changes)
    : _host(host), _services(services), _changes(std::move(changes)),
      _requests(
          _services.loadImageManager, _services.imageBufferManager, _services.imageImporterManager,
          [this](const PBImageFileItem& item) { return item.filePath(_services.folderPaths); }),
      _displayFeed([this] { _changes.didResample(); }) {}

ImageViewPictures::~ImageViewPictures() = default;

IndexedImage ImageViewPictures::focus() const {
    return {_host.focusImageFileItem(), _host.focusIndex()};
}

ImageViewPictures::Picture ImageViewPictures::pictureOf(
    const PBImageFileItem& item, double zoomScale, std::size_t frame) const {
    const AppropriateImage found = _requests.imageForZoom(item, zoomScale);
    Picture picture;
    picture.images = found.images;
    picture.scale = found.scale;
    picture.isDone = !found.needsLoad();
    picture.isUnreadable = found.isUnreadable;
    if (found.images) {
        const std::size_t count = found.images->imageCount();
        picture.frame = count == 0 ? 0 : std::min(frame, count - 1);
        picture.image = found.images->imageAtIndex(picture.frame);
        // A version that came with another zoom has to play up to there first.
        if (picture.image.isNull()) picture.image = found.images->imageAtIndex(picture.frame = 0);
    }
    if (!picture.image.isNull()) return picture;
    picture.images = thumbnailImages(item);
    picture.frame = 0;
    picture.isThumbnail = true;
    if (picture.images) picture.image = picture.images->firstImage();
    return picture;
}

std::shared_ptr<const PBImages>
ImageViewPictures::thumbnailImages(const PBImageFileItem& item) const {
    platform::assertMainThread();
    const QImage own = item.thumbnailRef();
    const auto known = std::ranges::find_if(_thumbnails, [&](const Thumbnail& thumbnail) {
        return thumbnail.images && thumbnail.fileId == item.fileId();
    });
    if (known != _thumbnails.end() && known->cacheKey == own.cacheKey()) return known->images;
    QImage image = own;
    if (longerSide(own) < enoughThumbnail) {
        const QImage stored = _services.thumbnailLoader.loadThumbnail(item);
        if (longerSide(stored) > longerSide(own)) image = stored;
    }
    if (image.isNull()) return nullptr;
    const Thumbnail thumbnail{
        item.fileId(), own.cacheKey(),
        std::make_shared<PBImages>(std::vector<PBImage>{PBImage(image)}, false)};
    if (known != _thumbnails.end()) {
        *known = thumbnail;
    } else {
        _thumbnails.at(_nextThumbnail) = thumbnail;
        _nextThumbnail = (_nextThumbnail + 1) % _thumbnails.size();
    }
    return thumbnail.images;
}

QImage ImageViewPictures::thumbnailOf(const PBImageFileItem& item) const {
    const auto images = thumbnailImages(item);
    return images ? images->firstImage() : QImage();
}

void ImageViewPictures::requestFocus(double zoomScale) {
    const IndexedImage image = focus();
    if (image.item) _requests.requestForZoom(image, zoomScale, *this);
}

void ImageViewPictures::tryPreloadNextOrPrevImage() {
    if (_host.isSlideShowMode()) return;
    auto neighbours = _host.preloadImageFileItemWithCount(preloadCount);
    // Whichever way the user goes, the nearest comes next.
    std::ranges::sort(neighbours, {}, [focus = _host.focusIndex()](const IndexedImage& image) {
        return std::abs(image.index - focus);
    });
    _requests.tryPreloadNextOrPrevImage(neighbours, *this);
}

void ImageViewPictures::tryPreloadOriginalImage() {
    if (const IndexedImage image = focus(); image.item)
        _requests.tryPreloadOriginalImage(image, *this);
}

void ImageViewPictures::focusDidChange() {
    platform::assertMainThread();
    std::vector<std::shared_ptr<PBImageFileItem>> kept;
    if (auto item = _host.focusImageFileItem()) kept.push_back(std::move(item));
    for (const IndexedImage& image : _host.preloadImageFileItemWithCount(preloadCount))
        kept.push_back(image.item);
    _services.loadImageManager.cancelAllOperationExceptContextObjs(kept, _host.focusIndex());
}

const DisplayPicture*
ImageViewPictures::displayPicture(const ImagePlacement& placement, const Picture& picture) {
    platform::assertMainThread();
    const bool isWhole =
        !picture.image.isNull() &&
        ImagePainter::coveredRect(picture.image.size(), placement.imageSize()).size() ==
            placement.imageSize();
    const bool isQuarterTurn = std::fmod(placement.angle(), 90) == 0;
    if (!isWhole || !isQuarterTurn || placement.swapOffset() != 0) {
        _displayFeed.clear();
        return nullptr;
    }
    return _displayFeed.pictureFor(
        ImagePainter::displayStateOf(placement, picture.images, picture.frame));
}

FramePlayer::Frames
ImageViewPictures::framesOf(const PBImageFileItem& item, double zoomScale) const {
    const auto images = _requests.imageForZoom(item, zoomScale).images;
    if (!images || !images->canAnimation()) return {};
    return {
        .count = images->imageCount(),
        .delayTimeAtIndex = [images](std::size_t index) { return images->delayTimeAtIndex(index); },
        .isReady =
            [images](std::size_t index) {
                images->willShowFrame(index);
                return images->isFrameReady(index);
            }};
}

bool ImageViewPictures::isAway(const PBImageFileItem& item) const {
    return item.isAway() || item.filePath(_services.folderPaths).isEmpty();
}

void ImageViewPictures::loadImageFinished(
    const PBLoadImageOperation& /*operation*/, const LoadedImages& images, double scale,
    const std::shared_ptr<PBImageFileItem>& contextObj, std::int64_t index) {
    const auto keepItems = _host.visibleImageFileItems();
    if (!_requests.keepLoadedImages(images, scale, {contextObj, index}, keepItems)) return;
    _changes.didLoad(contextObj);
}
