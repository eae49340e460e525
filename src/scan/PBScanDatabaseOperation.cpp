#include "scan/PBScanDatabaseOperation.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "core/Paths.h"
#include "platform/tasks/OperationQueue.h"
#include "scan/FilePropertyBatch.h"
#include "scan/PBScanDatabaseFolderIdOperation.h"
#include "scan/PBScanFolderTask.h"
#include "scan/ScanServices.h"
#include "scan/marks/MarksRestorer.h"

#include <algorithm>

namespace {

struct FolderRow {
    qint64 id;
    std::optional<QString> relativePath;
};

/// Read whole, so that no cursor stays open while others run.
std::vector<FolderRow> foldersOfAlias(const PBScanDictionary& dictionary, qint64 aliasId) {
    std::vector<FolderRow> rows;
    FMResultSet cursor = dictionary.Database->executeQuery(
        QStringLiteral("select Id,RelativePath from Folder where AliasId = ?"), aliasId);
    while (cursor.next()) {
        FolderRow row{cursor.longLongIntForColumnIndex(0), std::nullopt};
        if (!cursor.columnIndexIsNull(1)) row.relativePath = cursor.stringForColumnIndex(1);
        rows.push_back(std::move(row));
    }
    if (cursor.hadError()) tellUnreadCatalogue(dictionary);
    return rows;
}

/// The one picture that the user opened, if it was one.
const PBOpenFileObject* onlyFocus(const std::vector<PBOpenFiles::OpenFolder>& opened) {
    return opened.size() == 1 ? opened.front().focusOpenFileObj.get() : nullptr;
}

} // namespace

std::shared_ptr<PBScanDatabaseOperation>
PBScanDatabaseOperation::scanDatabaseOperationWithDictionary(PBScanDictionaryRef dictionary) {
    return std::make_shared<PBScanDatabaseOperation>(std::move(dictionary));
}

void PBScanDatabaseOperation::main() {
    if (MarksRestorer* marks = _dictionary->services->marks) marks->scanBegins();
    _dictionary->services->rewritten->clear();
    CatalogueFolderScan scan(_dictionary, *this);
    visitFolders(scan);
    visitOpenedFoldersElsewhere(scan);
    if (isCancelled()) return;
    scan.publishRest();
    ScanFigures& figures = _dictionary->services->figures;
    figures.mark(figures.cataloguePass);
    scan.removeStale();
    if (!isCancelled()) queueWhatFollows();
}

void PBScanDatabaseOperation::visitFolders(CatalogueFolderScan& scan) {
    if (!_dictionary->RecurseSubFolder) {
        visitSelectedFolder(scan);
        return;
    }
    const PBAliasObject& root = *_dictionary->AliasObject;
    visitFoldersOfRoot(scan, root, true);
    if (isCancelled()) return;
    const auto nested = _dictionary->services->aliasManager.findSubAliasByAliasObject(
        root, _dictionary->RelativePath.value_or(QString()));
    for (const auto& alias : nested)
        visitFoldersOfRoot(scan, *alias, false);
}

void PBScanDatabaseOperation::visitSelectedFolder(CatalogueFolderScan& scan) {
    const PBAliasObject& root = *_dictionary->AliasObject;
    const auto folderId = PBCatalogue(*_dictionary->Database)
                              .findFolderIdByAliasId(root.aliasId(), _dictionary->RelativePath);
    if (!folderId) tellUnreadCatalogue(*_dictionary);
    const QString path =
        PBAliasManager::pathWithAliasObject(root, _dictionary->RelativePath.value_or(QString()));
    if (folderId > 0 && !path.isEmpty()) visit(scan, *folderId, path);
}

void PBScanDatabaseOperation::visitOpenedFoldersElsewhere(CatalogueFolderScan& scan) {
    if (!_dictionary->OpenFiles) return;
    for (const auto& folder : _dictionary->OpenFiles->openFileArray()) {
        if (isCancelled()) return;
        QString relativePath;
        const auto root = _dictionary->services->aliasManager.appropriateAliasObjectForPath(
            folder.folderPath, &relativePath, false);
        if (!root) continue;
        const auto folderId =
            PBCatalogue(*_dictionary->Database)
                .findFolderIdByAliasId(
                    root->aliasId(),
                    relativePath.isEmpty() ? std::nullopt : std::optional(relativePath));
        if (!folderId) tellUnreadCatalogue(*_dictionary);
        if (folderId > 0) visit(scan, *folderId, folder.folderPath);
    }
}

void PBScanDatabaseOperation::visitFoldersOfRoot(
    CatalogueFolderScan& scan, const PBAliasObject& root, bool isSelected) {
    const auto& selected = _dictionary->RelativePath;
    for (const FolderRow& row : foldersOfAlias(*_dictionary, root.aliasId())) {
        if (isCancelled()) return;
        const bool isWanted =
            !isSelected || !selected ||
            (row.relativePath && PBUtilities::comparePath(*selected, *row.relativePath) >= 0);
        if (!isWanted) continue;
        const QString path =
            PBAliasManager::pathWithAliasObject(root, row.relativePath.value_or(QString()));
        if (!path.isEmpty()) visit(scan, row.id, path);
    }
}

