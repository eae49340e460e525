#pragma once

#include "codec/PBImageImporterProtocol.h"
#include "platform/tasks/Mutex.h"

#include <map>

/// Which importer class reads a file: decided by the type that the file's name says, in the order
/// of the rows. Lives as long as the application; any thread. Importers may outlive it.
class PBImageImporterManager {
public:
    /// Fills the table with the one row of `PBImageImporter`.
    PBImageImporterManager();
    /// A table of other rows, the first taking precedence.
    explicit PBImageImporterManager(std::vector<PBImageImporterClass> importerClasses);

    /// All type identifiers of all rows; a row that can't say its types yet is skipped.
    [[nodiscard]] QStringList supportImageTypes();
    /// The first class with a type that the identifier conforms to; nullptr when there is none.
    /// Owned by the manager.
    [[nodiscard]] const PBImageImporterClass* imageImporterClassForImageUTI(const QString& type);
    /// A new importer for the file; nullptr for one that is no image by its name. Does not touch
    /// the disk.
    [[nodiscard]] std::unique_ptr<PBImageImporterProtocol>
    imageImporterForImageURL(const QString& path);
    /// `propertiesAtIndex` 0 of the files, in their order: for many small ones this may cost far
    /// less than asking for one after the other.
    [[nodiscard]] std::vector<codec::PictureProperties>
    propertiesOfImages(std::span<const QString> paths, std::stop_token stop = {});

private:
    void loadImageImporter();
    /// The row's types, asking its class until it can say them.
    [[nodiscard]] std::optional<QStringList> typesOfRow(std::size_t row);
    [[nodiscard]] const PBImageImporterClass* classForFile(const QString& path);

    std::vector<PBImageImporterClass> _imageImporterClassArray; // not changed once it is made
    platform::Mutex _mutex;
    /// Of each row; nothing where it could not say yet.
    std::vector<std::optional<QStringList>> _types VELMORA_GUARDED_BY(_mutex);
    /// By extension; nullptr: no image. Looking one up in the types takes much longer.
    std::map<QString, const PBImageImporterClass*, std::less<>> _classes VELMORA_GUARDED_BY(_mutex);
};
