#include "codec/encoding/CarriedMetadata.h"

#include "codec/metadata/MetadataReader.h"

#include <exiv2/exiv2.hpp>
#include <exiv2/webpimage.hpp>

#include <cstdint>
#include <span>
#include <string>

namespace codec {

namespace {

Bytes bytesOf(const QByteArray& file) {
    return Bytes(std::span(
        reinterpret_cast<const std::uint8_t*>(file.constData()),
        static_cast<std::size_t>(file.size())));
}

/// Tags of the first directory that speak of the former file's pixels, or hold other metadata
/// once more; those of DNG describe raw samples (DNG 1.4, tags from 50706 on).
bool isOfFormerFile(const Exiv2::Exifdatum& datum) {
    if (datum.groupName() != "Image") return false;
    switch (datum.tag()) {
    case 0x0100: // ImageWidth
    case 0x0101: // ImageLength
    case 0x02bc: // XMLPacket
    case 0x8649: // ImageResources
    case 0x83bb: // IPTCNAA
    case 0x8773: // InterColorProfile
    case 0x014a: // SubIFDs
        return true;
    default:
        return datum.tag() >= 50706 && datum.tag() <= 52600;
    }
}

QByteArray carriedExif(Exiv2::ExifData exif, Exiv2::ByteOrder order, QSize size, bool location) {
    Exiv2::ExifThumb(exif).erase();
    for (auto datum = exif.begin(); datum != exif.end();) {
        const bool goes = isOfFormerFile(*datum) || (!location && datum->groupName() == "GPSInfo");
        datum = goes ? exif.erase(datum) : std::next(datum);
    }
    if (!location) {
        // The directory's place, which would lead nowhere.
        const auto place = exif.findKey(Exiv2::ExifKey("Exif.Image.GPSTag"));
        if (place != exif.end()) exif.erase(place);
    }
    if (exif.empty()) return {};
    exif["Exif.Image.Orientation"] = static_cast<std::uint16_t>(1);
    exif["Exif.Photo.PixelXDimension"] = static_cast<std::uint32_t>(size.width());
    exif["Exif.Photo.PixelYDimension"] = static_cast<std::uint32_t>(size.height());
    Exiv2::Blob blob;
    Exiv2::ExifParser::encode(
        blob, order == Exiv2::invalidByteOrder ? Exiv2::littleEndian : order, exif);
    return {reinterpret_cast<const char*>(blob.data()), static_cast<qsizetype>(blob.size())};
}

QByteArray carriedXmp(Exiv2::XmpData xmp, QSize size, bool location) {
    for (auto datum = xmp.begin(); datum != xmp.end();) {
        const std::string key = datum->key();
        const bool isPosition = key.find("GPS") != std::string::npos;
        const bool isPicture = key.starts_with("Xmp.xmp.Thumbnails");
        datum = isPicture || (isPosition && !location) ? xmp.erase(datum) : std::next(datum);
    }
    if (xmp.empty()) return {};
    const auto replace = [&xmp](const char* key, int value) {
        if (xmp.findKey(Exiv2::XmpKey(key)) != xmp.end()) xmp[key] = std::to_string(value);
    };
    replace("Xmp.tiff.Orientation", 1);
    replace("Xmp.tiff.ImageWidth", size.width());
    replace("Xmp.tiff.ImageLength", size.height());
    replace("Xmp.exif.PixelXDimension", size.width());
    replace("Xmp.exif.PixelYDimension", size.height());
    std::string packet;
    if (Exiv2::XmpParser::encode(packet, xmp, Exiv2::XmpParser::useCompactFormat) != 0) return {};
    return QByteArray::fromStdString(packet);
}

Exiv2::Image::AutoPtr openFile(const QByteArray& file) {
    Exiv2::BasicIo::AutoPtr io(new Exiv2::MemIo(
        reinterpret_cast<const Exiv2::byte*>(file.constData()), static_cast<long>(file.size())));
    switch (sniffContainer(bytesOf(file))) {
    case Container::Jpeg:
        return Exiv2::newJpegInstance(io, false);
    case Container::Png:
        return Exiv2::newPngInstance(io, false);
    case Container::Tiff:
        return Exiv2::newTiffInstance(io, false);
    case Container::WebP:
        return Exiv2::newWebPInstance(io, false);
    case Container::Jpeg2000:
        return Exiv2::newJp2Instance(io, false);
    default:
        return Exiv2::Image::AutoPtr();
    }
}

void fill(Exiv2::Image& image, const CarriedMetadata& metadata) {
    if (!metadata.exif.isEmpty()) {
        Exiv2::ExifData exif;
        const Exiv2::ByteOrder order = Exiv2::ExifParser::decode(
            exif, reinterpret_cast<const Exiv2::byte*>(metadata.exif.constData()),
            static_cast<std::uint32_t>(metadata.exif.size()));
        // A TIFF file has tags of its own, which say where its pixels are.
        for (const Exiv2::Exifdatum& datum : exif)
            image.exifData()[datum.key()].setValue(&datum.value());
        if (image.byteOrder() == Exiv2::invalidByteOrder) image.setByteOrder(order);
    }
    if (!metadata.iptc.isEmpty()) {
        Exiv2::IptcData iptc;
        if (Exiv2::IptcParser::decode(
                iptc, reinterpret_cast<const Exiv2::byte*>(metadata.iptc.constData()),
                static_cast<std::uint32_t>(metadata.iptc.size())) == 0) {
            image.setIptcData(iptc);
        }
    }
    if (!metadata.xmp.isEmpty()) {
        Exiv2::XmpData xmp;
        if (Exiv2::XmpParser::decode(xmp, metadata.xmp.toStdString()) == 0) image.setXmpData(xmp);
    }
}

} // namespace

CarriedMetadata carriedMetadata(const QByteArray& file, QSize size, bool location) {
    const platform::Lock lock(metadataLibrary);
    CarriedMetadata carried;
    try {
        const Bytes bytes = bytesOf(file);
        const Metadata metadata = readMetadata(bytes, sniffContainer(bytes));
        carried.exif = carriedExif(metadata.exif(), metadata.byteOrder, size, location);
        if (!metadata.iptc().empty()) {
            const Exiv2::DataBuf buffer = Exiv2::IptcParser::encode(metadata.iptc());
            carried.iptc = QByteArray(
                reinterpret_cast<const char*>(buffer.pData_), static_cast<qsizetype>(buffer.size_));
        }
        carried.xmp = carriedXmp(metadata.xmp(), size, location);
    } catch (...) {
        return carried; // what could be had of it
    }
    return carried;
}

bool embedMetadata(QByteArray& file, const CarriedMetadata& metadata, const QByteArray& profile) {
    const platform::Lock lock(metadataLibrary);
    setUpMetadataLibrary();
    try {
        const Exiv2::Image::AutoPtr image = openFile(file);
        if (!image.get()) return false;
        image->readMetadata();
        fill(*image, metadata);
        if (!profile.isEmpty()) {
            Exiv2::DataBuf bytes(
                reinterpret_cast<const Exiv2::byte*>(profile.constData()),
                static_cast<long>(profile.size()));
            image->setIccProfile(bytes);
        }
        image->writeMetadata();
        Exiv2::BasicIo& io = image->io();
        if (io.open() != 0) return false;
        const Exiv2::DataBuf written = io.read(static_cast<long>(io.size()));
        if (written.size_ <= 0) return false;
        file = QByteArray(
            reinterpret_cast<const char*>(written.pData_), static_cast<qsizetype>(written.size_));
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace codec