void PBScanDatabaseOperation::visit(
    CatalogueFolderScan& scan, qint64 folderId, const QString& folderPath) {
    if (!_visited.insert(folderId).second) return;
    PBOpenFiles* openFiles = _dictionary->OpenFiles.get();
    if (!openFiles) {
        scanWithFolderId(scan, folderId, folderPath, {}, nullptr);
        return;
    }
    const auto match = openFiles->matchFolder(folderId, folderPath);
    if (match.kind == PBOpenFiles::FolderMatch::Asked) {
        const auto* focus = match.focusOpenFileObj.get();
        auto rows = scanWithFolderId(scan, folderId, folderPath, match.fileArray, focus);
        auto& later = focus ? _focusDeferred : _deferred;
        if (!rows.empty()) later.push_back({folderId, folderPath, std::move(rows)});
        return;
    }
    const bool followsFocus = match.kind == PBOpenFiles::FolderMatch::BelowAsked &&
                              onlyFocus(openFiles->openFileArray()) != nullptr;
    (followsFocus ? _focusDeferred : _deferred).push_back({folderId, folderPath, std::nullopt});
}

std::vector<group::ImageFileRow> PBScanDatabaseOperation::scanWithFolderId(
    CatalogueFolderScan& scan, qint64 folderId, const QString& folderPath,
    const std::vector<PBOpenFileObject>& fileArray, const PBOpenFileObject* focusOpenFileObject) {
    const auto presence = scan.checkFolder(folderId, folderPath);
    scan.drain();
    const auto isTaken = [&](const QString& name) {
        if (fileArray.empty()) return !focusOpenFileObject || name == focusOpenFileObject->fileName;
        return std::ranges::find(fileArray, name, &PBOpenFileObject::fileName) != fileArray.end();
    };
    std::vector<group::ImageFileRow> deferred;
    const auto rows = scan.fetchRows(folderId, isTaken, &deferred);
    scan.drain();
    scan.scanRows(folderPath, presence, rows, focusOpenFileObject != nullptr);
    return deferred;
}

void PBScanDatabaseOperation::queueWhatFollows() {
    if (_dictionary->OpenFiles) queueOpenedFiles();
    if (_dictionary->Filter != 0) {
        // What is not in the catalogue has neither star nor flag.
        ScanFigures& figures = _dictionary->services->figures;
        figures.mark(figures.scanFinished);
        _dictionary->services->scanFinished(_dictionary->WorkGroupItemArray);
        return;
    }
    PBScanDictionary dictionary = *_dictionary;
    dictionary.IsOpenFilesScanFolder = false;
    queueDiskScan(std::move(dictionary));
}

void PBScanDatabaseOperation::queueOpenedFiles() {
    const auto opened = _dictionary->OpenFiles->openFileArray();
    const bool withDisk = _dictionary->Filter == 0;
    if (const auto* focus = onlyFocus(opened)) {
        const QString& path = opened.front().folderPath;
        if (withDisk) queueOpenedFolder(path, {*focus});
        queueDeferred(_focusDeferred);
        if (withDisk) queueOpenedFolder(path, {});
    } else if (withDisk) {
        for (const auto& folder : opened)
            queueOpenedFolder(folder.folderPath, folder.fileArray);
    }
    queueDeferred(_deferred);
}

void PBScanDatabaseOperation::queueOpenedFolder(
    const QString& path, std::vector<PBOpenFileObject> files) {
    QString relativePath;
    const auto root = _dictionary->services->aliasManager.appropriateAliasObjectForPath(
        path, &relativePath, false);
    if (!root) return;
    PBScanDictionary dictionary = *_dictionary;
    dictionary.AliasObject = root;
    dictionary.RelativePath.reset();
    if (!relativePath.isEmpty()) dictionary.RelativePath = relativePath;
    dictionary.IsOpenFilesScanFolder = true;
    dictionary.OpenFilesOpenFileObjArray = std::move(files);
    queueDiskScan(std::move(dictionary));
}

void PBScanDatabaseOperation::queueDeferred(std::vector<ScanDatabaseFolder>& folders) {
    if (folders.empty()) return;
    PBScanDictionary dictionary = *_dictionary;
    dictionary.ScanDatabaseFolderIdArray = std::move(folders);
    _dictionary->OperationQueue->addOperation(
        PBScanDatabaseFolderIdOperation::scanDatabaseFolderIdOperationWithDictionary(
            std::make_shared<const PBScanDictionary>(std::move(dictionary))));
}

void PBScanDatabaseOperation::queueDiskScan(PBScanDictionary dictionary) {
    dictionary.ImageFilePropertyArray = std::make_shared<std::vector<FileProperty>>();
    _dictionary->OperationQueue->addOperation(
        PBScanFolderOperation::scanFolderOperationWithDictionary(
            std::make_shared<const PBScanDictionary>(std::move(dictionary))));
}
