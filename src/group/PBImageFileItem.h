#pragma once

#include "group/ItemName.h"
#include "group/SearchText.h"
#include "platform/values/PBValue.h"

#include <QImage>
#include <QSizeF>
#include <QString>

#include <atomic>
#include <cstdint>
#include <memory>
#include <unordered_map>

class FMDatabase;

namespace group {
class FolderPaths;

/// Paths of folders by their ids, for one pass over many items.
using FolderPathCache = std::unordered_map<qint64, QString>;

/// A list that an upper floor hangs on an item: the large pictures that are in memory.
class ItemImages {
public:
    virtual ~ItemImages() = default;
};
} // namespace group

/// One catalogued image: what the browser needs at every redraw. Everything else is read from the
/// catalogue on demand, through the connection of the calling thread.
///
/// Items are shared: the work tree, every copy of it and the views hold the same object, so that a
/// change shows in all of them at once. Ids, size and date never change. The scan thread fills an
/// item before anybody else sees it, and `sortData` belongs to that thread afterwards too; name,
/// stars, flag, rotation, pixel size and the two selection states may be read on any thread and are
/// written by the main thread; being away is written by the scan thread; the pictures belong to the
/// main thread alone.
class PBImageFileItem {
public:
    [[nodiscard]] static std::shared_ptr<PBImageFileItem> imageFileItemWithId(
        qint64 fileId, qint64 folderId, const QString& fileName, quint64 fileSize,
        double modifiedDate);
    PBImageFileItem(
        qint64 fileId, qint64 folderId, QString fileName, quint64 fileSize, double modifiedDate);
    ~PBImageFileItem();
    PBImageFileItem(const PBImageFileItem&) = delete;
    PBImageFileItem& operator=(const PBImageFileItem&) = delete;

    [[nodiscard]] qint64 fileId() const { return _fileId; }
    [[nodiscard]] qint64 folderId() const { return _folderId; }
    /// Valid as long as the item, also when it is renamed meanwhile.
    [[nodiscard]] const QString& fileName() const { return _fileName.text(); }
    void setFileName(const QString& fileName) { _fileName.setText(fileName); }
    /// In a later tree a photograph may be another item, and has another id when its file was
    /// written anew. In the order of what they say.
    enum class Sameness { None, WrittenAnew, Same };
    [[nodiscard]] Sameness samenessWith(const PBImageFileItem& other) const;
    /// Bytes.
    [[nodiscard]] quint64 fileSize() const { return _fileSize; }
    /// Content modification, seconds since 1970.
    [[nodiscard]] double modifiedDate() const { return _modifiedDate; }

    /// Pixels of the stored image, before rotation.
    [[nodiscard]] QSizeF imageSize() const { return {_imageWidth.load(), _imageHeight.load()}; }
    void setImageSize(QSizeF size);
    /// Display rotation in degrees, counter-clockwise.
    [[nodiscard]] double rotateAngle() const { return _rotateAngle.load(); }
    void setRotateAngle(double degrees) { _rotateAngle.store(degrees); }
    /// The size as shown: width and height change places at exactly 90 and 270 degrees, full turns
    /// taken off.
    [[nodiscard]] QSizeF displaySize() const;

    /// 0 to 5.
    [[nodiscard]] quint64 star() const { return _star.load(); }
    void setStar(quint64 star);
    [[nodiscard]] bool flagged() const { return _flagged.load(); }
    void setFlagged(bool flagged) { _flagged.store(flagged); }
    [[nodiscard]] bool isSelected() const { return _isSelected.load(); }
    void setIsSelected(bool isSelected) {
        if (_isSelected.exchange(isSelected) != isSelected) selectedItems += isSelected ? 1 : -1;
    }
    /// How many items are selected, in whatever tree: without any, nobody needs to look for them
    /// among a million.
    [[nodiscard]] static std::int64_t selectedCount() { return selectedItems; }
    /// The selection as it was at the start of a drag or command click.
    [[nodiscard]] bool storedSelect() const { return _storedSelect.load(); }
    void setStoredSelect(bool storedSelect) { _storedSelect.store(storedSelect); }

    /// The file, or its disk, could not be looked at: whether it is there is not known.
    [[nodiscard]] bool isAway() const { return _isAway.load(); }
    void setIsAway(bool isAway) { _isAway.store(isAway); }

    /// The sort key that the fields above don't give: the date taken for sort type 4, the extension
    /// for 5. Absent otherwise; may be the null marker.
    [[nodiscard]] const PBValue& sortData() const;
    void setSortData(PBValue sortData);

    /// The decoded thumbnail; null while there is none.
    [[nodiscard]] QImage thumbnailRef() const;
    void setThumbnailRef(const QImage& thumbnail);
    /// The one thing about pictures that any thread may ask; the answer may be out of date at once.
    [[nodiscard]] bool hasThumbnail() const {
        return _hasThumbnail.load(std::memory_order_relaxed);
    }
    void clearThumbnailRef() { setThumbnailRef({}); }
    /// What the large view keeps here; nullptr while there is none.
    [[nodiscard]] group::ItemImages* imageArray() const;
    void setImageArray(std::unique_ptr<group::ItemImages> imageArray);

    /// Whether the item shows under a search text, which its file name has to match, and the filter
    /// bits, of which all that are set have to be met.
    [[nodiscard]] bool
    isMatchedForSearchString(const group::SearchText& searchString, quint64 filter) const;

    /// -1, 0 or 1 by the sort type (group/ItemOrder.h); -2 where there is no defined order. Equal
    /// items have no further order.
    [[nodiscard]] std::int64_t sortCompare(const PBImageFileItem& other, int sortType) const;

    /// Where the file is; empty when the folder is unknown or its volume is not there.
    [[nodiscard]] QString filePath(const group::FolderPaths& folders) const;
    [[nodiscard]] QString
    filePath(const group::FolderPaths& folders, group::FolderPathCache& folderCache) const;
    /// Only folders that have a path are cached.
    [[nodiscard]] QString
    folderPath(const group::FolderPaths& folders, group::FolderPathCache& folderCache) const;
    /// The location of the image's GPS row; absent without a row. Missing coordinates count as 0.
    [[nodiscard]] PBValue locationWithDatabase(FMDatabase& database) const;

private:
    /// Kept apart because few items have pictures in memory at a time.
    struct Pictures {
        QImage thumbnail;
        std::unique_ptr<group::ItemImages> imageArray;
    };

    Pictures& pictures();

    const qint64 _fileId;
    const qint64 _folderId;
    group::ItemName _fileName;
    const quint64 _fileSize;
    const double _modifiedDate;
    std::atomic<double> _imageWidth{0};
    std::atomic<double> _imageHeight{0};
    std::atomic<double> _rotateAngle{0};
    std::unique_ptr<const PBValue> _sortData; // kept apart: most orders need none
    std::unique_ptr<Pictures> _pictures;
    std::atomic<quint32> _star{0};
    std::atomic<bool> _flagged{false};
    static inline std::atomic<std::int64_t> selectedItems = 0;
    std::atomic<bool> _isSelected{false};
    std::atomic<bool> _storedSelect{false};
    std::atomic<bool> _isAway{false};
    std::atomic<bool> _hasThumbnail{false};
};
