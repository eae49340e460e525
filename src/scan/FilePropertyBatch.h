#pragma once

#include "codec/PBImageImporterProtocol.h"
#include "platform/files/FileIdentity.h"
#include "scan/PBScanDictionary.h"
#include "scan/ScanSteps.h"

#include <functional>
#include <memory>
#include <optional>

/// One new file between its discovery and its place in the catalogue.
struct FileProperty {
    QString parentFolderPath;
    /// The columns of `ImageFile`.
    PBDictionary baseProperty;
    /// The columns of the metadata tables, where the file has any.
    std::optional<PBDictionary> exifProperty;
    std::optional<PBDictionary> exifAuxProperty;
    std::optional<PBDictionary> tiffProperty;
    std::optional<PBDictionary> iptcProperty;
    std::optional<PBDictionary> gpsProperty;
    /// Handed on to the thumbnail's operation.
    std::unique_ptr<PBImageImporterProtocol> imageImporter;
    /// 0 until the row is there.
    qint64 fileId = 0;
    platform::FileIdentity identity;
    /// The dictionary's `attachedCount` when the catalogue knew the folder and not the file.
    std::uint64_t unknownAt = 0;
};

/// The new files that wait to be stored together. All disk scans of one scan share the array. On
/// the scan thread.
class FilePropertyBatch {
public:
    FilePropertyBatch(PBScanDictionaryRef dictionary, platform::Operation& operation);

    void add(FileProperty property);
    [[nodiscard]] bool isEmpty() const { return size() == 0; }
    [[nodiscard]] std::size_t size() const { return _dictionary->ImageFilePropertyArray->size(); }

    /// Stores all in one transaction, puts them into the work tree, queues their thumbnails,
    /// publishes, and empties the batch. `drain` runs attached operations: before each file, and
    /// before the publication. A batch that can't be stored is not shown either: it waits for
    /// another scan. What goes from the disk between the two loses its row again.
    void flush(const std::function<void()>& drain);
    /// Tells the user, once, that the catalogue does not take what is new.
    void tellFailure(const QString& reason) const;

private:
    enum class Insertion {
        Stored,
        LeftOut, // known by now, or not taken; the others are none the worse
        Failed,  // the batch can't be stored
    };

    /// Leaves in the array what is stored.
    void insertRows();
    /// Of photographs that the ledger of marks knows.
    void restoreMarks();
    /// False when the batch can't be stored. A cancellation ends it between two files.
    [[nodiscard]] bool insertAll();
    /// An attached operation found the same file meanwhile, and stored and showed it; or the file
    /// or the row of its folder are gone, for which attached operations find photographs that are
    /// shown only. Nothing when the catalogue can't tell.
    [[nodiscard]] std::optional<bool> isOutOfDate(const FileProperty& property) const;
    [[nodiscard]] Insertion insert(FileProperty& property);
    /// Answers whether all rows of the file are there.
    [[nodiscard]] bool insertRow(FileProperty& property);
    [[nodiscard]] bool show(
        const group::ImageFileRow& row, FileProperty& property, group::GroupingStep& step,
        ThumbnailsToBuild& thumbnails);

    const PBScanDictionaryRef _dictionary;
    platform::Operation& _operation;
};
