#pragma once

#include "FMDB/FMDatabase.h"
#include "support/Support.h"

namespace support {

/// The rows that a statement gives, columns joined with "|", "NULL" for what is missing.
inline QStringList rowsOf(FMDatabase& db, const QString& sql) {
    QStringList rows;
    FMResultSet cursor = db.executeQuery(sql);
    while (cursor.next()) {
        QStringList columns;
        for (int i = 0; i < cursor.columnCount(); ++i)
            columns.append(
                cursor.columnIndexIsNull(i) ? u"NULL"_s : cursor.stringForColumnIndex(i));
        rows.append(columns.join(u'|'));
    }
    return rows;
}

/// Every metadata row has its image, every image its folder and is there once.
inline void expectConsistentCatalogue(FMDatabase& files) {
    for (const char* table : {"Exif", "ExifAux", "Tiff", "IPTC", "GPS"})
        EXPECT_EQ(
            rowsOf(
                files,
                u"select FileId from %1 where FileId not in (select Id from ImageFile)"_s.arg(
                    QLatin1StringView(table))),
            QStringList());
    for (const char* sql :
         {"select Id from ImageFile where FolderId not in (select Id from Folder)",
          "select FileName from ImageFile group by FolderId,FileName having count(*) > 1"})
        EXPECT_EQ(rowsOf(files, QString::fromLatin1(sql)), QStringList());
}

} // namespace support
