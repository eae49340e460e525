#include "app/CatalogueConnections.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "platform/StandardError.h"

namespace {

const QString filesName = QStringLiteral("files.db");
const QString thumbnailName = QStringLiteral("thumbnail.db");

std::unique_ptr<FMDatabase> openFile(const QString& name) {
    auto connection = FMDatabase::databaseWithFileName(name);
    // The catalogue's statements come again and again: kept, they cost a third.
    connection->setShouldCacheStatements(true);
    connection->open();
    return connection;
}

/// Thumbnails are stored one by one, and each wait for the disk would cost ten times what a small
/// picture does. After a loss of power the last ones may be missing; they are built again.
void storeWithoutWaiting(FMDatabase& connection) {
    for (const QString& pragma :
         {QStringLiteral("pragma journal_mode = wal"),
          QStringLiteral("pragma synchronous = normal")}) {
        FMResultSet result = connection.executeQuery(pragma);
        while (result.next()) {
        }
    }
}

/// Opening says nothing of what is in the file; the first statement does.
void tellIfUnusable(FMDatabase& connection) {
    if (PBCatalogue(connection).isTableExist(QStringLiteral("Version"))) return;
    platform::complain(
        QStringLiteral("the catalogue file %1 can't be used (%2); it is left as it is, and nothing "
                       "is kept in it")
            .arg(connection.databasePath(), connection.lastErrorMessage()));
}

} // namespace

CatalogueConnections::CatalogueConnections() {
    _mainFileDb = openFile(filesName);
    PBCatalogue(*_mainFileDb).checkTables_FilesDb();
    tellIfUnusable(*_mainFileDb);
    _mainThumbDb = openFile(thumbnailName);
    PBCatalogue(*_mainThumbDb).checkTables_Thumbnail();
    tellIfUnusable(*_mainThumbDb);
    _scanFileDb = openFile(filesName);
    _preloadThumbDb = openFile(thumbnailName);
    _buildThumbDb = openFile(thumbnailName);
    storeWithoutWaiting(*_buildThumbDb);
}

CatalogueConnections::~CatalogueConnections() {
    close();
}

void CatalogueConnections::close() {
    for (auto* connection :
         {&_mainFileDb, &_mainThumbDb, &_scanFileDb, &_preloadThumbDb, &_buildThumbDb}) {
        if (*connection) (*connection)->close();
        connection->reset();
    }
}
