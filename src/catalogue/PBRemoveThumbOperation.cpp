#include "catalogue/PBRemoveThumbOperation.h"

#include "FMDB/FMTransaction.h"
#include "catalogue/PBCatalogue.h"

#include <utility>

PBRemoveThumbOperation::PBRemoveThumbOperation(std::vector<qint64> fileArray, FMDatabase& db)
    : _fileArray(std::move(fileArray)), _db(db) {}

void PBRemoveThumbOperation::main() {
    FMTransaction transaction(_db);
    PBCatalogue catalogue(_db);
    for (const qint64 fileId : _fileArray) {
        if (isCancelled()) break;
        if (!transaction.isOpen() || !catalogue.removeThumbnailWithFileId(fileId)) return;
    }
    // What stays for want of a commit has no row in the catalogue, and nobody asks for it.
    static_cast<void>(transaction.commit());
}
