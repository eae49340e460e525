#pragma once

#include "image/ImageImporters.h"
#include "image/codec/PBImageImporterManager.h"

#include <mutex>
#include <optional>

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
    [[nodiscard]] std::vector<std::optional<PBDictionary>>
    propertiesOfImporters(std::span<ImageImporter* const> importers) override;

private:
    struct Answer {
        QString extension;
        const PBImageImporterClass* importerClass; // nullptr: no image
    };
    [[nodiscard]] const PBImageImporterClass* classForExtension(QStringView extension);

    PBImageImporterManager& _manager;
    std::mutex _mutex; // guards the last answer
    std::optional<Answer> _last;
};

} // namespace image
