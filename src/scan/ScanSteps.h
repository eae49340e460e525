#pragma once

#include "codec/PBImageImporterProtocol.h"
#include "group/PBImageFileItem.h"
#include "scan/PBScanDictionary.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class MissingThumbsOperation;

/// Steps that the operations of a scan share. On the scan thread.

/// Sends a copy of the work tree to the display, unless rewritten photographs are off it: then the
/// one goes that is sent when they are back.
void publishWorkTree(const PBScanDictionary& dictionary, bool updateScrollCapture = false);

/// The row as the catalogue has it now, of a photograph that was edited since it was read; nothing
/// where it is gone by now, or can't be read.
[[nodiscard]] std::optional<group::ImageFileRow>
rowAnew(const PBScanDictionary& dictionary, qint64 fileId);

/// The operations that build the thumbnails of items, on their way to the build queue: a few go
/// there together, since each arrival wakes the queue. What is left when this goes away is dropped.
class ThumbnailsToBuild {
public:
    explicit ThumbnailsToBuild(const PBScanDictionary& dictionary);
    ~ThumbnailsToBuild();
    /// Of a new file. Nothing happens without an importer.
    void add(const PBImageFileItem& item, std::unique_ptr<PBImageImporterProtocol> importer);
    /// Of one that the catalogue has had already: most of these are stored.
    void addKnown(const PBImageFileItem& item, const QString& folderPath, const QString& fileName);
    void queueAll();

private:
    const PBScanDictionary& _dictionary;
    std::vector<std::shared_ptr<platform::Operation>> _operations;
    /// One of them, which takes all that are known.
    std::shared_ptr<MissingThumbsOperation> _known;
};

/// A row of an image, and where its file was looked for.
struct LookedForFile {
    qint64 fileId;
    qint64 folderId;
    QString fileName;
};

/// Removes folders and images with their metadata from the catalogue in one transaction, and, once
/// that is stored, queues the removal of their thumbnails. An image whose row has another folder or
/// name since, as its file that the program itself moved, stays. Nothing happens when there is
/// nothing to remove.
void removeFromCatalogue(
    const PBScanDictionary& dictionary, const std::vector<qint64>& folderIds,
    const std::vector<LookedForFile>& files, const platform::Operation& operation);

/// Tells the user, once, that a file could not be read and waits for another scan.
void tellUnreadFile(const PBScanDictionary& dictionary, const QString& path);

/// Tells the user, once, that a statement, the last one, could not read the catalogue to its end.
void tellUnreadCatalogue(const PBScanDictionary& dictionary);
