#include "catalogue/marks/TurnedFile.h"

#include "FMDB/FMDatabase.h"

std::optional<int> marks::rotationOfFile(
    FMDatabase& both, const QByteArray& path, qint64 size, double modificationDate) {
    FMResultSet row = both.executeQuery(
        QStringLiteral("select Rotation from Marks where Size = ? and ModificationDate = ? and "
                       "Rotation is not null and cast(case when ifnull(RootPath,x'') = x'' then "
                       "RelativePath else RootPath||'/'||RelativePath end as blob) = ?"),
        size, modificationDate, path);
    return row.next() ? std::optional(row.intForColumnIndex(0)) : std::nullopt;
}
