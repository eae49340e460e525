#include "catalogue/StoredThumbnails.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/IdsText.h"

bool StoredThumbnails::contains(FMDatabase& thumbnailDb, qint64 fileId) {
    if (!_stored) {
        _stored.emplace();
        FMResultSet found = thumbnailDb.executeQuery(
            QStringLiteral("select FileId from Thumbnail where FileId in "
                           "(select value from json_each(?))"),
            catalogue::idsText(_fileIds));
        while (found.next())
            _stored->insert(found.longLongIntForColumnIndex(0));
    }
    return _stored->contains(fileId);
}
