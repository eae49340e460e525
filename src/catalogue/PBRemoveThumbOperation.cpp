#include "catalogue/PBRemoveThumbOperation.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"

#include <utility>

PBRemoveThumbOperation::PBRemoveThumbOperation(std::vector<qint64> fileArray, FMDatabase& db)
    : _fileArray(std::move(fileArray)), _db(db) {}

void PBRemoveThumbOperation::main() {
    if (!_db.beginTransaction()) return;
    PBCatalogue catalogue(_db);
    for (const qint64 fileId : _fileArray) {
        if (isCancelled()) break;
        catalogue.removeThumbnailWithFileId(fileId);
    }
    if (!_db.commit()) _db.rollback();
}
