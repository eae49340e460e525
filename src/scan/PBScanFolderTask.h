#pragma once

#include "platform/files/FileManager.h"
#include "platform/tasks/Operation.h"
#include "scan/FilePropertyBatch.h"
#include "scan/PBScanDictionary.h"
#include "scan/PBScanFinishedTrigger.h"

#include <memory>
#include <vector>

/// The disk's side of a scan, for one folder and those below it: brings into the catalogue the
/// images that it does not have yet. Compares no sizes and removes nothing. Runs within an
/// operation of the scan queue.
class PBScanFolderTask {
public:
    [[nodiscard]] static std::unique_ptr<PBScanFolderTask>
    scanFolderTaskWithDictionary(PBScanDictionaryRef dictionary);
    explicit PBScanFolderTask(PBScanDictionaryRef dictionary)
        : _dictionary(std::move(dictionary)) {}

    /// Set for a task that is attached work itself, which must not run the mailbox that it came
    /// from. Tasks of sub-folders don't inherit it.
    void setIgnoreCheckAttachOperation(bool ignore) { _ignoreCheckAttachOperation = ignore; }

    /// `operation` is the owner whose cancellation ends the task.
    void runWithOperation(platform::Operation& operation);

private:
    struct Run;
    struct Entry;

    void checkAttachedOperation(platform::Operation& operation) const;
    [[nodiscard]] std::shared_ptr<PBScanFinishedTrigger> makeTrigger() const;
    /// A preliminary scan has listed the whole folder already.
    [[nodiscard]] bool isScannedForOpenFiles(const QString& folderPath) const;

    void walkFolder(Run& run) const;
    void walkListedFiles(Run& run) const;
    /// nullptr for a folder that is left out.
    [[nodiscard]] PBScanDictionaryRef subFolder(const Run& run, const QString& path) const;
    /// Looks at an entry before its turn: a file that seems to be new is read ahead.
    [[nodiscard]] Entry lookAhead(Run& run, platform::DirectoryEntry entry) const;
    void takeEntry(Run& run, Entry entry) const;
    void takeFile(Run& run, Entry& file) const;
    /// Of files that could not be read at their turn.
    void tryAgain(Run& run) const;
    [[nodiscard]] std::unique_ptr<PBImageImporterProtocol>
    importerOf(const Run& run, const QString& name) const;
    /// Whether there is nothing to do for the file, now at least.
    [[nodiscard]] bool isLeftAlone(Run& run, const QString& name) const;
    [[nodiscard]] bool isKnown(Run& run, const QString& name) const;
    void findFolderRow(Run& run) const;
    /// Leaves the files of the folder alone for this run.
    void setUnread(Run& run) const;
    /// The folder's row is made for its first image; false if it can't be.
    [[nodiscard]] bool makeFolderRow(Run& run) const;
    void flushIfDue(Run& run, bool isLast) const;

    const PBScanDictionaryRef _dictionary;
    bool _ignoreCheckAttachOperation = false;
};

/// A disk scan as an operation of the scan queue.
class PBScanFolderOperation final : public platform::Operation {
public:
    [[nodiscard]] static std::shared_ptr<PBScanFolderOperation>
    scanFolderOperationWithDictionary(PBScanDictionaryRef dictionary);
    explicit PBScanFolderOperation(PBScanDictionaryRef dictionary)
        : _dictionary(std::move(dictionary)) {}

protected:
    void main() override {
        PBScanFolderTask::scanFolderTaskWithDictionary(_dictionary)->runWithOperation(*this);
    }

private:
    const PBScanDictionaryRef _dictionary;
};
