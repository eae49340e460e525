#pragma once

#include "browser/BrowserServices.h"
#include "group/PBImageFileItem.h"
#include "image/PBThumbnailBufferManager.h"
#include "platform/OperationQueue.h"

#include <QColor>
#include <QHash>

#include <atomic>
#include <mutex>
#include <set>

/// Thumbnails by file id; counts who asked for them.
class FakeThumbnails final : public ThumbnailLoader {
public:
    QImage loadThumbnail(const PBImageFileItem& item) override {
        const std::scoped_lock lock(mutex);
        ++loads;
        return pictures.value(item.fileId());
    }
    void insert(qint64 fileId, const QImage& picture) {
        const std::scoped_lock lock(mutex);
        pictures.insert(fileId, picture);
    }
    std::mutex mutex;
    QHash<qint64, QImage> pictures; // guarded by the mutex
    std::atomic<int> loads = 0;
};

/// A build of the build queue, as far as the browser can see.
class FakeBuild final : public platform::Operation {
public:
    explicit FakeBuild(qint64 id) : fileId(id) {}
    const qint64 fileId;

protected:
    void main() override {}
};

class FakeServices final : public BrowserServices, public group::FolderPaths {
public:
    FakeServices() { buildQueue.setSuspended(true); }
    ThumbnailLoader& thumbnailLoader() override { return thumbnails; }
    ThumbnailLoader& preloadThumbnailLoader() override { return preloaded; }
    platform::OperationQueue& preloadThumbnailOperationQueue() override { return preloadQueue; }
    platform::OperationQueue& buildThumbOperationQueue() override { return buildQueue; }
    std::optional<qint64> fileIdOfBuildThumb(const platform::Operation& operation) const override {
        const auto* build = dynamic_cast<const FakeBuild*>(&operation);
        return build ? std::optional(build->fileId) : std::nullopt;
    }
    PBThumbnailBufferManager& thumbnailBufferManager() override { return buffer; }
    const group::FolderPaths& folderPaths() const override { return *this; }
    QString tagWithTagId(qint64) const override { return {}; }
    bool isLargeView() const override { return largeView; }
    QString pathOfFolderId(qint64) const override { return QStringLiteral("/photos"); }

    FakeThumbnails thumbnails;
    FakeThumbnails preloaded;
    PBThumbnailBufferManager buffer{200};
    bool largeView = false;
    platform::OperationQueue buildQueue{QStringLiteral("build")};
    platform::OperationQueue preloadQueue{QStringLiteral("preload")}; // ends before the loaders
};
