#include "scan/PBScanFolderTask.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "group/GroupPublication.h"
#include "platform/files/FileManager.h"
#include "platform/files/PathNames.h"
#include "scan/FileProperties.h"
#include "scan/ScanServices.h"

#include <QSet>

#include <deque>

using platform::DirectoryEntry;

/// What one run of a task holds in hand.
struct PBScanFolderTask::Run {
    platform::Operation& operation;
    QString folderPath;
    std::shared_ptr<PBScanFinishedTrigger> trigger;
    FilePropertyBatch batch;
    /// 0 while the catalogue has no row for the folder, as of that count of attached operations.
    qint64 folderId = 0;
    std::optional<std::uint64_t> folderAt = std::nullopt;
    /// The names that the folder has rows for, as of that count of attached operations: asking the
    /// catalogue for each file would cost more than all else.
    QSet<QString> knownNames = {};
    std::optional<std::uint64_t> knownAt = std::nullopt;
    /// The catalogue could not say what it has of the folder: a file that is taken for new might be
    /// stored a second time.
    bool isUnread = false;
    std::vector<std::unique_ptr<PBScanFolderTask>> subTasks = {};
    /// Names of files that could not be read now.
    QStringList unread = {};
};

/// An entry of the folder that waits for its turn.
struct PBScanFolderTask::Entry {
    DirectoryEntry entry;
    ReadAhead::Reading file = {}; ///< valid for one that is read ahead
};

std::unique_ptr<PBScanFolderTask>
PBScanFolderTask::scanFolderTaskWithDictionary(PBScanDictionaryRef dictionary) {
    return std::make_unique<PBScanFolderTask>(std::move(dictionary));
}

std::shared_ptr<PBScanFolderOperation>
PBScanFolderOperation::scanFolderOperationWithDictionary(PBScanDictionaryRef dictionary) {
    return std::make_shared<PBScanFolderOperation>(std::move(dictionary));
}

void PBScanFolderTask::runWithOperation(platform::Operation& operation) {
    auto trigger = makeTrigger();
    const auto finishAtOnce = [&] {
        trigger->increaseStatusCount();
        trigger->decreaseStatusCountWithOperation(operation);
    };
    if (!_dictionary->AliasObject || !_dictionary->OperationQueue) {
        finishAtOnce();
        return;
    }
    // The count of the folder above then stays as it is: nothing of it counts as finished.
    if (!_dictionary->AliasObject->isMounted()) return;
    Run run{
        operation,
        PBAliasManager::pathWithAliasObject(
            *_dictionary->AliasObject, _dictionary->RelativePath.value_or(QString())),
        std::move(trigger), FilePropertyBatch(_dictionary, operation)};
    if (isScannedForOpenFiles(run.folderPath)) {
        trigger = run.trigger;
        finishAtOnce();
        return;
    }
    checkAttachedOperation(run.operation);
    ++_dictionary->services->figures.folders;
    if (_dictionary->OpenFilesOpenFileObjArray.empty()) {
        walkFolder(run);
    } else {
        walkListedFiles(run);
    }
}

void PBScanFolderTask::checkAttachedOperation(platform::Operation& operation) const {
    if (_ignoreCheckAttachOperation) return;
    ::checkAttachedOperation(_dictionary->AttachOperationArray.get(), operation);
}

std::shared_ptr<PBScanFinishedTrigger> PBScanFolderTask::makeTrigger() const {
    auto trigger = PBScanFinishedTrigger::scanFinishedTriggerWithParent(
        _dictionary->ScanFinishedTrigger,
        PBScanFinishedObject(_dictionary->AliasObject, _dictionary->RelativePath));
    trigger->setManager(_dictionary->services->scanFinishedManager);
    if (!_dictionary->ScanFinishedTrigger) trigger->setScanDictionary(_dictionary);
    return trigger;
}

bool PBScanFolderTask::isScannedForOpenFiles(const QString& folderPath) const {
    if (_dictionary->IsOpenFilesScanFolder || !_dictionary->OpenFiles) return false;
    const qint64 folderId =
        PBCatalogue(*_dictionary->Database)
            .findFolderIdByAliasId(_dictionary->AliasObject->aliasId(), _dictionary->RelativePath)
            .value_or(0);
    const auto match = _dictionary->OpenFiles->matchFolder(folderId, folderPath);
    return match.kind != PBOpenFiles::FolderMatch::Outside && match.fileArray.empty();
}

