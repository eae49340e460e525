#include "codec/metadata/ImageProperties.h"

#include "codec/metadata/AuxProperties.h"
#include "codec/metadata/ExifProperties.h"
#include "codec/metadata/IptcProperties.h"
#include "codec/metadata/MetadataReader.h"
#include "codec/metadata/headers/ImageHeader.h"
#include "codec/pixels/Source.h"
#include "platform/files/TypeIdentifiers.h"

#include <QDateTime>

#include <cmath>
#include <exception>

namespace codec {

namespace {

/// Of files that are looked into; larger ones are hardly pictures.
constexpr std::size_t largestFile = std::size_t(4) << 30;

/// The five dictionaries while they are being put together.
struct Dictionaries {
    ExifProperties exif;
    PBDictionary aux;
    PBDictionary iptc;
};

Dictionaries readDictionaries(Bytes file, Container container) {
    const platform::Lock lock(metadataLibrary);
    const Metadata metadata = readMetadata(file, container);
    Dictionaries dictionaries{
        exifProperties(metadata), auxProperties(metadata), iptcProperties(metadata)};
    const QString speed = QStringLiteral("ISOSpeedRatings");
    const PBArray* stored = valueForKey(dictionaries.exif.exif, speed).array();
    const qint64 first = stored ? stored->front().toInteger() : 0;
    // 65535 says that the true value is in another tag.
    if (first <= 0 || first >= 65535) {
        dictionaries.exif.exif.erase(speed);
        if (const auto noted = makerFilmSpeed(metadata)) {
            dictionaries.exif.exif[speed] = PBArray{*noted};
        }
    }
    return dictionaries;
}

/// What the raw library knows fills the places that the metadata left empty.
void complete(Dictionaries& dictionaries, const RawDetails& raw) {
    const auto addText = [](PBDictionary& dictionary, const QString& key, const QString& text) {
        if (!text.isEmpty()) dictionary.emplace(key, text);
    };
    const auto addNumber = [&](const QString& key, double number) {
        if (std::isfinite(number) && number > 0) dictionaries.exif.exif.emplace(key, number);
    };
    addText(dictionaries.exif.tiff, QStringLiteral("Make"), raw.make);
    addText(dictionaries.exif.tiff, QStringLiteral("Model"), raw.model);
    addText(dictionaries.aux, QStringLiteral("LensModel"), raw.lens);
    addNumber(QStringLiteral("ExposureTime"), raw.exposureTime);
    addNumber(QStringLiteral("FNumber"), raw.aperture);
    addNumber(QStringLiteral("FocalLength"), raw.focalLength);
    if (std::isfinite(raw.iso) && raw.iso > 0 && raw.iso < 1e7) {
        dictionaries.exif.exif.emplace(
            QStringLiteral("ISOSpeedRatings"), PBArray{PBValue(std::llround(raw.iso))});
    }
    if (raw.captured > 0) {
        const auto captured = QDateTime::fromSecsSinceEpoch(raw.captured);
        dictionaries.exif.exif.emplace(
            QStringLiteral("DateTimeOriginal"),
            captured.toString(QStringLiteral("yyyy:MM:dd HH:mm:ss")));
    }
}

std::optional<int> storedOrientation(const PBDictionary& tiff) {
    const qint64 number = valueForKey(tiff, QStringLiteral("Orientation")).toInteger();
    return number >= 1 && number <= 8 ? std::optional(static_cast<int>(number)) : std::nullopt;
}

/// The container's own word, where it has one, stands above the metadata's: decoders follow it.
bool orientationIsContainers(Container container) {
    return container == Container::Heif || container == Container::JpegXl ||
           container == Container::JpegXlCodestream;
}

void setOrientation(
    const ImageHeader& header, Container container, PBDictionary& tiff, PBDictionary& properties) {
    const QString key = QStringLiteral("Orientation");
    std::optional<int> orientation = storedOrientation(tiff);
    const bool turned = header.orientation > 1;
    if (header.orientation > 0 &&
        (orientationIsContainers(container) || (!orientation && turned))) {
        const bool wasStored = tiff.contains(key);
        orientation = header.orientation;
        if (wasStored || turned) tiff[key] = *orientation;
    }
    if (!orientation) {
        tiff.erase(key); // out of range, which means nothing
        return;
    }
    properties[key] = *orientation;
}

/// Dots per inch: what the metadata says, else the header. Whole numbers, as the column holds them;
/// formats that count by the metre would make 72.009 of 72.
void setResolution(const ImageHeader& header, const PBDictionary& tiff, PBDictionary& properties) {
    const auto stored = [&](const QString& key) {
        const PBValue& unit = valueForKey(tiff, QStringLiteral("ResolutionUnit"));
        const qint64 kind = unit.isAbsent() ? 2 : unit.toInteger();
        const double perInch = kind == 2 ? 1.0 : kind == 3 ? 2.54 : 0.0;
        return valueForKey(tiff, key).toDouble() * perInch;
    };
    const auto set = [&](const QString& key, double fromTags, double fromHeader) {
        const double dots = fromTags > 0 ? fromTags : fromHeader;
        if (std::isfinite(dots) && dots >= 0.5 && dots < 1e6) properties[key] = std::llround(dots);
    };
    set(QStringLiteral("DPIWidth"), stored(QStringLiteral("XResolution")), header.dpiWidth);
    set(QStringLiteral("DPIHeight"), stored(QStringLiteral("YResolution")), header.dpiHeight);
}

/// Without a profile in the file, EXIF's colour space names one.
QString profileName(const ImageHeader& header, const PBDictionary& exif) {
    if (!header.profileName.isEmpty()) return header.profileName;
    const qint64 space = valueForKey(exif, QStringLiteral("ColorSpace")).toInteger();
    return space == 1   ? signalledProfileName(1, 13)
           : space == 2 ? QStringLiteral("Adobe RGB (1998)")
                        : QString();
}

PBDictionary topLevel(const ImageHeader& header) {
    PBDictionary properties;
    properties[QStringLiteral("PixelWidth")] = header.width;
    properties[QStringLiteral("PixelHeight")] = header.height;
    if (header.depth > 0) properties[QStringLiteral("Depth")] = header.depth;
    if (!header.colorModel.isEmpty()) {
        properties[QStringLiteral("ColorModel")] = header.colorModel;
    }
    return properties;
}

PBDictionary assemble(const ImageHeader& header, Container container, Dictionaries dictionaries) {
    PBDictionary properties = topLevel(header);
    setResolution(header, dictionaries.exif.tiff, properties);
    setOrientation(header, container, dictionaries.exif.tiff, properties);
    const QString profile = profileName(header, dictionaries.exif.exif);
    if (!profile.isEmpty()) properties[QStringLiteral("ProfileName")] = profile;
    const auto add = [&](const QString& key, PBDictionary dictionary) {
        if (!dictionary.empty()) properties[key] = PBValue(std::move(dictionary));
    };
    add(QStringLiteral("{Exif}"), std::move(dictionaries.exif.exif));
    add(QStringLiteral("{ExifAux}"), std::move(dictionaries.aux));
    add(QStringLiteral("{TIFF}"), std::move(dictionaries.exif.tiff));
    add(QStringLiteral("{IPTC}"), std::move(dictionaries.iptc));
    add(QStringLiteral("{GPS}"), std::move(dictionaries.exif.gps));
    if (container == Container::Gif && header.delay >= 0) {
        add(QStringLiteral("{GIF}"), {{QStringLiteral("DelayTime"), header.delay}});
    }
    return properties;
}

std::optional<PBDictionary> read(Bytes file, const QString& typeIdentifier, std::size_t frame) {
    const Container container = sniffContainer(file);
    std::optional<RawDetails> raw;
    if (platform::TypeIdentifiers::conformsTo(
            typeIdentifier, platform::TypeIdentifiers::cameraRawImage) &&
        frame == 0) {
        raw = readRawDetails(file);
    }
    const auto header = raw ? std::optional(raw->header) : readImageHeader(file, container, frame);
    if (!header || header->width == 0 || header->height == 0) return std::nullopt;
    Dictionaries dictionaries = readDictionaries(file, container);
    if (raw) complete(dictionaries, *raw);
    return assemble(*header, container, std::move(dictionaries));
}

} // namespace

std::optional<PBDictionary>
readImageProperties(int descriptor, const QString& typeIdentifier, std::size_t frame) {
    try {
        const auto source = Source::fromDescriptor(descriptor);
        if (!source || source->size() > largestFile) return std::nullopt;
        return read(Bytes(source->bytes()), typeIdentifier, frame);
    } catch (...) {
        return std::nullopt;
    }
}

void prepareImageProperties() {
    const platform::Lock lock(metadataLibrary);
    setUpMetadataLibrary();
}

} // namespace codec
