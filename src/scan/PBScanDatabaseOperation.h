#pragma once

#include "platform/tasks/Operation.h"
#include "scan/CatalogueFolderScan.h"
#include "scan/PBScanDictionary.h"

#include <memory>
#include <unordered_set>
#include <vector>

/// First operation of a scan: shows what the catalogue knows of the selected folder, drops what is
/// stale, and queues what comes after. On the scan queue.
class PBScanDatabaseOperation final : public platform::Operation {
public:
    [[nodiscard]] static std::shared_ptr<PBScanDatabaseOperation>
    scanDatabaseOperationWithDictionary(PBScanDictionaryRef dictionary);
    explicit PBScanDatabaseOperation(PBScanDictionaryRef dictionary)
        : _dictionary(std::move(dictionary)) {}

protected:
    void main() override;

private:
    void visitFolders(CatalogueFolderScan& scan);
    void visitSelectedFolder(CatalogueFolderScan& scan);
    /// Opened folders that are none of those that the selection brings.
    void visitOpenedFoldersElsewhere(CatalogueFolderScan& scan);
    /// Without `isSelected`, all folders of the root.
    void visitFoldersOfRoot(CatalogueFolderScan& scan, const PBAliasObject& root, bool isSelected);
    /// Once for each folder.
    void visit(CatalogueFolderScan& scan, qint64 folderId, const QString& folderPath);
    /// Answers the rows that were left for later.
    std::vector<group::ImageFileRow> scanWithFolderId(
        CatalogueFolderScan& scan, qint64 folderId, const QString& folderPath,
        const std::vector<PBOpenFileObject>& fileArray,
        const PBOpenFileObject* focusOpenFileObject);

    void queueWhatFollows();
    void queueOpenedFiles();
    /// A disk scan of an opened folder, before the main one.
    void queueOpenedFolder(const QString& path, std::vector<PBOpenFileObject> files);
    void queueDeferred(std::vector<ScanDatabaseFolder>& folders);
    void queueDiskScan(PBScanDictionary dictionary);

    const PBScanDictionaryRef _dictionary;
    std::unordered_set<qint64> _visited;
    std::vector<ScanDatabaseFolder> _deferred;
    std::vector<ScanDatabaseFolder> _focusDeferred;
};
