#include "app/CatalogueConnections.h"

#include "FMDB/FMDatabase.h"
#include "app/CatalogueFiles.h"
#include "catalogue/CatalogueIdentity.h"
#include "catalogue/DatabaseFile.h"
#include "catalogue/PBCatalogue.h"
#include "platform/program/StandardError.h"

#include <QFile>

namespace {

using Prepare = CatalogueConnections::Prepare;

std::unique_ptr<FMDatabase> openFile(const QString& name, const Prepare& prepare) {
    auto connection = FMDatabase::databaseWithFileName(name);
    if (prepare) prepare(*connection);
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
        // Where it can't be had, storing is slower, and that is all.
        FMResultSet result = connection.executeQuery(pragma);
        while (result.next()) {
        }
    }
}

/// Opening says nothing of what is in the file; the first statement does.
bool isUsable(FMDatabase& connection) {
    return PBCatalogue(connection).isTableExist(QStringLiteral("Version"));
}

void tellIfUnusable(FMDatabase& connection) {
    if (isUsable(connection)) return;
    platform::complain(
        QStringLiteral("the catalogue file %1 can't be used (%2); it is left as it is, and nothing "
                       "is kept in it")
            .arg(connection.databasePath(), connection.lastErrorMessage()));
}

/// Thumbnails can all be made again: a damaged file of them makes room for a new one.
std::unique_ptr<FMDatabase> openReadableThumbnails(const Prepare& prepare) {
    auto connection = openFile(CatalogueFiles::thumbnails, prepare);
    PBCatalogue(*connection).checkTables_Thumbnail();
    if (!isUsable(*connection) && connection->isFileDamaged()) {
        const QString path = connection->databasePath();
        const QString reason = connection->lastErrorMessage();
        connection->close();
        // One is enough to find out what happened.
        QFile::remove(path + QStringLiteral(".damaged"));
        const QString aside = DatabaseFile::moveAside(path);
        connection = openFile(CatalogueFiles::thumbnails, prepare);
        PBCatalogue(*connection).checkTables_Thumbnail();
        if (!aside.isEmpty() && isUsable(*connection)) {
            platform::complain(
                QStringLiteral("the thumbnails in %1 can't be read (%2); the file is now %3, and "
                               "thumbnails are made again")
                    .arg(path, reason, aside));
            return connection;
        }
    }
    tellIfUnusable(*connection);
    return connection;
}

bool removeDatabase(const QString& path) {
    for (const char* beside : {"-journal", "-wal", "-shm"})
        QFile::remove(path + QLatin1StringView(beside));
    return QFile::remove(path);
}

/// Thumbnails of another catalogue make room for new ones. A closed connection where they can't.
std::unique_ptr<FMDatabase> openThumbnails(FMDatabase& files, const Prepare& prepare) {
    using CatalogueIdentity::Match;
    auto connection = openReadableThumbnails(prepare);
    if (CatalogueIdentity::match(files, *connection) != Match::Differ) return connection;
    connection->close();
    const QString path = connection->databasePath();
    if (removeDatabase(path)) {
        connection = openReadableThumbnails(prepare);
        if (CatalogueIdentity::match(files, *connection) != Match::Differ) return connection;
        connection->close();
    }
    platform::complain(
        QStringLiteral("the thumbnails in %1 are those of another catalogue, and can't be removed; "
                       "none are shown or kept")
            .arg(path));
    return connection;
}

} // namespace

CatalogueConnections::CatalogueConnections(const Prepare& prepare) {
    _mainFileDb = openFile(CatalogueFiles::files, prepare);
    PBCatalogue(*_mainFileDb).checkTables_FilesDb();
    tellIfUnusable(*_mainFileDb);
    _mainThumbDb = openThumbnails(*_mainFileDb, prepare);
    _scanFileDb = openFile(CatalogueFiles::files, prepare);
    const bool hasThumbnails = _mainThumbDb->sqliteHandle() != nullptr;
    for (auto* connection : {&_preloadThumbDb, &_buildThumbDb}) {
        *connection = hasThumbnails ? openFile(CatalogueFiles::thumbnails, prepare)
                                    : FMDatabase::databaseWithFileName(CatalogueFiles::thumbnails);
    }
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
