#pragma once

#include "image/codec/PBImageImporterProtocol.h"

#include <QUrl>

#include <memory>
#include <mutex>
#include <vector>

/// Which importer class reads a file: decided by the type that the file's name says, in the order
/// of the rows. Lives as long as the application; any thread once it is made.
class PBImageImporterManager {
public:
    /// Fills the table with the one row of `PBImageImporter`.
    PBImageImporterManager();
    void loadImageImporter();
    /// A row behind the present ones. Before other threads know the manager.
    void addImageImporterClass(PBImageImporterClass importerClass);

    /// All type identifiers of all rows; a row that can't say its types yet is skipped.
    [[nodiscard]] QStringList supportImageTypes();
    /// The first class with a type that the identifier conforms to; nullptr when there is none.
    /// Owned by the manager.
    [[nodiscard]] const PBImageImporterClass* imageImporterClassForImageUTI(const QString& type);
    /// A new importer for the file; nullptr when its type is not supported or it can't be opened.
    [[nodiscard]] std::unique_ptr<PBImageImporterProtocol>
    imageImporterForImageURL(const QUrl& url);

private:
    struct Row {
        PBImageImporterClass importerClass;
        std::optional<QStringList> types; // guarded by _mutex; nothing: not asked yet
    };
    /// The row's types, asking the class the first time.
    std::optional<QStringList> typesOfRow(Row& row);

    std::mutex _mutex;
    std::vector<std::unique_ptr<Row>> _imageImporterClassArray;
};
