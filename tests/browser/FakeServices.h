#pragma once

#include "browser/feed/BrowserServices.h"
#include "group/PBImageFileItem.h"
#include "image/PBThumbnailBufferManager.h"
#include "platform/tasks/Mutex.h"
#include "platform/tasks/OperationQueue.h"
#include "support/Support.h"

#include <QColor>
#include <QHash>

/// Thumbnails by file id; notes which were asked for.
struct FakeThumbnails final : ThumbnailLoader {
    QImage loadThumbnail(const PBImageFileItem& item) override {
        const platform::Lock lock(mutex);
        asked.push_back(item.fileId());
        return pictures.value(item.fileId());
    }
    QList<qint64> takeAsked() {
        const platform::Lock lock(mutex);
        return std::exchange(asked, {});
    }
    void insert(qint64 fileId, const QImage& picture) {
        const platform::Lock lock(mutex);
        pictures.insert(fileId, picture);
    }
    platform::Mutex mutex;
    QList<qint64> asked VELMORA_GUARDED_BY(mutex);
    QHash<qint64, QImage> pictures VELMORA_GUARDED_BY(mutex);
};

/// A build of the build queue, as far as the browser can see.
struct FakeBuild final : platform::Operation {
    using Operation::Operation;

protected:
    void main() override {}
};

struct FakeServices final : BrowserServices, group::FolderPaths {
    FakeServices() { buildQueue.setSuspended(true); }
    ThumbnailLoader& thumbnailLoader() override { return thumbnails; }
    ThumbnailLoader& preloadThumbnailLoader() override { return preloaded; }
    platform::OperationQueue& preloadThumbnailOperationQueue() override { return preloadQueue; }
    platform::OperationQueue& buildThumbOperationQueue() override { return buildQueue; }
    std::unique_ptr<PBImageImporterProtocol> imageImporter(const PBImageFileItem& item) override {
        return makeImporter ? makeImporter(item) : nullptr;
    }
    PBThumbnailBufferManager& thumbnailBufferManager() override { return buffer; }
    const group::FolderPaths& folderPaths() const override { return *this; }
    QString tagWithTagId(qint64) const override { return {}; }
    QString folderTitle(const QString& path) const override {
        return rootTitle.isEmpty() ? path : rootTitle + path.sliced(u"/photos"_s.size());
    }
    bool isLargeView() const override { return largeView; }
    QString pathOfFolderId(qint64) const override { return u"/photos"_s; }

    FakeThumbnails thumbnails;
    FakeThumbnails preloaded;
    std::function<std::unique_ptr<PBImageImporterProtocol>(const PBImageFileItem&)> makeImporter;
    PBThumbnailBufferManager buffer{200};
    bool largeView = false;
    QString rootTitle; ///< of "/photos"; empty for the path itself
    platform::OperationQueue buildQueue{u"build"_s};
    platform::OperationQueue preloadQueue{u"preload"_s}; // ends before the loaders
};
