#include "catalogue/PBCatalogue.h"

#include "FMDB/FMDatabase.h"
#include "FMDB/FMTransaction.h"

#include <algorithm>

bool PBCatalogue::checkTables_FilesDb() {
    return checkTables(CatalogueSchema::filesTables(), CatalogueSchema::filesIndexes());
}

bool PBCatalogue::checkTables_Thumbnail() {
    return checkTables(CatalogueSchema::thumbnailTables(), {});
}

bool PBCatalogue::checkTables(
    std::span<const CatalogueTable> tables, std::span<const CatalogueIndex> indexes) {
    const auto isThere = [this](const CatalogueTable& table) {
        return isTableExist(table.name.toString());
    };
    if (!std::ranges::all_of(tables, isThere)) {
        // So a new file is written to disk once and never half made.
        FMTransaction transaction(_db);
        for (const CatalogueTable& table : tables) {
            if (!isThere(table) && transaction.isOpen()) createTable(table);
        }
        static_cast<void>(transaction.commit());
    }
    for (const CatalogueIndex& index : indexes)
        executeUpdateWithSql(CatalogueSchema::createStatement(index));
    return std::ranges::all_of(tables, isThere);
}

bool PBCatalogue::createTable(const CatalogueTable& table) {
    if (!executeUpdateWithSql(CatalogueSchema::createStatement(table))) return false;
    if (table.name != u"Version") return true;
    return executeUpdateWithFormatSql(
        QStringLiteral("insert into %1 values ('%2')"), table.name, CatalogueSchema::schemaVersion);
}

bool PBCatalogue::isTableExist(const QString& name) {
    FMResultSet row = _db.executeQuery(
        QStringLiteral(
            "select count(*) as 'count' from sqlite_master where type ='table' and name = ?"),
        name);
    return row.next() && row.intForColumn(QStringLiteral("count")) > 0;
}

bool PBCatalogue::executeUpdateWithSql(const QString& sql) {
    return _db.executeUpdate(sql);
}
