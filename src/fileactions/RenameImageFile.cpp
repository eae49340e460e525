#include "fileactions/RenameImageFile.h"

#include "FMDB/FMTransaction.h"
#include "catalogue/PBCatalogue.h"
#include "group/FolderPaths.h"
#include "platform/files/FileManager.h"
#include "platform/files/PathNames.h"
#include "platform/program/LocalizedTexts.h"

namespace fileactions {

namespace {

using platform::FileManager::moveItem;

RenameOutcome failed(const QString& reason) {
    return {.result = RenameResult::Failed, .reason = reason, .formerName = {}};
}

struct ErrorText {
    std::errc error;
    QStringView key;
};

constexpr ErrorText errorTexts[] = {
    {std::errc::filename_too_long, u"RenameNameTooLong"},
    {std::errc::invalid_argument, u"RenameBadCharacter"},
    {std::errc::permission_denied, u"RenameNotAllowed"},
    {std::errc::operation_not_permitted, u"RenameNotAllowed"},
    {std::errc::read_only_file_system, u"RenameReadOnly"},
    {std::errc::no_such_file_or_directory, u"RenameFileGone"},
    {std::errc::no_space_on_device, u"RenameDiskFull"},
};

QString textOf(const std::error_code& error, const QString& fileName) {
    if (error == std::errc::file_exists)
        return platform::localizedFormat(u"RenameNameTaken", {fileName});
    for (const ErrorText& text : errorTexts)
        if (error == text.error) return platform::localizedString(text.key);
    return platform::localizedFormat(
        u"RenameRefused", {QString::fromLocal8Bit(error.message().c_str())});
}

} // namespace

RenameOutcome renameImageFile(
    qint64 fileId, const QString& fileName, FMDatabase& db, const group::FolderPaths& folders) {
    // Whoever comes across the file under its new name finds it in the catalogue.
    FMTransaction transaction(db, FMDatabase::Others::Read);
    FMResultSet row = db.executeQuery(
        QStringLiteral("select FileName,FolderId from ImageFile where Id = ?"), fileId);
    const bool isThere = row.next();
    if (row.hadError() || !transaction.isOpen())
        return failed(platform::localizedString(u"RenameNotCatalogued"));
    if (!isThere) return {.result = RenameResult::Gone};
    const QString oldName = row.stringForColumnIndex(0);
    const qint64 folderId = row.longLongIntForColumnIndex(1);
    row.close();
    if (fileName.isEmpty() || fileName == oldName) return {};
    const bool isFolderName = fileName == QStringView(u".") || fileName == QStringView(u"..");
    if (isFolderName || fileName.contains(u'/') || fileName.contains(QChar::Null))
        return failed(platform::localizedString(u"RenameBadName"));
    const QString folder = folders.pathOfFolderId(folderId);
    if (folder.isEmpty()) return failed(platform::localizedString(u"RenameFolderAbsent"));

    const QString oldPath = platform::pathInFolder(folder, oldName);
    const QString newPath = platform::pathInFolder(folder, fileName);
    if (!PBCatalogue(db).updateImageFileWithIdFileName(fileId, fileName))
        return failed(platform::localizedString(u"RenameNotCatalogued"));
    if (const std::error_code error = moveItem(oldPath, newPath))
        return failed(textOf(error, fileName));
    if (!transaction.commit()) {
        // A scan would take the file for another one, without the user's marks.
        static_cast<void>(moveItem(newPath, oldPath));
        return failed(platform::localizedString(u"RenameNotCatalogued"));
    }
    return {.result = RenameResult::Renamed, .formerName = oldName};
}

} // namespace fileactions
