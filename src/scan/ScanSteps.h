#pragma once

#include "group/PBImageFileItem.h"
#include "image/ImageImporters.h"
#include "scan/PBScanDictionary.h"

#include <functional>
#include <memory>
#include <vector>

/// Steps that the operations of a scan share. On the scan thread.

/// Sends a copy of the work tree to the display.
void publishWorkTree(const PBScanDictionary& dictionary, bool updateScrollCapture = false);

/// Queues the operation that builds the item's thumbnail.
void buildThumbnail(
    const PBScanDictionary& dictionary, const PBImageFileItem& item,
    std::unique_ptr<image::ImageImporter> importer, bool checkExist);

/// Removes folders and images with their metadata from the catalogue in one transaction, and queues
/// the removal of their thumbnails. Nothing happens when there is nothing to remove.
void removeFromCatalogue(
    const PBScanDictionary& dictionary, const std::vector<qint64>& folderIds,
    const std::vector<qint64>& fileIds, const platform::Operation& operation);
