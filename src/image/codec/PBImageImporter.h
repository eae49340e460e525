#pragma once

#include "image/codec/PBImageImporterProtocol.h"

#include <QRectF>

#include <span>
#include <vector>

/// The importer for every format that the decoders read. Holds the open file; what it reads goes
/// through `codec::frameReader`.
class PBImageImporter final : public PBImageImporterProtocol {
public:
    /// Every identifier that the system can decode and that conforms to "public.image", but for
    /// exactly "public.mpo-image".
    [[nodiscard]] static QStringList typeIdentifiers();

    /// nullptr when the path is no regular file that can be opened. What stands in the file is not
    /// looked at.
    [[nodiscard]] static std::unique_ptr<PBImageImporter> initWithImagePath(const QString& path);
    ~PBImageImporter() override;

    [[nodiscard]] std::optional<PBDictionary> propertiesAtIndex(std::size_t index) override;
    /// `propertiesAtIndex` 0 of several importers at once; nullptr is a file that can't be read.
    [[nodiscard]] static std::vector<std::optional<PBDictionary>>
    propertiesOfImporters(std::span<PBImageImporterProtocol* const> importers);
    [[nodiscard]] QImage
    createImageWithMaxSize(unsigned maxSize, std::size_t index, std::stop_token stop = {}) override;
    [[nodiscard]] std::size_t imageCount() override;
    [[nodiscard]] QString utiType() override;

    static double fitInRect(QRectF& rect, double width, double height, bool fitIn);
    /// Reduced so that neither side is above `size` pixels, each side rounded and at least 1.
    [[nodiscard]] static QImage scaleCGImageRef(const QImage& image, double size);

private:
    PBImageImporter(int descriptor, QString typeHint);

    int _imageSourceRef; // the open file
    QString _typeHint;   // what the file's name says
};
