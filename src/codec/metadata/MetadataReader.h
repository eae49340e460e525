#pragma once

#include "codec/metadata/headers/Bytes.h"
#include "codec/metadata/headers/Container.h"
#include "platform/tasks/Mutex.h"

#include <exiv2/exif.hpp>
#include <exiv2/image.hpp>
#include <exiv2/iptc.hpp>
#include <exiv2/xmp_exiv2.hpp>

#include <memory>
#include <utility>
#include <vector>

namespace codec {

/// The metadata of a file as its library has it, and the file's byte order. Movable only; used and
/// destroyed with `metadataLibrary` held, before the file's bytes go.
class Metadata {
public:
    Metadata() : Metadata(nullptr) {}
    /// Takes over what the image has read, which a copy would take half as long again for.
    explicit Metadata(std::unique_ptr<Exiv2::Image> image) : _image(std::move(image)) {
        if (!_image) _own = std::make_unique<Own>();
    }

    /// Bytes that the image was read from and that nobody else holds.
    void keep(std::vector<std::uint8_t> bytes) { _bytes = std::move(bytes); }

    [[nodiscard]] Exiv2::ExifData& exif() { return _image ? _image->exifData() : _own->exif; }
    [[nodiscard]] Exiv2::XmpData& xmp() { return _image ? _image->xmpData() : _own->xmp; }
    [[nodiscard]] const Exiv2::ExifData& exif() const {
        return _image ? _image->exifData() : _own->exif;
    }
    [[nodiscard]] const Exiv2::IptcData& iptc() const {
        return _image ? _image->iptcData() : _own->iptc;
    }
    [[nodiscard]] const Exiv2::XmpData& xmp() const {
        return _image ? _image->xmpData() : _own->xmp;
    }

    Exiv2::ByteOrder byteOrder = Exiv2::littleEndian;

private:
    struct Own {
        Exiv2::ExifData exif;
        Exiv2::IptcData iptc;
        Exiv2::XmpData xmp;
    };

    std::vector<std::uint8_t> _bytes;
    std::unique_ptr<Exiv2::Image> _image;
    std::unique_ptr<Own> _own;
};

/// The library's functions may be called by one thread at a time: whoever reads or evaluates a
/// `Metadata` holds this.
extern platform::Mutex metadataLibrary;

/// `readMetadata` does so when it is first called; a process that confines itself does it before.
void setUpMetadataLibrary() VELMORA_REQUIRES(metadataLibrary);

/// Reads what the file holds; empty where it holds nothing or is damaged. Never throws.
[[nodiscard]] Metadata readMetadata(Bytes file, Container container)
    VELMORA_REQUIRES(metadataLibrary);

} // namespace codec
