#include "scan/PBScanDatabaseFolderIdOperation.h"

#include "scan/CatalogueFolderScan.h"

std::shared_ptr<PBScanDatabaseFolderIdOperation>
PBScanDatabaseFolderIdOperation::scanDatabaseFolderIdOperationWithDictionary(
    PBScanDictionaryRef dictionary) {
    return std::make_shared<PBScanDatabaseFolderIdOperation>(std::move(dictionary));
}

void PBScanDatabaseFolderIdOperation::main() {
    CatalogueFolderScan scan(_dictionary, *this);
    for (const ScanDatabaseFolder& folder : _dictionary->ScanDatabaseFolderIdArray) {
        if (isCancelled()) return;
        scan.drain();
        const auto presence = scan.checkFolder(folder.folderId, folder.folderPath);
        scan.drain();
        const auto rows = folder.rows ? *folder.rows : scan.fetchRows(folder.folderId);
        scan.drain();
        scan.scanRows(folder.folderPath, presence, rows, false);
    }
    if (isCancelled()) return;
    scan.publishRest();
    scan.removeStale();
}
