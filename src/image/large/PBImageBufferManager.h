#pragma once

#include "image/large/LargeImageScreen.h"

#include <QtGlobal>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

class PBImageFileItem;
class PBLoadImageManager;

/// Bounds which items may hold fit-in pictures, and how many bytes these take. What lies farthest
/// from where the user stands goes first. Main thread.
class PBImageBufferManager {
public:
    static constexpr std::size_t mostItems = 15;
    using Items = std::span<const std::shared_ptr<PBImageFileItem>>;

    /// A sixteenth of the machine's memory.
    [[nodiscard]] static qint64 usualByteLimit();
    /// The manager, which knows the screen, outlives this object.
    explicit PBImageBufferManager(
        const PBLoadImageManager& loadImageManager, qint64 byteLimit = usualByteLimit());

    /// The item has got pictures; those in `keepItems` (what is on screen) keep theirs. Nothing for
    /// an item that is there, whose index stays as it is, but for the bytes: beyond their limit
    /// pictures go, but never those of the item pushed or of its neighbours by index.
    void pushImageFileItem(
        const std::shared_ptr<PBImageFileItem>& item, std::int64_t index, Items keepItems = {});
    /// Takes the fit-in pictures from all items: the large view is left, or memory is short.
    void clearBuffer();
    /// The screen has other colours: what was loaded for the former ones is shown until it has been
    /// loaded anew.
    void screenDidChange();
    /// A scan brought the photograph again as another item, which takes over the pictures; they are
    /// shown until they have been loaded anew where the file has changed.
    void itemWasReplaced(
        const std::shared_ptr<PBImageFileItem>& former,
        const std::shared_ptr<PBImageFileItem>& item);

    [[nodiscard]] std::size_t itemCount() const { return _imageFileArray.size(); }
    /// Of all pictures of the items here, originals included.
    [[nodiscard]] qint64 byteCount() const;

private:
    struct Held {
        std::shared_ptr<PBImageFileItem> item;
        std::int64_t index = 0;
    };
    /// Lets the farthest go that is not to be kept; false when all are.
    bool dropFarthest(std::int64_t index, Items keepItems, std::int64_t keepDistance);

    const PBLoadImageManager& _loadImageManager;
    const qint64 _byteLimit;
    std::vector<Held> _imageFileArray;
};
