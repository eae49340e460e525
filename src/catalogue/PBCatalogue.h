#pragma once

#include "catalogue/CatalogueSchema.h"
#include "platform/values/PBValue.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <span>
#include <unordered_set>
#include <utility>

class FMDatabase;

/// Where the folder roots are at this moment. Implemented by whoever knows the roots.
class FolderRootPaths {
public:
    virtual ~FolderRootPaths() = default;
    /// The absolute path of the root with this `FolderAlias.Id`; empty if there is no such root or
    /// it is not mounted.
    [[nodiscard]] virtual QString mountedPathOfAliasId(qint64 aliasId) const = 0;
};

/// The catalogue's operations on one connection, which must outlive this view; cheap to make. Use
/// it on the connection's thread only. Operations on `Thumbnail` want a connection to
/// `thumbnail.db`, all others one to `files.db`.
///
/// None of the operations opens a transaction, except the checks of tables; a caller that needs
/// several changes as one makes an `FMTransaction`. Failure shows in the result only: false, the
/// id 0, an empty text or array. Whoever goes on to insert what was not found needs to know whether
/// it could be looked for: the finds of ids answer nothing where it could not.
class PBCatalogue {
public:
    explicit PBCatalogue(FMDatabase& db) : _db(db) {}
    [[nodiscard]] FMDatabase& database() const { return _db; }

    // Tables

    /// Creates what is missing of the tables and indexes of `files.db`; whatever exists is left as
    /// it is. Answers whether all tables are there now.
    bool checkTables_FilesDb();
    /// The same for `thumbnail.db`.
    bool checkTables_Thumbnail();
    /// Whether there is a table with exactly this name, case included.
    [[nodiscard]] bool isTableExist(const QString& name);
    /// Runs the update whose text is the format with "%1", "%2", … replaced by the names.
    template <typename... Names>
    bool executeUpdateWithFormatSql(const QString& format, Names&&... names) {
        return executeUpdateWithSql(format.arg(std::forward<Names>(names)...));
    }

    // Inserts; those that make an id answer it, or 0

    qint64 insertFolderAliasWithData(
        const QByteArray& data, int type, const QString& reservePath, qint64 state);
    /// An empty relative path, that of the root itself, is stored as NULL.
    qint64 insertFolderWithAliasId(qint64 aliasId, const QString& relativeFolderPath);
    /// The keys are column names; a null marker is stored as NULL. An empty dictionary fails.
    qint64 insertImageFileWithDictionary(const PBDictionary& dictionary);
    /// As above, with the file's id as key of the row; an empty dictionary makes a row too.
    bool insertExifWithImageFileId(qint64 fileId, const PBDictionary& exifProperties);
    bool insertExifAuxWithImageFileId(qint64 fileId, const PBDictionary& exifAuxProperties);
    bool insertTiffWithImageFileId(qint64 fileId, const PBDictionary& tiffProperties);
    bool insertIPTCWithImageFileId(qint64 fileId, const PBDictionary& iptcProperties);
    bool insertGPSWithImageFileId(qint64 fileId, const PBDictionary& gpsProperties);
    bool insertThumbnailWithFileId(qint64 fileId, const QByteArray& thumbnailData);
    qint64 insertGeoWithLongitudeData(
        const QByteArray& longitudeData, const QByteArray& latitudeData,
        const QByteArray& addressDict);

    // Updates; an id that does not exist is no failure

    bool updateFolderAliasWithIdState(qint64 aliasId, qint64 state);
    /// Both or none.
    bool updateFolderAliasWithIdData(qint64 aliasId, const QByteArray& data, int type);
    bool updateFolderAliasWithIdReservePath(qint64 aliasId, const QString& reservePath);
    /// An empty relative path is stored as NULL.
    bool updateFolderWithId(qint64 folderId, qint64 aliasId, const QString& relativeFolderPath);
    bool updateImageFileWithIdFileName(qint64 fileId, const QString& fileName);
    bool updateGeoWithGeoId(
        qint64 geoId, const QByteArray& longitudeData, const QByteArray& latitudeData);

    // Removals; an id that does not exist is no failure

