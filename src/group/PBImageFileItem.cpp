#include "group/PBImageFileItem.h"

#include "core/LocalizedCompare.h"
#include "group/ItemOrder.h"
#include "group/PixelCount.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

template <typename T>
std::int64_t compareValues(T value, T other) {
    return value < other ? -1 : value > other ? 1 : 0;
}

/// The instant of a sort key, or of the item itself where the key says nothing.
double sortDate(const PBImageFileItem& item) {
    const PBValue& key = item.sortData();
    return key.hasValue() ? key.toDouble() : item.modifiedDate();
}

} // namespace

std::shared_ptr<PBImageFileItem> PBImageFileItem::imageFileItemWithId(
    qint64 fileId, qint64 folderId, const QString& fileName, quint64 fileSize,
    double modifiedDate) {
    return std::make_shared<PBImageFileItem>(fileId, folderId, fileName, fileSize, modifiedDate);
}

PBImageFileItem::PBImageFileItem(
    qint64 fileId, qint64 folderId, QString fileName, quint64 fileSize, double modifiedDate)
    : _fileId(fileId), _folderId(folderId), _fileName(std::move(fileName)), _fileSize(fileSize),
      _modifiedDate(modifiedDate) {}

PBImageFileItem::~PBImageFileItem() {
    setIsSelected(false);
}

PBImageFileItem::Sameness PBImageFileItem::samenessWith(const PBImageFileItem& other) const {
    if (_fileId == other._fileId) return Sameness::Same;
    const bool isAtItsPlace = _folderId == other._folderId && fileName() == other.fileName();
    return isAtItsPlace ? Sameness::WrittenAnew : Sameness::None;
}

void PBImageFileItem::setImageSize(QSizeF size) {
    _imageWidth.store(size.width());
    _imageHeight.store(size.height());
}

QSizeF PBImageFileItem::displaySize() const {
    double angle = std::fmod(rotateAngle(), 360.0);
    if (angle < 0) angle += 360.0;
    const bool onItsSide = angle == 90.0 || angle == 270.0;
    return onItsSide ? imageSize().transposed() : imageSize();
}

void PBImageFileItem::setStar(quint64 star) {
    constexpr quint64 most = std::numeric_limits<quint32>::max();
    _star.store(static_cast<quint32>(std::min(star, most)));
}

const PBValue& PBImageFileItem::sortData() const {
    static const PBValue absent;
    return _sortData ? *_sortData : absent;
}

void PBImageFileItem::setSortData(PBValue sortData) {
    _sortData =
        sortData.isAbsent() ? nullptr : std::make_unique<const PBValue>(std::move(sortData));
}

PBImageFileItem::Pictures& PBImageFileItem::pictures() {
    if (!_pictures) _pictures = std::make_unique<Pictures>();
    return *_pictures;
}

QImage PBImageFileItem::thumbnailRef() const {
    return _pictures ? _pictures->thumbnail : QImage();
}

void PBImageFileItem::setThumbnailRef(const QImage& thumbnail) {
    platform::assertMainThread();
    _hasThumbnail.store(!thumbnail.isNull(), std::memory_order_relaxed);
    if (thumbnail.isNull() && !imageArray()) {
        _pictures.reset();
    } else {
        pictures().thumbnail = thumbnail;
    }
}

group::ItemImages* PBImageFileItem::imageArray() const {
    return _pictures ? _pictures->imageArray.get() : nullptr;
}

void PBImageFileItem::setImageArray(std::unique_ptr<group::ItemImages> imageArray) {
    platform::assertMainThread();
    if (!imageArray && thumbnailRef().isNull()) {
        _pictures.reset();
    } else {
        pictures().imageArray = std::move(imageArray);
    }
}

bool PBImageFileItem::isMatchedForSearchString(
    const group::SearchText& searchString, quint64 filter) const {
    if (!searchString.matches(fileName())) return false;
    if ((filter & group::FilterFlagged) != 0 && !flagged()) return false;
    return (filter & group::FilterRated) == 0 || star() != 0;
}

std::int64_t PBImageFileItem::sortCompare(const PBImageFileItem& other, int sortType) const {
    if (this == &other) return 0;
    switch (sortType) {
    case group::SortFileName:
        return _fileName.compare(other._fileName);
    case group::SortFileSize:
        return compareValues(_fileSize, other._fileSize);
    case group::SortModificationDate:
        return compareValues(_modifiedDate, other._modifiedDate);
    case group::SortDateTaken:
        return compareValues(sortDate(*this), sortDate(other));
    case group::SortKind:
        if (!sortData().hasValue() || !other.sortData().hasValue()) return -2;
        return PBUtilities::localizedStandardCompare(
            sortData().toText(), other.sortData().toText());
    case group::SortPixelArea:
        return compareValues(group::pixelCount(imageSize()), group::pixelCount(other.imageSize()));
    default:
        return -2;
    }
}
