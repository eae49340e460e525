#pragma once

#include "FMDB/FMDatabase.h"
#include "support/Support.h"

#include <QtEndian>

namespace support {

/// An open connection; of memory without a path.
struct Database : FMDatabase {
    explicit Database(const QString& path = {}) : FMDatabase(path) { EXPECT_TRUE(open()); }
};

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

inline QStringList rowsOf(const QString& path, const QString& sql) {
    FMDatabase db(path);
    return db.open() ? rowsOf(db, sql) : QStringList();
}

inline qint64 addTag(FMDatabase& db, const QString& tag) {
    EXPECT_TRUE(db.executeUpdate(u"insert into Tags (Tag,UseCount) values (?,1)"_s, tag));
    return db.lastInsertRowId();
}

/// Statements such as "delete on Folder" fail until they are permitted again.
inline void refuse(FMDatabase& db, const QString& statements) {
    const QString sql = u"create trigger Refusal before %1 begin select raise(abort, 'no'); end"_s;
    EXPECT_TRUE(db.executeUpdate(sql.arg(statements)));
}
inline void permit(FMDatabase& db) {
    EXPECT_TRUE(db.executeUpdate(u"drop trigger if exists Refusal"_s));
}

/// The entries of a dictionary, told as "FileStars=4 Make=Canon"; what reads as a number is one.
inline PBDictionary entries(const char* told) {
    PBDictionary all;
    for (const QString& entry : words(told)) {
        const QString value = entry.section(u'=', 1);
        bool isWhole = false;
        bool isNumber = false;
        const qint64 whole = value.toLongLong(&isWhole);
        const double number = value.toDouble(&isNumber);
        all[entry.section(u'=', 0, 0)] = isWhole    ? PBValue(whole)
                                         : isNumber ? PBValue(number)
                                                    : PBValue(value);
    }
    return all;
}

/// SQLite's counter of the transactions that changed the file.
inline int storedChanges(const FMDatabase& db) {
    QFile file(db.databasePath());
    EXPECT_TRUE(file.open(QIODevice::ReadOnly) && file.seek(24));
    return qFromBigEndian<int>(file.read(4).constData());
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
