#include "fileactions/export/PictureExport.h"

#include "codec/Bitmaps.h"
#include "codec/PBImageImporterManager.h"
#include "codec/encoding/PictureEncoder.h"

#include <QFile>

#include <cmath>

namespace fileactions {

namespace {

/// Files beyond this are not searched for metadata.
constexpr qint64 largestFile = qint64{1} << 30;

ExportedPicture failed(std::errc error) {
    return {.error = std::make_error_code(error), .content = {}};
}

/// Deep pixels that 8 bits hold as well are worth neither time nor space.
QImage withoutEmptyBits(QImage image, int depth) {
    if (depth > 8 || image.depth() != 64) return image;
    return std::move(image).convertToFormat(
        image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
}

codec::CarriedMetadata metadataOf(const QString& path, QSize size, bool location) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > largestFile) return {};
    return codec::carriedMetadata(file.readAll(), size, location);
}

} // namespace

ExportedPicture exportPicture(
    PBImageImporterManager& importers, const QString& path, double angle,
    const ExportSettings& settings, const std::stop_token& stop) {
    if (stop.stop_requested()) return failed(std::errc::operation_canceled);
    const auto importer = importers.imageImporterForImageURL(path);
    if (!importer) return failed(std::errc::bad_message);
    importer->setUrgency(codec::Urgency::Next);
    codec::DecodeRequest request;
    request.maxSize = settings.maxSize;
    request.depth = codec::Depth::Source;
    request.urgency = codec::Urgency::Next;
    codec::ReadResult read = importer->readImage(request, stop);
    if (stop.stop_requested()) return failed(std::errc::operation_canceled);
    if (read.status == codec::ReadStatus::NotNow)
        return failed(std::errc::resource_unavailable_try_again);
    // Half a picture would be a poor copy that looks like a whole one.
    if (read.frame.image.isNull() || !read.frame.isComplete) return failed(std::errc::bad_message);

    const auto properties = importer->propertiesAtIndex(0);
    const qint64 depth =
        properties ? valueForKey(*properties, QStringLiteral("Depth")).toInteger() : 0;
    QImage image = withoutEmptyBits(std::move(read.frame.image), static_cast<int>(depth));
    if (std::fmod(angle, 360.0) != 0) image = PBUtilities::rotateImageRef(image, angle);
    if (image.isNull()) return failed(std::errc::bad_message);

    codec::CarriedMetadata metadata;
    if (settings.hasMetadata && codec::hasMetadata(settings.type))
        metadata = metadataOf(path, image.size(), settings.hasLocation);
    codec::EncodedPicture encoded = codec::encodePicture(
        image, read.frame.profile, metadata,
        {.type = settings.type,
         .quality = settings.quality,
         .tiffCompression = settings.tiffCompression});
    if (stop.stop_requested()) return failed(std::errc::operation_canceled);
    if (encoded.bytes.isEmpty()) return failed(std::errc::not_supported);
    return {
        .error = {},
        .content = std::move(encoded.bytes),
        .isMetadataMissing = !encoded.isMetadataWritten};
}

} // namespace fileactions
