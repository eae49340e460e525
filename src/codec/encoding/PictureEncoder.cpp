#include "codec/encoding/PictureEncoder.h"

#include "codec/encoding/Encoders.h"

#include <QBuffer>
#include <QImageWriter>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace codec {

namespace {

enum class Format { Jpeg, Png, Tiff, WebP, Jpeg2000, JpegXl, Avif, Heic };

struct Type {
    QStringView identifier;
    Format format;
    bool hasQuality = false;
    bool hasAlpha = false;
    bool isDeep = false; ///< more than 8 bits a channel
};

constexpr Type types[] = {
    {.identifier = u"public.jpeg", .format = Format::Jpeg, .hasQuality = true},
    {.identifier = u"public.png", .format = Format::Png, .hasAlpha = true, .isDeep = true},
    {.identifier = u"public.tiff", .format = Format::Tiff, .hasAlpha = true, .isDeep = true},
    {.identifier = u"org.webmproject.webp",
     .format = Format::WebP,
     .hasQuality = true,
     .hasAlpha = true},
    {.identifier = u"public.jpeg-2000",
     .format = Format::Jpeg2000,
     .hasQuality = true,
     .isDeep = true},
    {.identifier = u"public.jpeg-xl",
     .format = Format::JpegXl,
     .hasQuality = true,
     .hasAlpha = true,
     .isDeep = true},
    {.identifier = u"public.avif",
     .format = Format::Avif,
     .hasQuality = true,
     .hasAlpha = true,
     .isDeep = true},
    {.identifier = u"public.heic",
     .format = Format::Heic,
     .hasQuality = true,
     .hasAlpha = true,
     .isDeep = true},
};

const Type* typeOf(const QString& identifier) {
    const auto found = std::ranges::find_if(types, [&](const Type& type) {
        return identifier.compare(type.identifier, Qt::CaseInsensitive) == 0;
    });
    return found == std::end(types) ? nullptr : found;
}

QImage opaque(const QImage& image) {
    if (!image.hasAlphaChannel()) return image;
    QImage ground(image.size(), image.depth() == 64 ? QImage::Format_RGBX64 : QImage::Format_RGB32);
    if (ground.isNull()) return {};
    ground.fill(Qt::white);
    ground.setDotsPerMeterX(image.dotsPerMeterX());
    ground.setDotsPerMeterY(image.dotsPerMeterY());
    QPainter(&ground).drawImage(0, 0, image);
    return ground;
}

QImage fitted(const QImage& image, const Type& type) {
    const bool isDeep = image.depth() == 64;
    if (isDeep && type.isDeep) {
        if (!image.hasAlphaChannel()) return image.convertToFormat(QImage::Format_RGBX64);
        return type.hasAlpha ? image.convertToFormat(QImage::Format_RGBA64) : opaque(image);
    }
    if (!type.hasAlpha) return opaque(image).convertToFormat(QImage::Format_RGB32);
    return image.convertToFormat(
        image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
}

/// Takes nothing more once it is stopped, upon which those who write into it give up.
class StoppableBuffer final : public QBuffer {
public:
    StoppableBuffer(QByteArray& bytes, const std::stop_token& stop)
        : QBuffer(&bytes), _stop(stop) {}

protected:
    qint64 writeData(const char* data, qint64 length) override {
        return _stop.stop_requested() ? -1 : QBuffer::writeData(data, length);
    }

private:
    const std::stop_token _stop;
};

QByteArray
written(const QImage& image, const char* format, int quality, const std::stop_token& stop) {
    QByteArray bytes;
    StoppableBuffer buffer(bytes, stop);
    QImageWriter writer(&buffer, format);
    if (quality >= 0) writer.setQuality(quality);
    return buffer.open(QIODevice::WriteOnly) && writer.write(image) ? bytes : QByteArray();
}

/// Puts in as much as goes into the file. Colours without their profile would be wrong: then there
/// is no file.
void putIn(
    EncodedPicture& picture, const MetadataBlocks& metadata, const QByteArray& profile,
    const Embed& embed) {
    if (picture.bytes.isEmpty() || (metadata.isEmpty() && profile.isEmpty())) return;
    if (embed(picture.bytes, metadata, profile)) return;
    picture.isMetadataWritten = metadata.isEmpty();
    // Packets may be larger than the file has room for.
    MetadataBlocks fewer = metadata;
    fewer.xmp.clear();
    if (!fewer.isEmpty() && !metadata.xmp.isEmpty() && embed(picture.bytes, fewer, profile)) return;
    if (!profile.isEmpty() && !embed(picture.bytes, {}, profile)) picture.bytes.clear();
}

} // namespace

QStringList writableTypes() {
    QStringList identifiers;
    for (const Type& type : types) {
        if (type.format != Format::Heic || encoders::hasHeic())
            identifiers.append(type.identifier.toString());
    }
    return identifiers;
}

bool hasQuality(const QString& type) {
    const Type* row = typeOf(type);
    return row && row->hasQuality;
}

bool hasMetadata(const QString& type) {
    return typeOf(type) != nullptr;
}

bool hasIptc(const QString& type) {
    const Type* row = typeOf(type);
    if (!row) return false;
    switch (row->format) {
    case Format::Jpeg:
    case Format::Png:
    case Format::Tiff:
    case Format::Jpeg2000:
        return true;
    default:
        return false;
    }
}

QByteArray encodeToTheEnd(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata,
    const EncodeSettings& settings) {
    const Type* type = typeOf(settings.type);
    if (!type) return {};
    switch (type->format) {
    case Format::Jpeg2000:
        return encoders::jpeg2000(image, settings.quality, settings.threads);
    case Format::JpegXl:
        return encoders::jpegXl(image, profile, metadata, settings.quality, settings.threads);
    case Format::Avif:
        return encoders::avif(image, profile, metadata, settings.quality, settings.threads);
    case Format::Heic:
        return encoders::heic(image, profile, metadata, settings.quality);
    default:
        return {};
    }
}

EncodedPicture encodePicture(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata,
    const EncodeSettings& settings, const Embed& embed, const EncodeApart& apart) {
    const Type* type = typeOf(settings.type);
    if (!type || image.isNull()) return {};
    const QImage pixels = fitted(image, *type);
    if (pixels.isNull()) return {};
    const double quality = std::clamp(settings.quality, 0.0, 1.0);
    EncodedPicture result;
    result.isMetadataWritten = metadata.isComplete;
    switch (type->format) {
    case Format::Jpeg:
        result.bytes =
            written(pixels, "jpeg", static_cast<int>(std::lround(quality * 100)), settings.stop);
        putIn(result, metadata, profile, embed);
        break;
    case Format::Png:
        result.bytes = written(pixels, "png", -1, settings.stop);
        putIn(result, metadata, {}, embed);
        // The metadata library's profiles in these files are not understood by others.
        if (!profile.isEmpty()) result.bytes = encoders::pngWithProfile(result.bytes, profile);
        break;
    case Format::Tiff:
        result.bytes = encoders::tiff(pixels, profile, settings);
        putIn(result, metadata, {}, embed);
        break;
    case Format::WebP:
        result.bytes = encoders::webp(pixels, profile, metadata, quality, settings.stop);
        break;
    case Format::Jpeg2000:
    case Format::JpegXl:
    case Format::Avif:
    case Format::Heic: {
        EncodeSettings clamped = settings;
        clamped.quality = quality;
        result.bytes = apart ? apart(pixels, profile, metadata, clamped)
                             : encodeToTheEnd(pixels, profile, metadata, clamped);
        if (type->format == Format::Jpeg2000) putIn(result, metadata, profile, embed);
        break;
    }
    }
    return result;
}

} // namespace codec
