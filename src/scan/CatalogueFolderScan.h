#pragma once

#include "group/GroupPublication.h"
#include "group/GroupingStep.h"
#include "platform/files/FileManager.h"
#include "scan/LookAhead.h"
#include "scan/PBScanDictionary.h"
#include "scan/RowSpelling.h"
#include "scan/ScanSteps.h"
#include "scan/StaleRows.h"

#include <functional>
#include <vector>

/// The catalogue's side of a scan: takes rows, tests each file against the disk, puts those that
/// are unchanged into the work tree and collects the others for removal. Publishes now and then.
/// Belongs to one operation, on the scan thread.
class CatalogueFolderScan {
public:
    CatalogueFolderScan(PBScanDictionaryRef dictionary, platform::Operation& operation);

    /// Notes a folder that is gone for removal.
    [[nodiscard]] platform::Presence checkFolder(qint64 folderId, const QString& folderPath);
    /// The rows of a folder that the filter lets through, in the order of the sort type. Those for
    /// which `isTaken` answers false go to `deferred`. Stops on cancellation. Where the catalogue
    /// can't be read to the end, those before are answered, and the folder's own row stays.
    [[nodiscard]] std::vector<group::ImageFileRow> fetchRows(
        qint64 folderId, const std::function<bool(const QString& fileName)>& isTaken = {},
        std::vector<group::ImageFileRow>* deferred = nullptr);
    /// Files that can't be looked at are shown as away. `publishAtOnce`: after every row, for a
    /// picture that the user waits for.
    void scanRows(
        const QString& folderPath, platform::Presence folderPresence,
        const std::vector<group::ImageFileRow>& rows, bool publishAtOnce);

    /// Publishes what has come since the last publication.
    void publishRest();
    /// Removes from the catalogue what was collected.
    void removeStale();
    void drain();

private:
    /// A file that has changed is gone as the one that the row tells of.
    [[nodiscard]] platform::Presence presenceOf(
        const platform::EntryLook& look, const group::ImageFileRow& row, const QString& folderPath);
    void take(const group::ImageFileRow& row, const QString& folderPath, bool isAway);
    void publishIfDue(bool atOnce);
    void publish();
    /// Whether a former version stored the row without having been able to read its file.
    [[nodiscard]] bool isUnread(const group::ImageFileRow& row) const;

    const PBScanDictionaryRef _dictionary;
    platform::Operation& _operation;
    group::GroupingStep _step;
    group::PushRhythm _rhythm;
    ThumbnailsToBuild _thumbnails;
    RowSpelling _spelling;
    StaleRows _staleRows;
    LookAhead _lookAhead;
};
