#pragma once

#include "group/FolderPaths.h"
#include "group/PBImageFileItem.h"
#include "platform/files/Presence.h"
#include "scan/RowSpelling.h"
#include "scan/StaleRows.h"

#include <QSet>
#include <QStringList>

#include <unordered_map>

class MarksRestorer;
class RewrittenFiles;

/// Tests images on display against the disk, each folder once. On the scan thread.
class FileItemCheck {
public:
    /// Of the rewritten files, which are given by their paths, those that differ from their items
    /// in size or date are gone, too: as what the catalogue has of them. `onlyRewritten`: no other
    /// is looked at.
    FileItemCheck(
        const PBScanDictionary& dictionary, const QStringList& rewrittenFiles,
        bool onlyRewritten = false);

    /// Whether the file is gone; its row is stale then. An image that can't be looked at, or whose
    /// root is not there, stays and is marked as away.
    [[nodiscard]] bool isGone(PBImageFileItem& item);

    [[nodiscard]] StaleRows& staleRows() { return _staleRows; }
    /// Images found to be gone, but for those that will be back.
    [[nodiscard]] std::size_t goneCount() const { return _goneCount; }
    /// Images that are away now and were not, or the reverse.
    [[nodiscard]] std::size_t markedCount() const { return _markedCount; }

private:
    struct Folder {
        QString path;
        platform::Presence presence = platform::Presence::Unknown;
    };

    [[nodiscard]] platform::Presence presenceOf(const PBImageFileItem& item);
    [[nodiscard]] bool isRewritten(const PBImageFileItem& item);
    [[nodiscard]] const Folder& folderOf(qint64 folderId);

    const group::CatalogueFolderPaths _paths;
    const QSet<QString> _rewrittenFiles;
    const bool _onlyRewritten;
    RewrittenFiles& _rewritten;
    const MarksRestorer* _marks; ///< nullptr: marks don't come back
    RootCheck _roots;
    RowSpelling _spelling;
    std::unordered_map<qint64, Folder> _folders;
    StaleRows _staleRows;
    std::size_t _goneCount = 0;
    std::size_t _markedCount = 0;
};
