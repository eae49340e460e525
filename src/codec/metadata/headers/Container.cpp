#include "codec/metadata/headers/Container.h"

#include <array>

namespace codec {

using namespace std::string_view_literals;

namespace {

struct Signature {
    std::string_view bytes;
    Container container;
};

/// The more special signature stands before the more general one.
constexpr Signature signatures[] = {
    {"\xFF\xD8\xFF"sv, Container::Jpeg},
    {"\x89PNG\r\n\x1A\n"sv, Container::Png},
    {"GIF87a"sv, Container::Gif},
    {"GIF89a"sv, Container::Gif},
    {"II*\0\x10\0\0\0CR"sv, Container::Cr2},
    {"II*\0"sv, Container::Tiff},
    {"MM\0*"sv, Container::Tiff},
    {"II+\0\x08\0\0\0"sv, Container::BigTiff},
    {"MM\0+\0\x08\0\0"sv, Container::BigTiff},
    {"IIRO"sv, Container::Orf},
    {"IIRS"sv, Container::Orf},
    {"MMOR"sv, Container::Orf},
    {"IIU\0"sv, Container::Rw2},
    {"II\x1A\0\0\0HEAPCCDR"sv, Container::Crw},
    {"\0MRM"sv, Container::Mrw},
    {"FUJIFILMCCD-RAW"sv, Container::Raf},
    {"FOVb"sv, Container::X3f},
    {"8BPS"sv, Container::Photoshop},
    {"\0\0\0\x0CJXL \r\n\x87\n"sv, Container::JpegXl},
    {"\xFF\x0A"sv, Container::JpegXlCodestream},
    {"\0\0\0\x0CjP  \r\n\x87\n"sv, Container::Jpeg2000},
    {"\xFF\x4F\xFF\x51"sv, Container::Jpeg2000Codestream},
};

bool isHeifBrand(Bytes file, std::size_t offset) {
    constexpr std::array brands = {"heic"sv, "heix"sv, "heim"sv, "heis"sv, "hevc"sv,
                                   "hevx"sv, "mif1"sv, "mif2"sv, "msf1"sv, "avif"sv,
                                   "avis"sv, "miaf"sv, "1pic"sv};
    return std::ranges::any_of(
        brands, [&](std::string_view brand) { return file.matches(offset, brand); });
}

Container sniffBoxes(Bytes file) {
    if (!file.matches(4, "ftyp"sv)) return Container::Unknown;
    if (file.matches(8, "crx "sv)) return Container::Cr3;
    const std::size_t end = std::min<std::size_t>({file.be32(0), file.size(), 256});
    for (std::size_t offset = 8; offset + 4 <= end; offset += offset == 8 ? 8 : 4) {
        if (isHeifBrand(file, offset)) return Container::Heif;
    }
    return Container::Unknown;
}

/// "P1" to "P7" with white space behind; anything else that begins so is a text.
bool isNetpbm(Bytes file) {
    const std::uint8_t digit = file.u8(1);
    const std::uint8_t next = file.u8(2);
    return file.u8(0) == 'P' && digit >= '1' && digit <= '7' &&
           (next == ' ' || next == '\t' || next == '\n' || next == '\r' || next == '#');
}

bool isBitmap(Bytes file) {
    if (!file.matches(0, "BM"sv)) return false;
    const std::uint32_t headerSize = file.le32(14);
    return headerSize == 12 || (headerSize >= 16 && headerSize <= 256);
}

/// Icons and cursors; the second begins as many Targa files do, which have no pictures counted
/// here.
bool isIcon(Bytes file) {
    const bool signature = file.matches(0, "\0\0\x01\0"sv) || file.matches(0, "\0\0\x02\0"sv);
    const std::size_t count = file.le16(4);
    const std::size_t picture = file.le32(18);
    return signature && count > 0 && picture >= 6 + count * 16 && picture < file.size();
}

/// This format has no signature: the fields of its header must make sense together.
bool isTarga(Bytes file) {
    if (file.size() < 18) return false;
    const int mapType = file.u8(1);
    const int kind = file.u8(2);
    const int depth = file.u8(16);
    const bool kindOk =
        kind == 1 || kind == 2 || kind == 3 || kind == 9 || kind == 10 || kind == 11;
    const bool depthOk = depth == 8 || depth == 15 || depth == 16 || depth == 24 || depth == 32;
    const bool mapOk = mapType == ((kind & 3) == 1 && kind != 3 && kind != 11 ? 1 : mapType);
    return mapType <= 1 && kindOk && depthOk && mapOk && file.le16(12) != 0 && file.le16(14) != 0;
}

} // namespace

Container sniffContainer(Bytes file) {
    for (const Signature& signature : signatures) {
        if (file.matches(0, signature.bytes)) return signature.container;
    }
    if (file.matches(0, "RIFF"sv) && file.matches(8, "WEBP"sv)) return Container::WebP;
    const Container boxes = sniffBoxes(file);
    if (boxes != Container::Unknown) return boxes;
    if (isNetpbm(file)) return Container::Netpbm;
    if (isIcon(file)) return Container::Icon;
    if (isBitmap(file)) return Container::Bmp;
    return isTarga(file) ? Container::Targa : Container::Unknown;
}

} // namespace codec
