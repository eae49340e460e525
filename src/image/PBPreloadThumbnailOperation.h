#pragma once

#include "platform/tasks/Operation.h"

#include <QImage>

#include <functional>
#include <memory>
#include <vector>

class PBImageFileItem;

/// Decoded thumbnails from where they are stored. An implementation belongs to one thread, together
/// with its connection.
class ThumbnailLoader {
public:
    virtual ~ThumbnailLoader() = default;
    /// The stored thumbnail as a decoded bitmap that can be drawn without conversion; a null image
    /// if there is none. The item itself stays as it is.
    [[nodiscard]] virtual QImage loadThumbnail(const PBImageFileItem& item) = 0;
};

/// An item whose thumbnail is wanted, and later the thumbnail.
struct PBPreloadThumbnailObject {
    std::shared_ptr<PBImageFileItem> imageFileItem;
    /// How many pixels of it are needed at most; empty for all.
    QSize pixels{};
    /// It is loaded although the item has one, which is too small by now.
    bool isAgain = false;
    QImage thumbnailRef{};
    bool isReduced = false; ///< there are more pixels than in `thumbnailRef`
};

/// The thumbnail with no more pixels than are needed; itself where it has no more on either side.
[[nodiscard]] QImage reducedThumbnail(const QImage& thumbnail, QSize pixels);

/// Decodes thumbnails ahead of scrolling, in the order given, on the preload queue. Each is handed
/// over on the main thread as soon as it is there.
class PBPreloadThumbnailOperation final : public platform::Operation {
public:
    using Finished = std::function<void(const PBPreloadThumbnailObject&)>;

    /// The loader is that of the preload queue and outlives the operation. `finished` runs on the
    /// main thread, possibly after the operation is gone.
    PBPreloadThumbnailOperation(
        std::vector<PBPreloadThumbnailObject> objects, ThumbnailLoader& loader, Finished finished);

protected:
    void main() override;

private:
    std::vector<PBPreloadThumbnailObject> _objects;
    ThumbnailLoader& _loader;
    const Finished _finished;
};
