#include "codec/metadata/CarriedMetadata.h"

#include "codec/metadata/MetadataReader.h"
#include "codec/metadata/TextDecoding.h"

#include <exiv2/exiv2.hpp>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <span>
#include <stdexcept>
#include <string>

namespace codec {

namespace {

Bytes bytesOf(const QByteArray& file) {
    return Bytes(std::span(
        reinterpret_cast<const std::uint8_t*>(file.constData()),
        static_cast<std::size_t>(file.size())));
}

bool containsAny(const std::string& text, std::initializer_list<const char*> words) {
    return std::ranges::any_of(
        words, [&text](const char* word) { return text.find(word) != std::string::npos; });
}

std::string inSmallLetters(const std::string& text) {
    return QString::fromStdString(text).toLower().toStdString();
}

/// Cameras that know where they are say so in notes of their own, too.
bool isPlace(const Exiv2::Exifdatum& datum) {
    const std::string group = datum.groupName();
    if (group == "GPSInfo" || datum.key() == "Exif.Image.GPSTag") return true;
    const std::string tag = datum.tagName();
    return Exiv2::ExifTags::isMakerGroup(group) &&
           (tag == "State" ||
            containsAny(
                tag, {"GPS", "Latitude", "Longitude", "City", "Country", "Landmark", "Location"}));
}

/// Names of places as much as their coordinates.
bool isPlace(const Exiv2::Xmpdatum& datum) {
    const std::string group = datum.groupName();
    constexpr const char* groups[] = {"photoshop", "mediapro", "expressionmedia", "xmpDM", "dwc"};
    const bool isKnown =
        std::ranges::any_of(groups, [&group](const char* each) { return group == each; });
    // Where the photographer can be reached is another matter.
    const bool isNamed = (isKnown || group.starts_with("iptc")) &&
                         !datum.tagName().starts_with("CreatorContactInfo");
    return containsAny(inSmallLetters(datum.key()), {"gps", "latitude", "longitude"}) ||
           (isNamed &&
            containsAny(inSmallLetters(datum.tagName()), {"city", "state", "country", "location"}));
}

/// Record and data set of IPTC's Information Interchange Model, version 4.
bool isPlace(const Exiv2::Iptcdatum& datum) {
    constexpr std::uint16_t application = 2;
    constexpr std::uint16_t places[] = {
        26,  // content location code
        27,  // content location name
        90,  // city
        92,  // sub-location
        95,  // province or state
        100, // country code
        101, // country
    };
    return datum.record() == application && std::ranges::binary_search(places, datum.tag());
}

template <typename Data>
void removePlaces(Data& data) {
    for (auto datum = data.begin(); datum != data.end();)
        datum = isPlace(*datum) ? data.erase(datum) : std::next(datum);
}

bool hasNotesOfCamera(const Exiv2::ExifData& exif) {
    return std::any_of(exif.begin(), exif.end(), [](const Exiv2::Exifdatum& datum) {
        const std::string group = datum.groupName();
        // The library's own word on where the notes are.
        return group != "MakerNote" && Exiv2::ExifTags::isMakerGroup(group);
    });
}

void removePlacesAndTheirNotes(Exiv2::ExifData& exif) {
    const bool hadNotes = hasNotesOfCamera(exif);
    removePlaces(exif);
    if (!hadNotes || hasNotesOfCamera(exif)) return;
    // Where nothing was understood of them but places, they would be written as they were.
    const auto whole = exif.findKey(Exiv2::ExifKey("Exif.Photo.MakerNote"));
    if (whole != exif.end()) exif.erase(whole);
}

const Exiv2::byte* bytesOfBlock(const QByteArray& block) {
    return reinterpret_cast<const Exiv2::byte*>(block.constData());
}

std::uint32_t sizeOfBlock(const QByteArray& block) {
    return static_cast<std::uint32_t>(block.size());
}

QByteArray carriedExif(const QByteArray& block, const NewPicture& picture) {
    Exiv2::ExifData exif;
    const Exiv2::ByteOrder order =
        Exiv2::ExifParser::decode(exif, bytesOfBlock(block), sizeOfBlock(block));
    if (!picture.hasLocation) removePlacesAndTheirNotes(exif);
    if (exif.empty()) return {};
    exif["Exif.Image.Orientation"] = static_cast<std::uint16_t>(1);
    exif["Exif.Photo.PixelXDimension"] = static_cast<std::uint32_t>(picture.size.width());
    exif["Exif.Photo.PixelYDimension"] = static_cast<std::uint32_t>(picture.size.height());
    constexpr std::uint16_t uncalibrated = 0xffff;
    exif["Exif.Photo.ColorSpace"] = picture.isSrgb ? std::uint16_t{1} : uncalibrated;
    const auto rule = exif.findKey(Exiv2::ExifKey("Exif.Iop.InteroperabilityIndex"));
    if (rule != exif.end()) *rule = picture.isSrgb ? "R98" : "R03";
    Exiv2::Blob blob;
    Exiv2::ExifParser::encode(
        blob, order == Exiv2::invalidByteOrder ? Exiv2::littleEndian : order, exif);
    return {reinterpret_cast<const char*>(blob.data()), static_cast<qsizetype>(blob.size())};
}

QByteArray carriedIptc(Exiv2::IptcData& iptc, const NewPicture& picture) {
    if (!picture.hasLocation) removePlaces(iptc);
    const auto shape = iptc.findKey(Exiv2::IptcKey("Iptc.Application2.ImageOrientation"));
    if (shape != iptc.end()) iptc.erase(shape);
    if (iptc.empty()) return {};
    const Exiv2::DataBuf buffer = Exiv2::IptcParser::encode(iptc);
    return {reinterpret_cast<const char*>(buffer.pData_), static_cast<qsizetype>(buffer.size_)};
}

/// All texts in one character set: the library's own conversion needs files that a confined process
/// may not open.
Exiv2::IptcData inUtf8(const Exiv2::IptcData& iptc) {
    Exiv2::IptcData decoded;
    for (const Exiv2::Iptcdatum& datum : iptc) {
        if (const auto* text = dynamic_cast<const Exiv2::StringValueBase*>(&datum.value())) {
            const QByteArrayView bytes(
                text->value_.data(), static_cast<qsizetype>(text->value_.size()));
            Exiv2::StringValue value(decodeText(bytes).toStdString());
            decoded.add(Exiv2::IptcKey(datum.tag(), datum.record()), &value);
        } else {
            decoded.add(datum);
        }
    }
    return decoded;
}

/// What IPTC says and XMP does not.
void addTo(Exiv2::XmpData& xmp, const Exiv2::IptcData& iptc) {
    Exiv2::XmpData told;
    Exiv2::copyIptcToXmp(inUtf8(iptc), told, "UTF-8");
    for (const Exiv2::Xmpdatum& datum : told)
        if (xmp.findKey(Exiv2::XmpKey(datum.key())) == xmp.end()) xmp.add(datum);
}

QByteArray carriedXmp(Exiv2::XmpData& xmp, const NewPicture& picture) {
    if (!picture.hasLocation) removePlaces(xmp);
    if (xmp.empty()) return {};
    const auto replace = [&xmp](const char* key, int value) {
        if (xmp.findKey(Exiv2::XmpKey(key)) != xmp.end()) xmp[key] = std::to_string(value);
    };
    replace("Xmp.tiff.Orientation", 1);
    replace("Xmp.tiff.ImageWidth", picture.size.width());
    replace("Xmp.tiff.ImageLength", picture.size.height());
    replace("Xmp.exif.PixelXDimension", picture.size.width());
    replace("Xmp.exif.PixelYDimension", picture.size.height());
    replace("Xmp.exif.ColorSpace", picture.isSrgb ? 1 : 0xffff);
    std::string packet;
    if (Exiv2::XmpParser::encode(packet, xmp, Exiv2::XmpParser::useCompactFormat) != 0)
        throw std::runtime_error("packet");
    return QByteArray::fromStdString(packet);
}

/// Of a packet, if there is one; throws where it is damaged.
Exiv2::XmpData xmpOf(const QByteArray& packet) {
    Exiv2::XmpData xmp;
    if (!packet.isEmpty() && Exiv2::XmpParser::decode(xmp, packet.toStdString()) != 0)
        throw std::runtime_error("packet");
    return xmp;
}

/// The same of data sets.
Exiv2::IptcData iptcOf(const QByteArray& block) {
    Exiv2::IptcData iptc;
    if (!block.isEmpty() &&
        Exiv2::IptcParser::decode(iptc, bytesOfBlock(block), sizeOfBlock(block)) != 0)
        throw std::runtime_error("data sets");
    return iptc;
}

Exiv2::Image::AutoPtr openFile(const QByteArray& file) {
    // Of its own: the library changes TIFF files where they are.
    Exiv2::BasicIo::AutoPtr io(new Exiv2::MemIo);
    if (io->write(
            reinterpret_cast<const Exiv2::byte*>(file.constData()),
            static_cast<long>(file.size())) != file.size())
        return Exiv2::Image::AutoPtr();
    switch (sniffContainer(bytesOf(file))) {
    case Container::Jpeg:
        return Exiv2::newJpegInstance(io, false);
    case Container::Png:
        return Exiv2::newPngInstance(io, false);
    case Container::Tiff:
        return Exiv2::newTiffInstance(io, false);
    case Container::Jpeg2000:
        return Exiv2::newJp2Instance(io, false);
    default:
        return Exiv2::Image::AutoPtr();
    }
}

void fill(Exiv2::Image& image, const MetadataBlocks& metadata) {
    if (!metadata.exif.isEmpty()) {
        Exiv2::ExifData exif;
        const Exiv2::ByteOrder order = Exiv2::ExifParser::decode(
            exif, bytesOfBlock(metadata.exif), sizeOfBlock(metadata.exif));
        // A TIFF file has tags of its own, which say where its pixels are.
        for (const Exiv2::Exifdatum& datum : exif)
            image.exifData()[datum.key()].setValue(&datum.value());
        if (image.byteOrder() == Exiv2::invalidByteOrder) image.setByteOrder(order);
    }
    if (!metadata.iptc.isEmpty()) image.setIptcData(iptcOf(metadata.iptc));
    if (!metadata.xmp.isEmpty()) image.setXmpData(xmpOf(metadata.xmp));
}

} // namespace

MetadataBlocks carriedMetadata(const MetadataBlocks& blocks, const NewPicture& picture) {
    const platform::Lock lock(metadataLibrary);
    setUpMetadataLibrary();
    MetadataBlocks carried;
    carried.isComplete = blocks.isComplete;
    // What is damaged costs only itself.
    const auto carry = [&carried](const auto& part) {
        try {
            part();
        } catch (...) {
            carried.isComplete = false;
        }
    };
    Exiv2::IptcData iptc;
    carry([&] {
        if (!blocks.exif.isEmpty()) carried.exif = carriedExif(blocks.exif, picture);
    });
    carry([&] {
        iptc = iptcOf(blocks.iptc);
        if (picture.hasIptc) carried.iptc = carriedIptc(iptc, picture);
    });
    Exiv2::XmpData xmp;
    carry([&] { xmp = xmpOf(blocks.xmp); });
    carry([&] {
        if (!picture.hasIptc) addTo(xmp, iptc);
        carried.xmp = carriedXmp(xmp, picture);
    });
    for (QByteArray* block : {&carried.exif, &carried.iptc, &carried.xmp}) {
        if (block->size() <= largestMetadataBlock) continue;
        block->clear();
        carried.isComplete = false;
    }
    return carried;
}

bool embedMetadata(QByteArray& file, const MetadataBlocks& metadata, const QByteArray& profile) {
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
            // Its own test takes none that says another length than it has.
            image->setIccProfile(bytes, false);
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
