// What the information panel costs that is about 10,000 photographs: both pages against a bare
// select of the same columns for each of them, and the longest time that the main thread reads.

#include "FMDB/FMTransaction.h"
#include "catalogue/CatalogueSchema.h"
#include "catalogue/PBCatalogue.h"
#include "catalogue/PhotoRows.h"
#include "group/FolderPaths.h"
#include "info/reading/SelectionReading.h"
#include "support/Ratio.h"
#include "support/Require.h"

#include <QTemporaryDir>

#include <algorithm>

namespace {

using bench::millisecondsOf;
using bench::require;

constexpr int photographs = 10'000;
constexpr int rounds = 9;
constexpr double mostRatio = 1.5;
constexpr double longestWait = 50; // milliseconds

struct OneFolder final : group::FolderPaths {
    QString pathOfFolderId(qint64) const override { return QStringLiteral("/pictures/trip"); }
};

struct Catalogue {
    Catalogue() {
        require(db.open(), "open");
        db.setShouldCacheStatements(true);
        PBCatalogue catalogue(db);
        require(catalogue.checkTables_FilesDb(), "making the tables");
        FMTransaction transaction(db);
        for (const bench::PhotoRows& photo : bench::makePhotoRows(photographs)) {
            const qint64 id = catalogue.insertImageFileWithDictionary(photo.rows[0].dictionary);
            const bool isWhole =
                catalogue.insertExifWithImageFileId(id, photo.rows[1].dictionary) &&
                catalogue.insertTiffWithImageFileId(id, photo.rows[2].dictionary) &&
                catalogue.insertGPSWithImageFileId(id, photo.rows[3].dictionary);
            require(isWhole, "adding a photograph");
            const auto name = QStringLiteral("IMG_%1.JPG").arg(id);
            items.push_back(PBImageFileItem::imageFileItemWithId(id, 1, name, 1000, 0));
        }
        require(transaction.commit(), "adding photographs");
    }

    /// Each row is read whole.
    void select(const QString& columns, const QString& table, const QString& key) {
        const QString sql =
            QStringLiteral("select %1 from %2 where %3 = ?").arg(columns, table, key);
        for (const auto& item : items) {
            FMResultSet row = db.executeQuery(sql, item->fileId());
            if (!row.next()) continue;
            for (int column = 0; column < row.columnCount(); ++column)
                bench::keep(row.objectForColumnIndex(column));
        }
    }
    void selectGeneral() {
        select(
            QStringLiteral("UTIType,CreationDate,ImageDPI,ColorModel,ColorSyncProfile,FileFlag,"
                           "FileStars,Tag"),
            QStringLiteral("ImageFile"), QStringLiteral("Id"));
    }
    void selectMore() {
        for (const MetadataCategory category : metadataCategories) {
            const QStringView table = propertyTypeOfCategory(category);
            select(
                CatalogueSchema::metadataColumnsOfTable(table).join(u','), table.toString(),
                QStringLiteral("FileId"));
        }
    }
    void read(SelectionReading& reading) {
        bool isComplete = false;
        while (!isComplete) {
            longestSlice =
                std::max(longestSlice, millisecondsOf([&] { isComplete = reading.readSome(); }));
        }
        require(!reading.hasFailed(), "reading");
    }

    const QTemporaryDir folder;
    FMDatabase db{folder.filePath(QStringLiteral("files.db"))};
    PBImageFileList items;
    OneFolder folders;
    double longestSlice = 0;
};

} // namespace

int main() {
    Catalogue catalogue;
    bool met = bench::printMedianRatio(
        "general page of 10,000 / bare selects", rounds, [&] { catalogue.selectGeneral(); },
        [&] {
            GeneralReading reading(catalogue.items, catalogue.db, catalogue.folders);
            catalogue.read(reading);
            require(reading.merged().count() == photographs, "merging");
        },
        mostRatio);
    met = bench::printMedianRatio(
              "metadata page of 10,000 / bare selects", rounds, [&] { catalogue.selectMore(); },
              [&] {
                  MoreReading reading(catalogue.items, catalogue.db);
                  catalogue.read(reading);
                  require(reading.merged().moreInfoDict().size() == 3, "merging");
              },
              mostRatio) &&
          met;
    met = bench::printFigure(
              "longest time that the panel reads", catalogue.longestSlice, "ms", longestWait) &&
          met;
    return met ? 0 : 1;
}
