#include "codec/metadata/MetadataReader.h"

#include "codec/metadata/BigTiff.h"
#include "codec/metadata/MetadataRecovery.h"

#include <exiv2/exiv2.hpp>
#include <exiv2/webpimage.hpp>

#include <algorithm>
#include <exception>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace codec {

namespace {

using Maker = Exiv2::Image::AutoPtr (*)(Exiv2::BasicIo::AutoPtr, bool);

/// The library's own look at a file is never asked: its readers of films overflow their buffers.
Maker makerFor(Container container) {
    switch (container) {
    case Container::Jpeg:
        return Exiv2::newJpegInstance;
    case Container::Png:
        return Exiv2::newPngInstance;
    case Container::Tiff:
        return Exiv2::newTiffInstance;
    case Container::WebP:
        return Exiv2::newWebPInstance;
    case Container::Heif:
    case Container::Cr3:
        return Exiv2::newBmffInstance;
    case Container::Jpeg2000:
        return Exiv2::newJp2Instance;
    case Container::Photoshop:
        return Exiv2::newPsdInstance;
    case Container::Cr2:
        return Exiv2::newCr2Instance;
    case Container::Crw:
        return Exiv2::newCrwInstance;
    case Container::Mrw:
        return Exiv2::newMrwInstance;
    case Container::Orf:
        return Exiv2::newOrfInstance;
    case Container::Raf:
        return Exiv2::newRafInstance;
    case Container::Rw2:
        return Exiv2::newRw2Instance;
    default:
        return nullptr;
    }
}

std::optional<Metadata> read(Bytes file, Maker maker) {
    try {
        Exiv2::BasicIo::AutoPtr io(new Exiv2::MemIo(file.data(), static_cast<long>(file.size())));
        std::unique_ptr<Exiv2::Image> image(maker(io, false).release());
        if (!image) return std::nullopt;
        try {
            image->readMetadata();
        } catch (const std::exception&) {
            // What was read before the damage counts.
        }
        const Exiv2::ByteOrder byteOrder = image->byteOrder();
        Metadata metadata(std::move(image));
        if (byteOrder != Exiv2::invalidByteOrder) metadata.byteOrder = byteOrder;
        return metadata;
    } catch (...) {
        return std::nullopt;
    }
}

/// The library turns dates of XMP into the zone of this machine; cameras and EXIF mean the clock on
/// the spot, so that `exifProperties` reads these itself.
bool isDate(const Exiv2::Exifdatum& datum) {
    constexpr std::uint16_t dates[] = {0x0132, 0x9003, 0x9004, 0x9290, 0x9291, 0x9292};
    return std::ranges::find(dates, datum.tag()) != std::end(dates);
}

/// The XMP properties that are worth a conversion, which takes as long as reading the file: all
/// that stand for EXIF tags in a file without such tags, else the position where EXIF has none.
Exiv2::XmpData lackingExif(const Metadata& metadata) {
    bool hasExposure = false;
    bool hasPosition = false;
    for (const Exiv2::Exifdatum& datum : metadata.exif()) {
        const std::uint16_t tag = datum.tag();
        if (datum.groupName() == "Photo") {
            hasExposure = hasExposure || tag == 0x829A || tag == 0x829D || tag == 0x9003;
        } else if (tag == 0x0002 && datum.groupName() == "GPSInfo") {
            hasPosition = true;
        }
    }
    Exiv2::XmpData lacking;
    for (const Exiv2::Xmpdatum& datum : metadata.xmp()) {
        const std::string group = datum.groupName();
        if (group != "exif" && group != "exifEX" && group != "tiff") continue;
        const bool position = datum.tagName().starts_with("GPS");
        if (position ? !hasPosition : !hasExposure) lacking.add(datum);
    }
    return lacking;
}

/// What a file has in XMP alone is taken over; what stands in both is believed of EXIF.
void completeExif(Metadata& metadata) {
    try {
        Exiv2::XmpData lacking = lackingExif(metadata);
        if (lacking.empty()) return;
        const auto identity = [](const Exiv2::Exifdatum& datum) {
            return std::pair(datum.ifdId(), datum.tag());
        };
        std::set<std::pair<int, std::uint16_t>> present;
        for (const Exiv2::Exifdatum& datum : metadata.exif())
            present.insert(identity(datum));
        Exiv2::ExifData converted;
        Exiv2::copyXmpToExif(lacking, converted);
        for (const Exiv2::Exifdatum& datum : converted) {
            if (!isDate(datum) && !present.contains(identity(datum))) metadata.exif().add(datum);
        }
    } catch (...) {
        return; // what was taken over so far stays
    }
}

bool isLibraryReady VELMORA_GUARDED_BY(metadataLibrary) = false;

} // namespace

platform::Mutex metadataLibrary;

void setUpMetadataLibrary() {
    if (std::exchange(isLibraryReady, true)) return;
    Exiv2::XmpParser::initialize();
    Exiv2::enableBMFF(true);
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
}

Metadata readMetadata(Bytes file, Container container) {
    setUpMetadataLibrary();
    const Maker maker = makerFor(container);
    std::optional<Metadata> understood;
    if (maker) {
        // A JPEG file has its metadata before its pixels; beyond this a search for it is in vain.
        constexpr std::size_t longestJpegHead = std::size_t(32) << 20;
        const bool isJpeg = container == Container::Jpeg;
        understood = read(isJpeg ? file.part(0, longestJpegHead) : file, maker);
    } else if (container == Container::BigTiff) {
        std::vector<std::uint8_t> classic = classicTiff(file);
        understood = read(Bytes(classic), Exiv2::newTiffInstance);
        if (understood) understood->keep(std::move(classic));
    }
    Metadata metadata = understood ? std::move(*understood) : Metadata();
    const bool hasNothing = metadata.exif().empty() && metadata.xmp().empty();
    if (hasNothing || container == Container::WebP) recoverMetadata(file, container, metadata);
    completeExif(metadata);
    return metadata;
}

} // namespace codec
