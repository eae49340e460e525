#include "codec/metadata/headers/ImageHeader.h"

#include <libraw/libraw.h>

#include <memory>

namespace codec {

namespace {

/// The library's turns (0, 3, 5, 6) as EXIF has them.
int orientationOfFlip(int flip) {
    switch (flip) {
    case 3:
        return 3;
    case 5:
        return 8;
    case 6:
        return 6;
    default:
        return 1;
    }
}

QString text(const char* letters) {
    return QString::fromUtf8(letters).trimmed();
}

RawDetails detailsOf(LibRaw& raw) {
    RawDetails details;
    details.header.orientation = orientationOfFlip(raw.imgdata.sizes.flip);
    raw.imgdata.params.user_flip = 0;
    raw.adjust_sizes_info_only();
    details.header.width = raw.imgdata.sizes.iwidth;
    details.header.height = raw.imgdata.sizes.iheight;
    details.header.depth = 16;
    details.header.colorModel =
        raw.imgdata.idata.colors == 1 ? QStringLiteral("Gray") : QStringLiteral("RGB");
    details.make = text(raw.imgdata.idata.make);
    details.model = text(raw.imgdata.idata.model);
    details.lens = text(raw.imgdata.lens.Lens);
    details.iso = static_cast<double>(raw.imgdata.other.iso_speed);
    details.exposureTime = static_cast<double>(raw.imgdata.other.shutter);
    details.aperture = static_cast<double>(raw.imgdata.other.aperture);
    details.focalLength = static_cast<double>(raw.imgdata.other.focal_len);
    details.captured = raw.imgdata.other.timestamp;
    return details;
}

} // namespace

std::optional<RawDetails> readRawDetails(Bytes file) {
    try {
        // The object is some hundred kilobytes large.
        const auto raw = std::make_unique<LibRaw>(LIBRAW_OPIONS_NO_DATAERR_CALLBACK);
        // The library never writes to the buffer, in spite of its signature.
        auto* const bytes = const_cast<std::uint8_t*>(file.data());
        if (raw->open_buffer(bytes, file.size()) != LIBRAW_SUCCESS) return std::nullopt;
        return detailsOf(*raw);
    } catch (...) {
        return std::nullopt;
    }
}

} // namespace codec
