#pragma once

#include "codec/process/MemoryBudget.h"

#include <QtGlobal>

#include <cstdint>
#include <functional>
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
    struct Environment {
        /// Knows the screen and the focus; tells when the screen's colours change.
        PBLoadImageManager& loadImageManager;
        /// Of all fit-in pictures together.
        qint64 byteLimit = usualByteLimit();
        /// Bytes that the machine could give now: where they run short, less is kept.
        std::function<std::uint64_t()> availableMemory = &codec::process::availableMemory;
    };
    explicit PBImageBufferManager(Environment environment);
    ~PBImageBufferManager();
    PBImageBufferManager(const PBImageBufferManager&) = delete;
    PBImageBufferManager& operator=(const PBImageBufferManager&) = delete;

    /// The item has got pictures. Of 15 or more items the one farthest from the index loses its
    /// own, but those in `keepItems`, which are on screen, keep theirs. An item that is there keeps
    /// its index. Beyond the limit of bytes the farthest from the focus go, whoever they are, but
    /// never those of the focus and of its neighbours.
    void pushImageFileItem(
        const std::shared_ptr<PBImageFileItem>& item, std::int64_t index, Items keepItems = {});
    /// Takes all pictures from all items: the large view is left, or memory is short.
    void clearBuffer();
    /// A scan brought the photograph again as another item, which takes over the pictures and what
    /// is being loaded; they are shown until they have been loaded anew where the file has changed.
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
    /// What was loaded for the screen's former colours is shown until it has been loaded anew.
    void coloursDidChange();
    /// False when all are kept.
    bool dropFarthest(std::int64_t index, const std::function<bool(const Held&)>& isKept);
    void letGo(const Held& held) const;
    void keepWithinBytes(std::int64_t index);
    [[nodiscard]] qint64 byteLimit() const;
    [[nodiscard]] qint64 fitInBytes() const;

    const Environment _environment;
    std::vector<Held> _imageFileArray;
};
