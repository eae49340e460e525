#pragma once

#include "core/PBGroupTypeArray.h"
#include "core/PBMutableNumber.h"
#include "core/PBOpenFiles.h"
#include "group/GroupingStep.h"
#include "group/ImageFileRow.h"
#include "scan/PBScanAttachOperation.h"
#include "scan/PBScanFinishedManager.h"

#include <QString>

#include <memory>
#include <optional>
#include <unordered_set>
#include <vector>

class FMDatabase;
class PBScanFinishedTrigger;
struct FileProperty;
struct ScanServices;

namespace platform {
class OperationQueue;
}

/// A folder of the catalogue that an operation leaves to a later one.
struct ScanDatabaseFolder {
    qint64 folderId = 0;
    QString folderPath;
    /// Those of its rows that are left; absent: all, none having been read.
    std::optional<std::vector<group::ImageFileRow>> rows;
};

/// The folder whose photographs a work tree has.
struct ScanScope {
    std::shared_ptr<PBAliasObject> root;
    QString relativePath; ///< empty for the root itself
    bool recurseSubFolder = false;
};

/// Everything that the operations of one scan go by; its keys are the names of the fields. Never
/// changed once an operation holds it: whoever needs other values makes a copy. What changes in the
/// course of a scan (counters, the batch, the work tree) is shared by all copies and belongs to the
/// scan thread.
struct PBScanDictionary {
    /// The scan queue's connection to files.db, and the queue.
    FMDatabase* Database = nullptr;
    platform::OperationQueue* OperationQueue = nullptr;

    std::shared_ptr<PBAliasObject> AliasObject;
    /// Absent for the root itself.
    std::optional<QString> RelativePath;
    bool RecurseSubFolder = false;

    PBGroupTypeArray GroupTypeArray;
    /// Its address names the scan.
    std::shared_ptr<PBGroupItemArray> WorkGroupItemArray;
    int SortType = 0;
    bool DescendingSort = false;
    quint64 Filter = 0;
    QString SearchString;

    /// Of this work tree: the files that were stored and put into it before the catalogue's folders
    /// were all visited, as opened files and those that the watcher tells of are. A catalogue pass
    /// that comes across their rows leaves them out.
    std::shared_ptr<std::unordered_set<qint64>> ShownAhead;

    /// Of this work tree: photographs that were edited when they were not in it. A pass that read
    /// their rows before reads them again.
    std::shared_ptr<std::unordered_set<qint64>> EditedMeanwhile;
    /// What this work tree shows; absent where no scan has begun.
    std::shared_ptr<const ScanScope> Scope;

    /// Seconds since 1970 of the last publication; items added since.
    std::shared_ptr<PBMutableNumber> PushImageFileItemTime;
    std::shared_ptr<PBMutableNumber> PushImageFileItemCount;
    /// The folders that were finished when the scan began. They are walked again all the same.
    std::shared_ptr<const std::vector<PBScanFinishedObject>> ScanFinishedArray;

    FMDatabase* BuilidThumbDatabase = nullptr;
    platform::OperationQueue* BuilidThumbOperationQueue = nullptr;
    /// Pixels of a thumbnail's longer side.
    int BuildThumbSize = 256;

    std::shared_ptr<PBAttachOperationArray> AttachOperationArray;
    /// A pending request to open files; may be empty.
    std::shared_ptr<PBOpenFiles> OpenFiles;

    /// New files that are not in the catalogue yet.
    std::shared_ptr<std::vector<FileProperty>> ImageFilePropertyArray;
    /// The disk scan is one before the main one, and its end is not that of the scan.
    bool IsOpenFilesScanFolder = false;
    /// The disk scan is one of changes that were watched, and others may come behind it.
    bool IsAttached = false;
    /// Not empty: only these files of the folder.
    std::vector<PBOpenFileObject> OpenFilesOpenFileObjArray;
    std::vector<ScanDatabaseFolder> ScanDatabaseFolderIdArray;
    /// Of the folder above, in the disk scan of a sub-folder.
    std::shared_ptr<PBScanFinishedTrigger> ScanFinishedTrigger;

    std::shared_ptr<const ScanServices> services;

    /// Grows with every attached operation that has run.
    [[nodiscard]] std::uint64_t attachedCount() const {
        return AttachOperationArray ? AttachOperationArray->takenCount() : 0;
    }
    /// What was looked up at this count still holds.
    [[nodiscard]] bool isUpToDate(std::uint64_t count) const {
        return !AttachOperationArray || AttachOperationArray->isUpToDate(count);
    }
    [[nodiscard]] group::GroupingParameters groupingParameters() const {
        return {
            .workGroupItemArray = WorkGroupItemArray,
            .groupTypeArray = GroupTypeArray ? *GroupTypeArray : std::vector<int>(),
            .sortType = SortType,
            .descendingSort = DescendingSort,
            .searchString = SearchString,
            .filter = Filter,
        };
    }
};
using PBScanDictionaryRef = std::shared_ptr<const PBScanDictionary>;