    bool removeFolderAliasWithAliasId(qint64 aliasId);
    /// A folder that has images stays, which is no failure either.
    bool removeFolderWithFolderId(qint64 folderId);
    bool removeImageFileWithFileId(qint64 fileId);
    bool removeExifWithFileId(qint64 fileId);
    bool removeExifAuxWithFileId(qint64 fileId);
    bool removeTiffWithFileId(qint64 fileId);
    bool removeIPTCWithFileId(qint64 fileId);
    bool removeGPSWithFileId(qint64 fileId);
    bool removeThumbnailWithFileId(qint64 fileId);
    /// Removes the root's row with all rows of its folders and their files, in one statement for
    /// each table; call it within a transaction.
    bool removeFolderAliasWithAllRows(qint64 aliasId);
    /// Removes the file's rows from `ImageFile` and all five metadata tables; call it within a
    /// transaction. The thumbnail, in the other file, is removed apart.
    bool removeImageFileAndMetadataWithFileId(qint64 fileId);

    // Finds; a miss answers 0 or empty, a failure the same or, for an id, nothing

    /// Without a relative path, the folder of the root itself. The empty text finds nothing.
    [[nodiscard]] std::optional<qint64>
    findFolderIdByAliasId(qint64 aliasId, const std::optional<QString>& relativePath);
    /// Whether the folder has a row; nothing where that can't be told.
    [[nodiscard]] std::optional<bool> isFolderThere(qint64 folderId);
    /// The name is matched exactly. The two places, if given, are filled on a hit only.
    [[nodiscard]] std::optional<qint64> findImageFileIdByFolderId(
        qint64 folderId, const QString& fileName, qint64* outFileSize, double* outModificationDate);
    [[nodiscard]] std::optional<qint64> findImageFileIdByFolderId(
        qint64 folderId, const QString& fileName, qint64 fileSize, double modificationDate);
    /// Which of these files have a thumbnail; none where that can't be told.
    [[nodiscard]] std::unordered_set<qint64> storedThumbnails(std::span<const qint64> fileIds);
    [[nodiscard]] QString tagWithTagId(qint64 tagId);
    /// Tags that contain the text, the most used first, at most `maxCount` if that is above 0. The
    /// text is part of the statement as it stands: "%" and "_" are wildcards, and one with a single
    /// quote finds nothing. Without regard to case.
    [[nodiscard]] QStringList completionArrayByTag(const QString& tag, int maxCount);

    /// The row with this id as values in the order of the fields, or of all columns without fields;
    /// the null marker for NULL. Empty when there is no row.
    [[nodiscard]] PBArray
    folderDataWithIdAndFields(qint64 folderId, const QStringList& fields = {});
    [[nodiscard]] PBArray
    imageFileDataWithIdAndFields(qint64 fileId, const QStringList& fields = {});
    [[nodiscard]] PBArray
    thumbnailDataWithFileIdAndFields(qint64 fileId, const QStringList& fields = {});
    [[nodiscard]] PBArray gpsDataWithFileIdAndFields(qint64 fileId, const QStringList& fields = {});

    /// The absolute path of a folder; empty if it is unknown, or its root is unknown or not
    /// mounted.
    [[nodiscard]] QString pathOfFolderId(qint64 folderId, const FolderRootPaths& roots);

private:
    bool executeUpdateWithSql(const QString& sql);
    bool
    checkTables(std::span<const CatalogueTable> tables, std::span<const CatalogueIndex> indexes);
    bool createTable(const CatalogueTable& table);

    /// What is stored for a folder's relative path: NULL for the root's own, empty one.
    [[nodiscard]] static PBValue relativePathValue(const QString& relativePath);
    bool insertDictionary(
        QStringView table, std::optional<qint64> fileId, const PBDictionary& dictionary);
    [[nodiscard]] qint64 idAfterInsert(bool inserted) const;
    bool updateColumn(QStringView table, QStringView column, const PBValue& value, qint64 id);
    bool removeRow(QStringView table, QStringView key, qint64 id);
    [[nodiscard]] std::optional<qint64>
    findId(const QString& sql, std::span<const PBValue> arguments);
    [[nodiscard]] PBArray
    dataOfRow(QStringView table, QStringView key, qint64 id, const QStringList& fields);

    FMDatabase& _db;
};
