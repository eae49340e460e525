#include "scan/FileItemCheck.h"

#include "platform/files/FileManager.h"
#include "platform/files/PathNames.h"
#include "scan/ScanServices.h"
#include "scan/marks/MarksRestorer.h"

using platform::Presence;

FileItemCheck::FileItemCheck(
    const PBScanDictionary& dictionary, const QStringList& rewrittenFiles, bool onlyRewritten)
    : _paths(*dictionary.Database, dictionary.services->aliasManager),
      _rewrittenFiles(rewrittenFiles.begin(), rewrittenFiles.end()), _onlyRewritten(onlyRewritten),
      _rewritten(*dictionary.services->rewritten), _marks(dictionary.services->marks),
      _roots(dictionary), _spelling(*dictionary.services) {}

bool FileItemCheck::isGone(PBImageFileItem& item) {
    // Asked for before the look: the user may give it another one meanwhile.
    const LookedForFile lookedFor{item.fileId(), item.folderId(), item.fileName()};
    if (isRewritten(item)) {
        _staleRows.addFile(lookedFor);
        _rewritten.add(item);
        return true;
    }
    if (_onlyRewritten) return false;
    const Presence presence = presenceOf(item);
    if (presence == Presence::Gone) {
        _staleRows.addFile(lookedFor);
        ++_goneCount;
        return true;
    }
    const bool isAway = presence == Presence::Unknown;
    if (isAway != item.isAway()) {
        item.setIsAway(isAway);
        ++_markedCount;
    }
    return false;
}

Presence FileItemCheck::presenceOf(const PBImageFileItem& item) {
    const Folder& folder = folderOf(item.folderId());
    Presence presence = folder.presence;
    if (presence == Presence::There) {
        const QString path = platform::pathInFolder(folder.path, item.fileName());
        const auto look = platform::FileManager::look(path);
        presence = _spelling.presenceOfFile(folder.path, item.fileName(), look.presence);
        // Whose marks it has is to be found out.
        if (presence == Presence::There && _marks &&
            _marks->isReplaced(item.fileId(), look.values)) {
            presence = Presence::Gone;
        }
    }
    // Asked after the look: what a disk leaves behind when it goes is an empty folder.
    const bool isKnown = presence != Presence::Gone || _roots.isRootThere(item.folderId());
    return isKnown ? presence : Presence::Unknown;
}

bool FileItemCheck::isRewritten(const PBImageFileItem& item) {
    if (_rewrittenFiles.isEmpty()) return false;
    const Folder& folder = folderOf(item.folderId());
    const QString path = platform::pathInFolder(folder.path, item.fileName());
    if (folder.presence != Presence::There || !_rewrittenFiles.contains(path)) return false;
    const auto look = platform::FileManager::look(path);
    return look.presence == Presence::There &&
           (static_cast<quint64>(look.values.fileSize) != item.fileSize() ||
            look.values.modificationDate != item.modifiedDate()) &&
           _roots.isRootThere(item.folderId());
}

const FileItemCheck::Folder& FileItemCheck::folderOf(qint64 folderId) {
    const auto known = _folders.find(folderId);
    if (known != _folders.end()) return known->second;
    Folder folder{_paths.pathOfFolderId(folderId)};
    // Without a path, as long as its root is away, nothing is known of a folder.
    if (!folder.path.isEmpty()) {
        folder.presence = _spelling.presenceOfFolder(
            folder.path, platform::FileManager::look(folder.path).presence);
    }
    if (folder.presence == Presence::Gone) _staleRows.addFolder(folderId);
    return _folders.emplace(folderId, std::move(folder)).first->second;
}