void PBScanFolderTask::walkFolder(Run& run) const {
    platform::Operation& operation = run.operation;
    run.trigger->increaseStatusCount();
    const ReadAhead* ahead = _dictionary->services->readAhead;
    const std::size_t inHand = ahead ? ahead->capacity() : 0;
    std::deque<Entry> waiting;
    const auto takeFirst = [&] {
        Entry first = std::move(waiting.front());
        waiting.pop_front();
        takeEntry(run, std::move(first));
    };
    const auto visit = [&](const DirectoryEntry& entry) {
        if (operation.isCancelled()) return false;
        waiting.push_back(lookAhead(run, entry));
        if (waiting.size() > inHand) takeFirst();
        return true;
    };
    const auto undecodable = [&](const DirectoryEntry& entry) {
        const auto& tell = _dictionary->services->leftOutForItsName;
        const bool mayHavePhotographs = entry.isDirectory ? !entry.isPackage && !entry.isLink
                                                          : importerOf(run, entry.name) != nullptr;
        if (tell && mayHavePhotographs) tell(run.folderPath, entry.name);
    };
    if (platform::FileManager::enumerate(run.folderPath, visit, undecodable))
        run.trigger->setIncomplete();
    while (!waiting.empty() && !operation.isCancelled())
        takeFirst();
    tryAgain(run);
    for (auto& task : run.subTasks) {
        if (operation.isCancelled()) break;
        task->runWithOperation(operation);
        task.reset();
    }
    if (!operation.isCancelled()) run.trigger->decreaseStatusCountWithOperation(operation);
}

PBScanFolderTask::Entry PBScanFolderTask::lookAhead(Run& run, DirectoryEntry entry) const {
    Entry waiting{std::move(entry)};
    const ScanServices& services = *_dictionary->services;
    if (!services.readAhead || waiting.entry.isDirectory) return waiting;
    const QString& name = waiting.entry.name;
    if (auto importer = importerOf(run, name); importer && !isLeftAlone(run, name))
        waiting.file = services.readAhead->read(
            platform::pathInFolder(run.folderPath, name), std::move(importer));
    return waiting;
}

void PBScanFolderTask::takeEntry(Run& run, Entry waiting) const {
    const DirectoryEntry& entry = waiting.entry;
    checkAttachedOperation(run.operation);
    if (entry.isPackage) return;
    if (!entry.isDirectory) {
        takeFile(run, waiting);
        flushIfDue(run, false);
        return;
    }
    // A link would be walked twice, or without end.
    if (entry.isLink || !_dictionary->RecurseSubFolder) return;
    auto dictionary = subFolder(run, platform::pathInFolder(run.folderPath, entry.name));
    if (dictionary && !run.operation.isCancelled())
        run.subTasks.push_back(scanFolderTaskWithDictionary(std::move(dictionary)));
}

PBScanDictionaryRef PBScanFolderTask::subFolder(const Run& run, const QString& path) const {
    QString relativePath;
    const auto root = _dictionary->services->aliasManager.appropriateAliasObjectForPath(
        path, &relativePath, false);
    if (!root) return nullptr;
    run.trigger->increaseStatusCount();
    auto dictionary = std::make_shared<PBScanDictionary>(*_dictionary);
    dictionary->AliasObject = root;
    dictionary->ScanFinishedTrigger = run.trigger;
    // With none, that of this folder stays: it matters for a nested root only.
    if (!relativePath.isEmpty()) dictionary->RelativePath = relativePath;
    return dictionary;
}

void PBScanFolderTask::walkListedFiles(Run& run) const {
    const auto& files = _dictionary->OpenFilesOpenFileObjArray;
    for (const PBOpenFileObject& file : files) {
        if (run.operation.isCancelled()) return;
        Entry listed{{.name = file.fileName}};
        takeFile(run, listed);
        flushIfDue(run, &file == &files.back());
    }
}

void PBScanFolderTask::tryAgain(Run& run) const {
    for (const QString& name : std::exchange(run.unread, {})) {
        if (run.operation.isCancelled()) return;
        Entry again{{.name = name}};
        takeFile(run, again);
        flushIfDue(run, false);
    }
    if (run.unread.isEmpty()) return;
    // They have no row: the next scan finds them.
    run.trigger->setIncomplete();
    tellUnreadFile(*_dictionary, platform::pathInFolder(run.folderPath, run.unread.constFirst()));
}

