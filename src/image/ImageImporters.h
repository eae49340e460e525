#pragma once

#include "platform/PBValue.h"

#include <QImage>
#include <QString>

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <vector>

namespace image {

/// One image file, read when it is asked something: what waits in a queue holds no open file. Used
/// by one thread at a time.
class ImageImporter {
public:
    virtual ~ImageImporter() = default;
    /// The properties of a frame without decoding it: "PixelWidth", "{Exif}" and so on; nothing for
    /// a file that can't be read.
    [[nodiscard]] virtual std::optional<PBDictionary> propertiesAtIndex(std::size_t index) = 0;
    /// The frame with its longer side reduced to `maxSize` pixels, 0 for the full size; a null
    /// image if it can't be decoded, or `stop` asked for the end.
    [[nodiscard]] virtual QImage
    createImageWithMaxSize(int maxSize, std::size_t index, const std::stop_token& stop) = 0;
};

/// What reads image files, as far as scans and thumbnails need it. Any thread.
class ImageImporters {
public:
    virtual ~ImageImporters() = default;
    /// Whether files of this type identifier are images that can be read.
    [[nodiscard]] virtual bool isImageType(const QString& uti) const = 0;
    /// nullptr for a file that is no image by its name. Does not touch the disk.
    [[nodiscard]] virtual std::unique_ptr<ImageImporter>
    imageImporterForImageURL(const QString& path) = 0;
    /// `propertiesAtIndex` 0 of importers that were made here, in their order: for many small files
    /// this may cost far less than asking for one after the other.
    [[nodiscard]] virtual std::vector<std::optional<PBDictionary>>
    propertiesOfImporters(std::span<ImageImporter* const> importers) {
        std::vector<std::optional<PBDictionary>> all;
        for (ImageImporter* importer : importers)
            all.push_back(importer->propertiesAtIndex(0));
        return all;
    }
};

} // namespace image
