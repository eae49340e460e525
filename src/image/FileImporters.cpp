#include "image/FileImporters.h"

#include "core/FileTypes.h"
#include "image/codec/PBImageImporter.h"

namespace image {

namespace {

class FileImporter final : public ImageImporter {
public:
    FileImporter(const PBImageImporterClass& importerClass, QString path)
        : _importerClass(importerClass), _path(std::move(path)) {}

    std::optional<PBDictionary> propertiesAtIndex(std::size_t index) override {
        const auto importer = open();
        return importer ? importer->propertiesAtIndex(index) : std::nullopt;
    }
    QImage
    createImageWithMaxSize(int maxSize, std::size_t index, const std::stop_token& stop) override {
        const auto importer = open();
        if (!importer) return {};
        return importer->createImageWithMaxSize(static_cast<unsigned>(maxSize), index, stop);
    }
    /// nullptr if the file can't be opened.
    [[nodiscard]] std::unique_ptr<PBImageImporterProtocol> open() const {
        return _importerClass.initWithImagePath(_path);
    }

private:
    const PBImageImporterClass& _importerClass;
    const QString _path;
};

} // namespace

bool FileImporters::isImageType(const QString& uti) const {
    return _manager.imageImporterClassForImageUTI(uti) != nullptr;
}

std::unique_ptr<ImageImporter> FileImporters::imageImporterForImageURL(const QString& path) {
    const PBImageImporterClass* importerClass = classForExtension(PBUtilities::pathExtension(path));
    return importerClass ? std::make_unique<FileImporter>(*importerClass, path) : nullptr;
}

std::vector<std::optional<PBDictionary>>
FileImporters::propertiesOfImporters(std::span<ImageImporter* const> importers) {
    std::vector<std::unique_ptr<PBImageImporterProtocol>> opened;
    std::vector<PBImageImporterProtocol*> readers;
    for (ImageImporter* importer : importers) {
        opened.push_back(static_cast<FileImporter*>(importer)->open());
        readers.push_back(opened.back().get());
    }
    return PBImageImporter::propertiesOfImporters(readers);
}

const PBImageImporterClass* FileImporters::classForExtension(QStringView extension) {
    const std::lock_guard lock(_mutex);
    // Names of one folder end alike.
    if (_last && _last->extension == extension) return _last->importerClass;
    _last = {
        extension.toString(),
        _manager.imageImporterClassForImageUTI(PBUtilities::extentionToUTI(extension))};
    return _last->importerClass;
}

} // namespace image
