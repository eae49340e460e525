#include "codec/metadata/headers/Headers.h"

#include <array>
#include <cmath>
#include <cstdlib>

/// Formats whose header is a fixed record at the start of the file.
namespace codec::headers {

using namespace std::string_view_literals;

std::optional<ImageHeader> readBitmap(Bytes file) {
    ImageHeader header;
    const std::uint32_t headerSize = file.le32(14);
    if (headerSize == 12) {
        header.width = file.le16(18);
        header.height = file.le16(20);
    } else {
        const auto height = static_cast<std::int32_t>(file.le32(22));
        header.width = file.le32(18);
        header.height = static_cast<std::uint32_t>(std::llabs(height));
        header.dpiWidth = file.le32(38) / inchesPerMeter;
        header.dpiHeight = file.le32(42) / inchesPerMeter;
    }
    header.depth = 8;
    header.colorModel = QStringLiteral("RGB");
    return header;
}

/// An icon's frames are its pictures in the order of its directory.
std::optional<ImageHeader> readIcon(Bytes file, std::size_t frame) {
    if (frame >= file.le16(4)) return std::nullopt;
    const Bytes entry = file.part(6 + frame * 16, 16);
    const Bytes picture = file.part(entry.le32(12), entry.le32(8));
    if (picture.matches(0, "\x89PNG"sv)) return readPng(picture, 0);
    ImageHeader header;
    header.width = entry.u8(0) == 0 ? 256 : entry.u8(0);
    header.height = entry.u8(1) == 0 ? 256 : entry.u8(1);
    header.depth = 8;
    header.colorModel = QStringLiteral("RGB");
    return header;
}

std::optional<ImageHeader> readTarga(Bytes file) {
    ImageHeader header;
    header.width = file.le16(12);
    header.height = file.le16(14);
    header.depth = 8;
    const int kind = file.u8(2) & 3;
    header.colorModel = kind == 3 ? QStringLiteral("Gray") : QStringLiteral("RGB");
    return header;
}

namespace {

/// Walks the words of a netpbm header, past comments.
class NetpbmWords {
public:
    explicit NetpbmWords(Bytes file) : _file(file) {}

    std::string next() {
        skipBlanks();
        std::string word;
        while (_offset < _file.size() && !isBlank(_file.u8(_offset)) && word.size() < 32) {
            word += static_cast<char>(_file.u8(_offset++));
        }
        return word;
    }
    std::uint32_t number() {
        const std::string word = next();
        if (word.empty() || word.find_first_not_of("0123456789") != std::string::npos) return 0;
        return word.size() > 9 ? 0 : static_cast<std::uint32_t>(std::stoul(word));
    }

private:
    static bool isBlank(std::uint8_t byte) { return byte == ' ' || (byte >= 9 && byte <= 13); }
    void skipBlanks() {
        while (_offset < _file.size()) {
            if (_file.u8(_offset) == '#') {
                while (_offset < _file.size() && _file.u8(_offset) != '\n')
                    ++_offset;
            } else if (isBlank(_file.u8(_offset))) {
                ++_offset;
            } else {
                return;
            }
        }
    }

    Bytes _file;
    std::size_t _offset = 2;
};

int bitsFor(std::uint32_t largest) {
    return largest > 255 ? 16 : largest > 1 ? 8 : 1;
}

ImageHeader readArbitraryMap(NetpbmWords words) {
    ImageHeader header;
    std::uint32_t planes = 3;
    for (std::string word = words.next(); !word.empty() && word != "ENDHDR"; word = words.next()) {
        if (word == "WIDTH") header.width = words.number();
        if (word == "HEIGHT") header.height = words.number();
        if (word == "DEPTH") planes = words.number();
        if (word == "MAXVAL") header.depth = bitsFor(words.number());
    }
    header.colorModel = planes <= 2 ? QStringLiteral("Gray") : QStringLiteral("RGB");
    return header;
}

} // namespace

std::optional<ImageHeader> readNetpbm(Bytes file) {
    // Comments may be long, but not endless.
    NetpbmWords words(file.part(0, 65536));
    const int kind = file.u8(1) - '0';
    if (kind == 7) return readArbitraryMap(words);
    ImageHeader header;
    header.width = words.number();
    header.height = words.number();
    header.depth = kind == 1 || kind == 4 ? 1 : bitsFor(words.number());
    header.colorModel = kind == 3 || kind == 6 ? QStringLiteral("RGB") : QStringLiteral("Gray");
    return header;
}

} // namespace codec::headers
