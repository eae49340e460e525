#include "fileactions/copy/CatalogueRows.h"

#include "FMDB/FMDatabase.h"
#include "FMDB/FMTransaction.h"
#include "catalogue/PBCatalogue.h"
#include "catalogue/marks/MarksFile.h"
#include "platform/files/FileManager.h"
#include "platform/files/FileSystem.h"

#include <QFile>

using platform::folderOfPath;
using platform::nameOfPath;

namespace fileactions {

CatalogueRows::CatalogueRows(Environment environment) : _environment(std::move(environment)) {}

CatalogueRows::~CatalogueRows() = default;

void CatalogueRows::begin() {
    const auto now = std::chrono::steady_clock::now();
    if (_transaction && now - _begun < longestTransaction) return;
    settle();
    if (_failed && now - *_failed < pauseAfterFailure) return;
    if (!_both && !_isUnreachable) {
        _both = _environment.connect();
        _isUnreachable = _both == nullptr;
    }
    if (!_both) return;
    _roots = _environment.mountedRoots();
    _transaction = std::make_unique<FMTransaction>(*_both);
    _begun = std::chrono::steady_clock::now();
    if (!_transaction->isOpen() || !marks::bindLedger(*_both, _roots)) {
        _transaction.reset();
        _failed = std::chrono::steady_clock::now();
        return;
    }
    // Within the transaction: who asks the catalogue again waits for its end.
    _environment.rowsWillChange();
}

void CatalogueRows::settle() {
    if (_transaction) {
        marks::MarksLedger ledger(*_both);
        std::vector<qint64> ids;
        for (const Moved& moved : _moved)
            ids.push_back(moved.fileId);
        bool isDone = ids.empty() || ledger.retrace(ids, _roots);
        for (const Moved& moved : _moved)
            isDone = isDone && ledger.setIdentity(moved.fileId, moved.identity);
        if (isDone && ledger.countEdit() && _transaction->commit()) {
            _changedRows.insert(_changedRows.end(), ids.begin(), ids.end());
            _changedRows.insert(_changedRows.end(), _others.begin(), _others.end());
        }
    }
    _transaction.reset();
    _moved.clear();
    _others.clear();
    _folders.clear();
}

CatalogueRows::Folder& CatalogueRows::folderOf(const QByteArray& path) {
    const QByteArray folderPath = folderOfPath(path);
    const auto known = _folders.find(folderPath);
    if (known != _folders.end()) return *known;
    Folder folder{.place = _environment.placeOfFolder(QFile::decodeName(folderPath))};
    if (folder.place) {
        const QString& relativePath = folder.place->relativePath;
        folder.folderId =
            PBCatalogue(*_both)
                .findFolderIdByAliasId(
                    folder.place->aliasId,
                    relativePath.isEmpty() ? std::nullopt : std::optional(relativePath))
                .value_or(0);
    }
    return *_folders.emplace(folderPath, std::move(folder));
}

qint64 CatalogueRows::rowOf(const QByteArray& path) {
    const Folder& folder = folderOf(path);
    if (folder.folderId <= 0) return 0;
    const QString name = QFile::decodeName(nameOfPath(path));
    return PBCatalogue(*_both)
        .findImageFileIdByFolderId(folder.folderId, name, nullptr, nullptr)
        .value_or(0);
}

qint64 CatalogueRows::makeFolderRow(Folder& folder) {
    if (folder.folderId <= 0) {
        folder.folderId = PBCatalogue(*_both).insertFolderWithAliasId(
            folder.place->aliasId, folder.place->relativePath);
    }
    return folder.folderId;
}

void CatalogueRows::moved(const QByteArray& path, const QByteArray& toPath) {
    if (!_transaction) return;
    const qint64 fileId = rowOf(path);
    clearPlace(toPath, false);
    Folder& folder = folderOf(toPath);
    if (fileId <= 0) {
        moveLostMarks(path, toPath);
    } else if (!folder.place) {
        leaveRoots(fileId, toPath);
    } else {
        moveRow(fileId, folder, toPath);
    }
}

void CatalogueRows::moveRow(qint64 fileId, Folder& folder, const QByteArray& toPath) {
    const auto values = platform::FileManager::resourceValues(QFile::decodeName(toPath));
    if (!values || makeFolderRow(folder) <= 0) return;
    const bool isMoved = _both->executeUpdate(
        QStringLiteral("update ImageFile set FolderId = ?,FileName = ?,FileSize = ?,"
                       "ModificationDate = ? where Id = ?"),
        folder.folderId, QFile::decodeName(nameOfPath(toPath)), values->fileSize,
        values->modificationDate, fileId);
    if (isMoved) _moved.push_back({fileId, values->identity});
}

void CatalogueRows::leaveRoots(qint64 fileId, const QByteArray& toPath) {
    const auto values = platform::FileManager::resourceValues(QFile::decodeName(toPath));
    const auto identity = values ? values->identity : platform::FileIdentity();
    if (marks::MarksLedger(*_both).leaveCatalogue(fileId, toPath, identity)) removeRow(fileId);
}

void CatalogueRows::moveLostMarks(const QByteArray& path, const QByteArray& toPath) {
    const auto values = platform::FileManager::resourceValues(QFile::decodeName(toPath));
    const auto identity = values ? values->identity : platform::FileIdentity();
    static_cast<void>(marks::MarksLedger(*_both).moveLost(path, toPath, identity));
}

void CatalogueRows::clearPlace(const QByteArray& path, bool withMarks) {
    const qint64 fileId = rowOf(path);
    marks::MarksLedger ledger(*_both);
    const bool isCleared =
        !withMarks || (ledger.removePhotograph(fileId) && ledger.removeLost(path));
    if (isCleared && fileId > 0) removeRow(fileId);
}

void CatalogueRows::removeRow(qint64 fileId) {
    if (PBCatalogue(*_both).removeImageFileAndMetadataWithFileId(fileId)) _others.push_back(fileId);
}

void CatalogueRows::returned(const QByteArray& path) {
    begin();
    const qint64 fileId = _transaction ? rowOf(path) : 0;
    if (fileId > 0) _others.push_back(fileId);
}

void CatalogueRows::replaced(const QByteArray& path) {
    if (_transaction) clearPlace(path, true);
}

} // namespace fileactions
