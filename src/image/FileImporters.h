#pragma once

#include "image/ImageImporters.h"
#include "image/codec/PBImageImporterManager.h"

namespace image {

/// The importers of files on disk. Each opens its file anew when it is asked something, since scans
/// make them by the hundred thousand.
class FileImporters final : public ImageImporters {
public:
    /// The manager outlives this object and all importers.
    explicit FileImporters(PBImageImporterManager& manager) : _manager(manager) {}

    [[nodiscard]] bool isImageType(const QString& uti) const override;
    [[nodiscard]] std::unique_ptr<ImageImporter>
    imageImporterForImageURL(const QString& path) override;

private:
    PBImageImporterManager& _manager;
};

} // namespace image
