#pragma once

#include "image/PBBuildThumbOperation.h"

#include <QString>

#include <vector>

class PBImageImporterManager;

/// Has the thumbnails built that are not stored yet, of images which the catalogue has had for some
/// time, so that nearly all are: an operation for each of them costs more than to look for them. On
/// the build queue, which knows it by the ids of all its files, and in its place in the line puts
/// operations for those that have none.
class MissingThumbsOperation final : public platform::Operation {
public:
    struct Image {
        QString folderPath;
        QString fileName;
        QSizeF imageSize; ///< pixels; not above 0 where it is not known
    };

    MissingThumbsOperation(
        std::shared_ptr<BuildThumbServices> services, PBImageImporterManager& importers,
        int thumbSize)
        : _services(std::move(services)), _importers(importers), _thumbSize(thumbSize) {}

    /// Before it is added to the queue. At most `OperationQueue::mostInPlace`; what is asked for
    /// waits for those that it is asked for with.
    void add(qint64 fileId, Image image);

    [[nodiscard]] std::span<const std::int64_t> keys() const override { return _fileIds; }

protected:
    void main() override;

private:
    const std::shared_ptr<BuildThumbServices> _services;
    PBImageImporterManager& _importers;
    const int _thumbSize;
    std::vector<std::int64_t> _fileIds;
    std::vector<Image> _images; // of the same places
};
