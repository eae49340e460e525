#pragma once

#include "codec/PBImageImporterProtocol.h"
#include "group/FolderPaths.h"
#include "image/PBPreloadThumbnailOperation.h"

#include <QString>

#include <memory>

class PBThumbnailBufferManager;

namespace platform {
class OperationQueue;
}

/// What the browser needs of the program. Main thread.
class BrowserServices {
public:
    virtual ~BrowserServices() = default;
    /// Loads through the main thread's connection.
    [[nodiscard]] virtual ThumbnailLoader& thumbnailLoader() = 0;
    /// That of the preload queue, for its thread only.
    [[nodiscard]] virtual ThumbnailLoader& preloadThumbnailLoader() = 0;
    [[nodiscard]] virtual platform::OperationQueue& preloadThumbnailOperationQueue() = 0;
    /// Its operations are known by the ids of the images for which they make thumbnails.
    [[nodiscard]] virtual platform::OperationQueue& buildThumbOperationQueue() = 0;
    /// For the image's file; nullptr where it is not known where that is.
    [[nodiscard]] virtual std::unique_ptr<PBImageImporterProtocol>
    imageImporter(const PBImageFileItem& item) = 0;
    [[nodiscard]] virtual PBThumbnailBufferManager& thumbnailBufferManager() = 0;
    [[nodiscard]] virtual const group::FolderPaths& folderPaths() const = 0;
    /// Empty for a tag without a text.
    [[nodiscard]] virtual QString tagWithTagId(qint64 tagId) const = 0;
    /// A folder by its path from the name of its root on; the path itself where it lies in none.
    [[nodiscard]] virtual QString folderTitle(const QString& path) const { return path; }
    /// The large view is shown in the browser's place.
    [[nodiscard]] virtual bool isLargeView() const = 0;
};
