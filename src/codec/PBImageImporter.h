#pragma once

#include "codec/PBImageImporterProtocol.h"

/// The importer for every format that the decoders read. What it reads goes through
/// `codec::frameReader`; what is no regular file that can be opened has no answers.
class PBImageImporter final : public PBImageImporterProtocol {
public:
    /// Every identifier that the system can decode and that conforms to "public.image", but for
    /// exactly "public.mpo-image".
    [[nodiscard]] static QStringList typeIdentifiers();
    /// `propertiesAtIndex` 0 of several files at once, in their order.
    [[nodiscard]] static std::vector<codec::PictureProperties>
    propertiesOfImages(std::span<const QString> paths, std::stop_token stop);

    /// Does not touch the disk.
    [[nodiscard]] static std::unique_ptr<PBImageImporter> initWithImagePath(const QString& path);

    [[nodiscard]] codec::PictureProperties
    propertiesAtIndex(std::size_t index, std::stop_token stop) override;
    [[nodiscard]] codec::ReadMetadata
    readMetadata(const codec::NewPicture& picture, std::stop_token stop) override;
    [[nodiscard]] codec::ReadResult
    readImage(const codec::DecodeRequest& request, std::stop_token stop) override;
    [[nodiscard]] codec::OpenedSequence
    openSequence(const codec::DecodeRequest& request, std::stop_token stop) override;
    [[nodiscard]] QImage createEmbeddedImage(unsigned maxSize, std::stop_token stop = {}) override;
    [[nodiscard]] std::size_t imageCount() override;
    [[nodiscard]] QString utiType() override;

private:
    explicit PBImageImporter(QString path) : _path(std::move(path)) {}

    const QString _path;
};
