#include "catalogue/PBClearThumbOperation.h"

#include "FMDB/FMDatabase.h"

#include <utility>

PBClearThumbOperation::PBClearThumbOperation(
    FMDatabase& thumbnails, std::function<void(bool isCleared)> ended)
    : _thumbnails(thumbnails), _ended(std::move(ended)) {}

void PBClearThumbOperation::main() {
    const bool isCleared = _thumbnails.executeUpdate(QStringLiteral("delete from Thumbnail"));
    if (isCleared) {
        // Where one of these fails the file stays large, and its room is used again.
        if (_thumbnails.executeUpdate(QStringLiteral("vacuum"))) {
            FMResultSet checkpoint =
                _thumbnails.executeQuery(QStringLiteral("pragma wal_checkpoint(truncate)"));
            while (checkpoint.next()) {
            }
        }
    }
    _ended(isCleared);
}
