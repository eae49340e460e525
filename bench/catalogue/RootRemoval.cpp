#include "catalogue/RootRemoval.h"

#include "FMDB/FMTransaction.h"
#include "catalogue/PBCatalogue.h"
#include "catalogue/PBRemoveAliasOperation.h"
#include "catalogue/PhotoRows.h"
#include "support/Ratio.h"
#include "support/Require.h"

#include <QFile>
#include <QTemporaryDir>

#include <sqlite3.h>

#include <cstdlib>
#include <thread>

namespace bench {

namespace {

constexpr int photoCount = 50'000;
constexpr int photosInFolder = 500;
/// Rows of so many photographs are made, and stored again and again.
constexpr int distinctPhotos = 2000;
constexpr int rounds = 5;
constexpr qint64 removedRoot = 1;

/// Two roots, the second with a tenth of the photographs.
class FullCatalogue {
public:
    FullCatalogue() {
        const auto photos = makePhotoRows(distinctPhotos);
        FMDatabase db(path());
        db.setShouldCacheStatements(true);
        require(db.open() && PBCatalogue(db).checkTables_FilesDb(), "making the tables");
        FMTransaction transaction(db);
        PBCatalogue catalogue(db);
        for (const int count : {photoCount, photoCount / 10}) {
            const qint64 aliasId = catalogue.insertFolderAliasWithData({}, 0, {}, 0);
            for (int number = 0; number < count; ++number) {
                if (number % photosInFolder == 0)
                    _folderId = catalogue.insertFolderWithAliasId(aliasId, QString::number(number));
                insert(catalogue, photos[static_cast<std::size_t>(number % distinctPhotos)]);
            }
        }
        require(transaction.commit(), "storing");
    }
    /// A copy to work on; the one before is lost.
    [[nodiscard]] QString fresh() const {
        const QString copy = _folder.filePath(QStringLiteral("files.db"));
        QFile::remove(copy);
        require(QFile::copy(path(), copy), "copying");
        return copy;
    }

private:
    [[nodiscard]] QString path() const { return _folder.filePath(QStringLiteral("full.db")); }
    void insert(PBCatalogue& catalogue, const PhotoRows& photo) {
        PBDictionary row = photo.rows[0].dictionary;
        row[QStringLiteral("FolderId")] = _folderId;
        const qint64 id = catalogue.insertImageFileWithDictionary(row);
        require(
            id > 0 && catalogue.insertExifWithImageFileId(id, photo.rows[1].dictionary) &&
                catalogue.insertTiffWithImageFileId(id, photo.rows[2].dictionary) &&
                catalogue.insertGPSWithImageFileId(id, photo.rows[3].dictionary),
            "inserting");
    }

    QTemporaryDir _folder;
    qint64 _folderId = 0;
};

double removeBare(const QString& path) {
    FMDatabase db(path);
    require(db.open(), "opening");
    constexpr const char* sql =
        "begin exclusive;"
        "delete from Exif where FileId in (select Id from ImageFile where FolderId in "
        "(select Id from Folder where AliasId = 1));"
        "delete from Tiff where FileId in (select Id from ImageFile where FolderId in "
        "(select Id from Folder where AliasId = 1));"
        "delete from GPS where FileId in (select Id from ImageFile where FolderId in "
        "(select Id from Folder where AliasId = 1));"
        "delete from ImageFile where FolderId in (select Id from Folder where AliasId = 1);"
        "delete from Folder where AliasId = 1;"
        "delete from FolderAlias where Id = 1;"
        "commit";
    return millisecondsOf([&] {
        require(
            sqlite3_exec(db.sqliteHandle(), sql, nullptr, nullptr, nullptr) == SQLITE_OK,
            "bare removal");
    });
}

double remove(const QString& path) {
    FMDatabase db(path);
    require(db.open(), "opening");
    return millisecondsOf([&] {
        require(
            PBRemoveAliasOperation::remove({{removedRoot}, removedRoot}, db), "removing the root");
    });
}

/// The longest time that a read on another connection takes while the root is removed.
double longestRead(const QString& path) {
    FMDatabase window(path);
    require(window.open(), "opening");
    std::jthread removing([&](const std::stop_token&) { remove(path); });
    double longest = 0;
    qint64 left = photoCount;
    while (left > 0) {
        longest = std::max(longest, millisecondsOf([&] {
                               FMResultSet row = window.executeQuery(
                                   QStringLiteral("select 1 from ImageFile where Id = 1"));
                               left = row.next() ? 1 : 0;
                           }));
    }
    return longest;
}

} // namespace

bool measureRootRemoval() {
    const FullCatalogue full;
    const bool met = printRatio(
        "a root of 50,000 photographs removed", rounds, [&] { return removeBare(full.fresh()); },
        [&] { return remove(full.fresh()); }, 1.5);
    double longest = longestRead(full.fresh());
    for (int round = 1; round < rounds; ++round)
        longest = std::min(longest, longestRead(full.fresh()));
    printFigure("longest read of others meanwhile", longest, "ms");
    return met;
}

} // namespace bench
