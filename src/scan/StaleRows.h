#pragma once

#include "scan/PBScanDictionary.h"
#include "scan/ScanSteps.h"

#include <unordered_map>
#include <vector>

namespace platform {
class Operation;
}

/// Asks of each folder root once whether it is there; a fresh object asks anew. On the scan thread.
class RootCheck {
public:
    explicit RootCheck(const PBScanDictionary& dictionary) : _dictionary(dictionary) {}
    /// Whether the root that the catalogued folder belongs to is mounted and there. False for a
    /// folder without one.
    [[nodiscard]] bool isRootThere(qint64 folderId);

private:
    const PBScanDictionary& _dictionary;
    std::unordered_map<qint64, qint64> _aliasIds; // by folder
    std::unordered_map<qint64, bool> _rootsThere; // by alias
};

/// Rows whose folders or files are gone from the disk, or whose files are others by now. On the
/// scan thread.
class StaleRows {
public:
    void addFolder(qint64 folderId) { _folderIds.push_back(folderId); }
    /// Takes a folder back that is still needed.
    void keepFolder(qint64 folderId) { std::erase(_folderIds, folderId); }
    void addFile(const LookedForFile& file) { _files.push_back(file); }

    /// Removes them from the catalogue, with their thumbnails. The roots are asked once more before
    /// that: rows of one that is not there stay, since its disk may have left since it was looked
    /// at.
    void remove(const PBScanDictionary& dictionary, const platform::Operation& operation);

private:
    std::vector<qint64> _folderIds;
    std::vector<LookedForFile> _files;
};