std::unique_ptr<PBImageImporterProtocol>
PBScanFolderTask::importerOf(const Run& run, const QString& name) const {
    return _dictionary->services->imageImporterManager.imageImporterForImageURL(
        platform::pathInFolder(run.folderPath, name));
}

bool PBScanFolderTask::isLeftAlone(Run& run, const QString& name) const {
    findFolderRow(run);
    const auto& isBeingWritten = _dictionary->services->isBeingWritten;
    return isKnown(run, name) || run.isUnread ||
           (isBeingWritten && isBeingWritten(platform::pathInFolder(run.folderPath, name)));
}

void PBScanFolderTask::takeFile(Run& run, Entry& waiting) const {
    const QString& name = waiting.entry.name;
    auto importer = importerOf(run, name);
    if (!importer || run.operation.isCancelled() || isLeftAlone(run, name)) return;
    // As it was before the catalogue was asked.
    const std::uint64_t unknownAt = run.folderAt.value_or(0);
    checkAttachedOperation(run.operation);
    const QString path = platform::pathInFolder(run.folderPath, name);
    ReadAhead* ahead = _dictionary->services->readAhead;
    if (ahead && !waiting.file.isValid()) waiting.file = ahead->read(path, std::move(importer));
    const std::stop_token stop = run.operation.stopToken();
    NewFile file = ahead ? ahead->wait(std::move(waiting.file), stop)
                         : readNewFile(path, std::move(importer), stop);
    if (!file.values || run.operation.isCancelled()) return;
    if (file.properties.status == codec::PropertiesStatus::NotNow) {
        run.unread.append(name);
        return;
    }
    if (!makeFolderRow(run)) return;
    FileProperty property = makeFileProperty(run.folderPath, name, run.folderId, std::move(file));
    property.unknownAt = unknownAt;
    run.batch.add(std::move(property));
}

bool PBScanFolderTask::isKnown(Run& run, const QString& name) const {
    if (run.folderId <= 0) return false;
    if (run.knownAt != _dictionary->attachedCount()) {
        run.knownAt = _dictionary->attachedCount();
        run.knownNames.clear();
        FMResultSet row = _dictionary->Database->executeQuery(
            QStringLiteral("select FileName from ImageFile where FolderId = ?"), run.folderId);
        while (row.next())
            run.knownNames.insert(row.stringForColumnIndex(0));
        if (row.hadError()) setUnread(run);
    }
    return run.knownNames.contains(name);
}

void PBScanFolderTask::findFolderRow(Run& run) const {
    // Without a row there will be none until an image is found here, or attached work finds one;
    // and nothing else removes one either.
    const std::uint64_t attached = _dictionary->attachedCount();
    if (run.folderAt == attached) return;
    run.folderAt = attached;
    const auto found =
        PBCatalogue(*_dictionary->Database)
            .findFolderIdByAliasId(_dictionary->AliasObject->aliasId(), _dictionary->RelativePath);
    if (!found) setUnread(run);
    run.folderId = found.value_or(0);
}

void PBScanFolderTask::setUnread(Run& run) const {
    tellUnreadCatalogue(*_dictionary);
    run.isUnread = true;
    run.trigger->setIncomplete();
}

bool PBScanFolderTask::makeFolderRow(Run& run) const {
    findFolderRow(run);
    if (run.folderId > 0) return true;
    if (run.isUnread) return false;
    const platform::Lock lock(_dictionary->services->insertFolderAliasLock);
    if (run.operation.isCancelled()) return false;
    run.folderId =
        PBCatalogue(*_dictionary->Database)
            .insertFolderWithAliasId(
                _dictionary->AliasObject->aliasId(), _dictionary->RelativePath.value_or(QString()));
    if (run.folderId <= 0) {
        FilePropertyBatch(_dictionary, run.operation)
            .tellFailure(_dictionary->Database->lastErrorMessage());
    }
    return run.folderId > 0;
}

void PBScanFolderTask::flushIfDue(Run& run, bool isLast) const {
    const std::size_t pending = run.batch.size();
    if (pending == 0) return;
    const double now = _dictionary->services->now();
    const double since = now - _dictionary->PushImageFileItemTime->number().toDouble();
    const auto& limits = group::folderScanLimits;
    if (pending <= limits.count && since <= limits.seconds && !isLast) return;
    checkAttachedOperation(run.operation);
    const auto drain = [&] { checkAttachedOperation(run.operation); };
    run.batch.flush(drain);
    // Also where none of them is on display: each further one would be a transaction of its own.
    _dictionary->PushImageFileItemTime->setNumber(now);
}
