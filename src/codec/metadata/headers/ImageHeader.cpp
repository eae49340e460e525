#include "codec/metadata/headers/ImageHeader.h"

#include "codec/metadata/headers/Headers.h"

#include <lcms2.h>

#include <array>
#include <cmath>
#include <exception>
#include <memory>

namespace codec {

namespace {

std::optional<ImageHeader> readContainer(Bytes file, Container container, std::size_t frame) {
    using namespace headers;
    switch (container) {
    case Container::Jpeg:
        return readJpeg(file);
    case Container::Png:
        return readPng(file, frame);
    case Container::Gif:
        return readGif(file, frame);
    case Container::Tiff:
    case Container::BigTiff:
    case Container::Cr2:
        return readTiff(file, frame);
    case Container::WebP:
        return readWebP(file, frame);
    case Container::Heif:
        return readHeif(file, frame);
    case Container::JpegXl:
    case Container::JpegXlCodestream:
        return readJpegXl(file);
    case Container::Jpeg2000:
    case Container::Jpeg2000Codestream:
        return readJpeg2000(file, container);
    case Container::Photoshop:
        return readPhotoshop(file);
    case Container::Bmp:
        return readBitmap(file);
    case Container::Icon:
        return readIcon(file, frame);
    case Container::Netpbm:
        return readNetpbm(file);
    case Container::Targa:
        return readTarga(file);
    case Container::Unknown:
    case Container::Cr3:
    case Container::Crw:
    case Container::Mrw:
    case Container::Orf:
    case Container::Raf:
    case Container::Rw2:
    case Container::X3f:
        return std::nullopt;
    }
    return std::nullopt;
}

struct CloseProfile {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};

} // namespace

std::optional<ImageHeader> readImageHeader(Bytes file, Container container, std::size_t frame) {
    try {
        std::optional<ImageHeader> header = readContainer(file, container, frame);
        if (!header || header->width == 0 || header->height == 0) return std::nullopt;
        const auto sensible = [](double dpi) {
            return std::isfinite(dpi) && dpi < 1e6 ? dpi : 0.0;
        };
        header->dpiWidth = sensible(header->dpiWidth);
        header->dpiHeight = sensible(header->dpiHeight);
        return header;
    } catch (const std::exception&) {
        return std::nullopt; // no memory for what the file asks for
    }
}

QString profileDescription(Bytes profile) {
    constexpr cmsUInt32Number mostBytes = 4096;
    const std::unique_ptr<void, CloseProfile> opened(
        cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size())));
    if (!opened) return {};
    std::array<wchar_t, mostBytes / sizeof(wchar_t)> letters = {};
    if (cmsGetProfileInfo(
            opened.get(), cmsInfoDescription, "en", "US", letters.data(), mostBytes) == 0) {
        return {};
    }
    letters.back() = L'\0';
    return QString::fromWCharArray(letters.data()).trimmed();
}

QString signalledProfileName(std::uint32_t primaries, std::uint32_t transferCharacteristics) {
    struct Name {
        std::uint32_t primaries;
        std::uint32_t transferCharacteristics;
        QStringView name;
    };
    // Code points of ITU-T H.273, tables 2 and 3.
    constexpr Name names[] = {
        {1, 13, u"sRGB IEC61966-2.1"},
        {1, 1, u"Rec. ITU-R BT.709-5"},
        {1, 8, u"Linear sRGB"},
        {12, 13, u"Display P3"},
        {12, 8, u"Linear Display P3"},
        {12, 16, u"Display P3 PQ"},
        {12, 18, u"Display P3 HLG"},
        {9, 1, u"Rec. ITU-R BT.2020-1"},
        {9, 14, u"Rec. ITU-R BT.2020-1"},
        {9, 8, u"Linear Rec. ITU-R BT.2020"},
        {9, 16, u"Rec. ITU-R BT.2100 PQ"},
        {9, 18, u"Rec. ITU-R BT.2100 HLG"},
    };
    for (const Name& name : names) {
        if (name.primaries == primaries &&
            name.transferCharacteristics == transferCharacteristics) {
            return name.name.toString();
        }
    }
    return {};
}

} // namespace codec
