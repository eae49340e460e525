#include "catalogue/marks/EditedRows.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/IdsText.h"

namespace marks {

std::optional<std::vector<ShownRow>> shownRows(FMDatabase& both, std::span<const qint64> fileIds) {
    std::vector<ShownRow> found;
    found.reserve(fileIds.size());
    FMResultSet row = both.executeQuery(
        QStringLiteral("select f.Id,min(max(ifnull(f.FileStars,0),0),5),ifnull(f.FileFlag,0) <> 0,"
                       "ifnull(f.RotateAngle,0),f.FileName,ifnull(m.Id,0) from json_each(?) i "
                       "join ImageFile f on f.Id = i.value left join Marks m on m.FileId = f.Id "
                       "order by i.key"),
        catalogue::idsText(fileIds));
    while (row.next()) {
        found.push_back(
            {.fileId = row.longLongIntForColumnIndex(0),
             .stars = row.intForColumnIndex(1),
             .flag = row.intForColumnIndex(2) != 0,
             .rotateAngle = row.doubleForColumnIndex(3),
             .fileName = row.stringForColumnIndex(4),
             .ledgerId = row.longLongIntForColumnIndex(5)});
    }
    if (row.hadError()) return std::nullopt;
    return found;
}

std::optional<std::vector<qint64>>
presentFileIds(FMDatabase& both, std::span<const qint64> ledgerIds) {
    std::vector<qint64> found;
    found.reserve(ledgerIds.size());
    FMResultSet row = both.executeQuery(
        QStringLiteral("select coalesce((select f.Id from Marks m join ImageFile f on "
                       "f.Id = m.FileId where m.Id = i.value),(select f.Id from Marks m "
                       "join ImageFile f on f.Id = m.FileId where m.InheritedFrom = i.value "
                       "limit 1),0) from json_each(?) i order by i.key"),
        catalogue::idsText(ledgerIds));
    while (row.next())
        found.push_back(row.longLongIntForColumnIndex(0));
    if (row.hadError()) return std::nullopt;
    return found;
}

} // namespace marks
