#pragma once

#include "image/BrowserOrder.h"
#include "image/PBIndexObject.h"

#include <QImage>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class PBImageFileItem;

/// Bounds how many items hold a decoded thumbnail, and how many bytes these take: they form a range
/// in the order of the browser, and a further one drops from the end of the range which lies
/// farther away. Positions are those of the time of the push; a tree that has grown since only
/// makes the choice poorer. Main thread.
class PBThumbnailBufferManager {
public:
    /// Three pages of a large screen at 4 bytes for each of its pixels.
    static constexpr qsizetype usualByteLimit = qsizetype{96} << 20;

    /// A limit of 0 counts as 1.
    explicit PBThumbnailBufferManager(std::uint64_t bufferCount);

    /// Outlives this object or is taken away by nullptr: then no image is shown.
    void setBrowserOrder(const BrowserOrder* order) { _order = order; }

    /// Takes an item that has got its thumbnail into the range; without a position the browser is
    /// asked. An item that is not shown loses its thumbnail instead.
    void pushImageFileItem(
        std::shared_ptr<PBImageFileItem> item,
        std::optional<PBImageBrowserIndex> index = std::nullopt);
    /// Gives the item this thumbnail and takes it into the range; false if the item has one of as
    /// many pixels.
    bool applyPreloadThumbnail(
        const std::shared_ptr<PBImageFileItem>& item, const QImage& thumbnail,
        std::optional<PBImageBrowserIndex> index = std::nullopt);
    /// Takes the thumbnails from all items of the range.
    void clearThumbnailBuffer();

    [[nodiscard]] PBImageBrowserIndex imageFileItemIndex(const PBImageFileItem& item) const;

    [[nodiscard]] std::uint64_t bufferCount() const { return _bufferCount; }
    /// Takes effect with the next push, which drops one thumbnail at most.
    void setBufferCount(std::uint64_t count) { _bufferCount = count == 0 ? 1 : count; }
    [[nodiscard]] std::uint64_t imageFileItemCount() const { return _imageFileItemCount; }
    /// Of all thumbnails in the range. The last one pushed stays, whatever its size.
    void setByteLimit(qsizetype bytes) { _byteLimit = bytes; }
    [[nodiscard]] qsizetype byteCount() const { return _byteCount; }

private:
    struct Held {
        std::shared_ptr<PBImageFileItem> item;
        qsizetype bytes = 0; // when it was pushed
    };
    using ItemEntry = PBIndexObject<Held>;
    using ItemEntries = std::vector<std::unique_ptr<ItemEntry>>;
    using GroupEntry = PBIndexObject<ItemEntries>;

    void makeRoom(const PBImageFileItem& item, const PBImageBrowserIndex& index);
    [[nodiscard]] bool shouldDropFront(const PBImageBrowserIndex& index) const;
    /// Images between two positions, folded leaves left out.
    [[nodiscard]] std::int64_t
    distance(const PBImageBrowserIndex& from, const PBImageBrowserIndex& to) const;
    void dropFront(const PBImageFileItem& keep);
    void dropBack(const PBImageFileItem& keep);
    /// Takes it out of the range, with its thumbnail.
    void forget(const PBImageFileItem& item);

    const BrowserOrder* _order = nullptr;
    std::vector<std::unique_ptr<GroupEntry>> _groupIndexObjectArray; // none of them is empty
    std::uint64_t _imageFileItemCount = 0;
    std::uint64_t _bufferCount;
    qsizetype _byteCount = 0;
    qsizetype _byteLimit = usualByteLimit;
};
