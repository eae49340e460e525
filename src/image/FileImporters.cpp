#include "image/FileImporters.h"

#include "core/FileTypes.h"

namespace image {

namespace {

class FileImporter final : public ImageImporter {
public:
    FileImporter(const PBImageImporterClass& importerClass, QString path)
        : _importerClass(importerClass), _path(std::move(path)) {}

    std::optional<PBDictionary> propertiesAtIndex(std::size_t index) override {
        const auto importer = _importerClass.initWithImagePath(_path);
        return importer ? importer->propertiesAtIndex(index) : std::nullopt;
    }
    QImage
    createImageWithMaxSize(int maxSize, std::size_t index, const std::stop_token& stop) override {
        const auto importer = _importerClass.initWithImagePath(_path);
        if (!importer) return {};
        return importer->createImageWithMaxSize(static_cast<unsigned>(maxSize), index, stop);
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
