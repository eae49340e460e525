#include "fileactions/export/PictureExport.h"

#include "codec/Bitmaps.h"
#include "codec/PBImageImporterManager.h"
#include "codec/encoding/PictureEncoder.h"
#include "codec/process/FrameReader.h"

#include <QColorSpace>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <exception>
#include <limits>
#include <utility>

namespace fileactions {

namespace {

ExportedPicture failed(std::errc error) {
    return {.error = std::make_error_code(error), .content = {}};
}

bool isDeep(const PBDictionary& properties) {
    return valueForKey(properties, QStringLiteral("Depth")).toInteger() != 8;
}

/// What the making of a picture takes beside its decoder: the pixels, turned, as the encoder wants
/// them, and the encoder's planes, which are twice as large.
std::uint64_t bytesFor(const PBDictionary& properties, int maxSize) {
    constexpr std::uint64_t copies = 5;
    auto width = valueForKey(properties, QStringLiteral("PixelWidth")).toDouble();
    auto height = valueForKey(properties, QStringLiteral("PixelHeight")).toDouble();
    const double longest = std::max({width, height, 1.0});
    const double part = maxSize > 0 ? std::min(1.0, maxSize / longest) : 1.0;
    const std::uint64_t bytesPerPixel = isDeep(properties) ? 8 : 4;
    return static_cast<std::uint64_t>(width * part * height * part) * bytesPerPixel * copies;
}

/// Deep pixels that 8 bits hold as well are worth neither time nor space.
QImage withoutEmptyBits(QImage image, const PBDictionary& properties) {
    if (isDeep(properties) || image.depth() != 64) return image;
    return std::move(image).convertToFormat(
        image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
}

/// Of decoders that could not make a smaller one.
QImage withinSize(QImage image, int maxSize) {
    if (maxSize <= 0 || std::max(image.width(), image.height()) <= maxSize) return image;
    const QSize size = image.size().scaled(maxSize, maxSize, Qt::KeepAspectRatio);
    return image.scaled(
        size.expandedTo(QSize(1, 1)), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

/// How large its pixels are on paper, which goes along as metadata do; else a usual size, not what
/// a screen of this machine has.
void setResolution(QImage& image, const PBDictionary& properties, bool isWanted) {
    constexpr double usual = 72;
    constexpr double metersPerInch = 0.0254;
    const auto perMeter = [&](const QString& key) {
        const double dots = isWanted ? valueForKey(properties, key).toDouble() : 0;
        const double most = std::numeric_limits<std::uint16_t>::max();
        return static_cast<int>(
            std::lround((dots >= 1 && dots <= most ? dots : usual) / metersPerInch));
    };
    image.setDotsPerMeterX(perMeter(QStringLiteral("DPIWidth")));
    image.setDotsPerMeterY(perMeter(QStringLiteral("DPIHeight")));
}

/// A photograph that says that it is in sRGB says so when it is exported, too.
QByteArray profileOf(const codec::Frame& frame, const PBDictionary& properties) {
    const bool isNamed = !valueForKey(properties, QStringLiteral("ProfileName")).isAbsent();
    if (!frame.profile.isEmpty() || !isNamed) return frame.profile;
    return QColorSpace(QColorSpace::SRgb).iccProfile();
}

} // namespace

ExportedPicture
PictureExport::make(const QString& path, double angle, const std::stop_token& stop) {
    try {
        return tryToMake(path, angle, stop);
    } catch (const std::exception&) {
        return failed(std::errc::resource_unavailable_try_again);
    }
}

ExportedPicture
PictureExport::tryToMake(const QString& path, double angle, const std::stop_token& stop) {
    if (stop.stop_requested()) return failed(std::errc::operation_canceled);
    const auto importer = _importers.imageImporterForImageURL(path);
    if (!importer) return failed(std::errc::bad_message);
    importer->setUrgency(codec::Urgency::Next);
    const auto [status, properties] = importer->propertiesAtIndex(0, stop);
    if (stop.stop_requested()) return failed(std::errc::operation_canceled);
    if (status == codec::PropertiesStatus::NotNow)
        return failed(std::errc::resource_unavailable_try_again);
    const auto share = _memory.take(bytesFor(properties, _settings.maxSize), stop);
    if (!share) return failed(std::errc::operation_canceled);

    codec::DecodeRequest request;
    request.maxSize = _settings.maxSize;
    request.depth = codec::Depth::Source;
    request.urgency = codec::Urgency::Next;
    codec::ReadResult read = importer->readImage(request, stop);
    if (stop.stop_requested()) return failed(std::errc::operation_canceled);
    if (read.status == codec::ReadStatus::NotNow)
        return failed(std::errc::resource_unavailable_try_again);
    // Half a picture would be a poor copy that looks like a whole one.
    if (read.frame.image.isNull() || !read.frame.isComplete) return failed(std::errc::bad_message);
    QImage image =
        withinSize(withoutEmptyBits(std::move(read.frame.image), properties), _settings.maxSize);
    if (std::fmod(angle, 360.0) != 0) image = PBUtilities::rotateImageRef(image, angle);
    if (image.isNull()) return failed(std::errc::bad_message);
    setResolution(image, properties, _settings.hasMetadata);

    codec::MetadataBlocks metadata;
    bool isMetadataRead = true;
    if (_settings.hasMetadata && codec::hasMetadata(_settings.type)) {
        codec::ReadMetadata stored = importer->readMetadata(
            {.size = image.size(),
             .isSrgb = read.frame.profile.isEmpty(),
             .hasIptc = codec::hasIptc(_settings.type),
             .hasLocation = _settings.hasLocation},
            stop);
        if (stop.stop_requested()) return failed(std::errc::operation_canceled);
        if (stored.status == codec::PropertiesStatus::NotNow)
            return failed(std::errc::resource_unavailable_try_again);
        isMetadataRead = stored.status == codec::PropertiesStatus::Read;
        metadata = std::move(stored.blocks);
    }
    const auto embed =
        [&stop](QByteArray& file, const codec::MetadataBlocks& blocks, const QByteArray& profile) {
            return codec::frameReader()->embedMetadata(file, blocks, profile, stop);
        };
    const auto apart = [](const QImage& pixels, const QByteArray& profile,
                          const codec::MetadataBlocks& blocks,
                          const codec::EncodeSettings& settings) {
        return codec::frameReader()->encode(pixels, profile, blocks, settings);
    };
    codec::EncodedPicture encoded = codec::encodePicture(
        image, profileOf(read.frame, properties), metadata,
        {.type = _settings.type,
         .quality = _settings.quality,
         .tiffCompression = _settings.tiffCompression,
         .threads = _threads,
         .stop = stop},
        embed, apart);
    if (stop.stop_requested()) return failed(std::errc::operation_canceled);
    if (encoded.bytes.isEmpty()) return failed(std::errc::not_supported);
    return {
        .error = {},
        .content = std::move(encoded.bytes),
        .isMetadataMissing = !isMetadataRead || !encoded.isMetadataWritten};
}

bool isReadable(
    PBImageImporterManager& importers, const QString& path, const std::stop_token& stop) {
    const auto importer = importers.imageImporterForImageURL(path);
    if (!importer) return false;
    codec::DecodeRequest request;
    request.maxSize = 256;
    request.urgency = codec::Urgency::Next;
    const codec::ReadResult read = importer->readImage(request, stop);
    return read.status == codec::ReadStatus::NotNow ||
           (!read.frame.image.isNull() && read.frame.isComplete);
}

ExportedPicture exportPicture(
    PBImageImporterManager& importers, const QString& path, double angle,
    const ExportSettings& settings, const std::stop_token& stop) {
    return PictureExport(importers, settings).make(path, angle, stop);
}

} // namespace fileactions
