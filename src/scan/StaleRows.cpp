#include "scan/StaleRows.h"

#include "catalogue/PBCatalogue.h"
#include "library/RootPresence.h"
#include "scan/ScanServices.h"

bool RootCheck::isRootThere(qint64 folderId) {
    auto aliasId = _aliasIds.find(folderId);
    if (aliasId == _aliasIds.end()) {
        const PBArray row = PBCatalogue(*_dictionary.Database)
                                .folderDataWithIdAndFields(folderId, {QStringLiteral("AliasId")});
        aliasId = _aliasIds.emplace(folderId, row.empty() ? 0 : row.front().toInteger()).first;
    }
    const auto known = _rootsThere.find(aliasId->second);
    if (known != _rootsThere.end()) return known->second;
    const auto root = _dictionary.services->aliasManager.findAliasObjectById(aliasId->second);
    return _rootsThere.emplace(aliasId->second, root && ::isRootThere(*root)).first->second;
}

void StaleRows::remove(const PBScanDictionary& dictionary, const platform::Operation& operation) {
    RootCheck roots(dictionary);
    std::erase_if(_folderIds, [&](qint64 folderId) { return !roots.isRootThere(folderId); });
    std::erase_if(
        _files, [&](const LookedForFile& file) { return !roots.isRootThere(file.folderId); });
    removeFromCatalogue(dictionary, _folderIds, _files, operation);
}
