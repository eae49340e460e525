#include "image/MissingThumbsOperation.h"

#include "catalogue/PBCatalogue.h"
#include "codec/PBImageImporterManager.h"
#include "platform/files/PathNames.h"
#include "platform/tasks/OperationQueue.h"

void MissingThumbsOperation::add(qint64 fileId, Image image) {
    _fileIds.push_back(fileId);
    _images.push_back(std::move(image));
}

void MissingThumbsOperation::main() {
    const std::vector<qint64> fileIds(_fileIds.begin(), _fileIds.end());
    const auto stored = PBCatalogue(_services->db).storedThumbnails(fileIds);
    std::vector<std::shared_ptr<platform::Operation>> missing;
    for (std::size_t index = 0; index < _images.size(); ++index) {
        if (stored.contains(fileIds[index])) continue;
        const Image& image = _images[index];
        auto importer = _importers.imageImporterForImageURL(
            platform::pathInFolder(image.folderPath, image.fileName));
        if (!importer) continue;
        missing.push_back(std::make_shared<PBBuildThumbOperation>(
            _services, PBBuildThumbOperation::Request{
                           .fileId = fileIds[index],
                           .imageImporter = std::move(importer),
                           .checkExist = true,
                           .thumbSize = _thumbSize,
                           .imageSize = image.imageSize}));
    }
    _services->finished += _images.size() - missing.size();
    _services->queue.addInPlaceOf(*this, missing);
}
