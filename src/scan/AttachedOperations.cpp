#include "scan/AttachedOperations.h"

#include "FMDB/FMDatabase.h"
#include "group/FolderPaths.h"
#include "group/GroupPublication.h"
#include "scan/FileItemCheck.h"
#include "scan/PBScanFolderTask.h"
#include "scan/ScanServices.h"
#include "scan/ScanSteps.h"

namespace {

/// Images found to be gone between two publications.
constexpr std::size_t goneBetweenPublications = 100;

void checkFileItemExist(
    const PBScanDictionary& dictionary, const QStringList& rewrittenFiles,
    platform::Operation& owner, const std::function<void()>& beforeEach) {
    PBGroupItemArray& tree = *dictionary.WorkGroupItemArray;
    FileItemCheck check(dictionary, rewrittenFiles);
    std::size_t published = 0;
    for (std::size_t index = 0; index < tree.size() && !owner.isCancelled();) {
        if (beforeEach) {
            beforeEach(); // may change the tree
            if (index >= tree.size()) break;
        }
        tree[index]->checkFileItemExist([&](auto& item) { return check.isGone(item); });
        if (tree[index]->isEmpty()) {
            tree.erase(tree.begin() + static_cast<std::ptrdiff_t>(index));
        } else {
            ++index;
        }
        if (check.goneCount() - published > goneBetweenPublications) {
            publishWorkTree(dictionary);
            published = check.goneCount();
        }
    }
    if (owner.isCancelled()) return;
    if (check.goneCount() > published || check.markedCount() > 0) publishWorkTree(dictionary);
    check.staleRows().remove(dictionary, owner);
}

} // namespace

void PBRemoveFileItemOperation::runWithOwnerNSOperation(platform::Operation& owner, bool isLast) {
    group::removeFileItemInGroupArray(
        *_dictionary->WorkGroupItemArray, _groupItemArray, [&] { return owner.isCancelled(); });
    // Also after a cancellation: a stale tree is known by its identity.
    if (isLast) publishWorkTree(*_dictionary);
}

std::vector<PBUpdateFileItemOperation::Record>
PBUpdateFileItemOperation::makeRecords(bool withRows) const {
    std::vector<Record> records;
    for (const PBGroupItemChain& chain : _updateFileItemArray) {
        if (chain.empty()) continue;
        for (const auto& item : chain.back()->imageFiles()) {
            Record record{item, {}};
            if (withRows) {
                FMResultSet row = _dictionary->Database->executeQuery(
                    QStringLiteral("select UTIType,ImageDPI,ColorModel,Tag from ImageFile "
                                   "where Id = ?"),
                    item->fileId());
                if (row.next()) {
                    record.row.utiType = row.objectForColumnIndex(0);
                    record.row.imageDPI = row.objectForColumnIndex(1);
                    record.row.colorModel = row.objectForColumnIndex(2);
                    record.row.tag = row.objectForColumnIndex(3);
                }
                // Without a row, or where it can't be read, the image goes to those without values.
                row.close();
            }
            records.push_back(std::move(record));
        }
    }
    return records;
}

void PBUpdateFileItemOperation::runWithOwnerNSOperation(platform::Operation& owner, bool isLast) {
    group::removeFileItemInGroupArray(*_dictionary->WorkGroupItemArray, _updateFileItemArray, [&] {
        return owner.isCancelled();
    });
    group::GroupingStep step(
        _dictionary->groupingParameters(), *_dictionary->Database, _dictionary->services->places);
    const group::CatalogueFolderPaths paths(
        *_dictionary->Database, _dictionary->services->aliasManager);
    group::FolderPathCache cache;
    for (Record& record : makeRecords(step.needsRow())) {
        if (owner.isCancelled()) break;
        const QString folder = record.updateFileItem->folderPath(paths, cache);
        step.reinsert(
            record.updateFileItem, std::move(record.row),
            folder.isEmpty() ? PBValue(PBNull{}) : PBValue(folder));
    }
    if (isLast) publishWorkTree(*_dictionary, _updateScrollCapture);
}

void PBScanFolderAttachOperation::runWithOwnerNSOperation(
    platform::Operation& owner, bool /*isLast*/) {
    const auto task = PBScanFolderTask::scanFolderTaskWithDictionary(_dictionary);
    task->setIgnoreCheckAttachOperation(true);
    task->runWithOperation(owner);
}

void PBCheckFileItemExistAttachOperation::runWithOwnerNSOperation(
    platform::Operation& owner, bool /*isLast*/) {
    checkFileItemExist(*_dictionary, _rewrittenFiles, owner, {});
}

void PBCheckFileItemExistOperation::main() {
    checkFileItemExist(*_dictionary, {}, *this, [this] {
        checkAttachedOperation(_dictionary->AttachOperationArray.get(), *this);
    });
}
