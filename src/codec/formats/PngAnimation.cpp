#include "codec/formats/PngAnimation.h"

#include "codec/pixels/Decoder.h"

#include <cmath>
#include <string_view>
#include <utility>

namespace codec::formats {

using namespace std::string_view_literals;

namespace {

constexpr std::size_t signatureLength = 8;
constexpr std::size_t sizesLength = 8;  // of width and height, where the header begins
constexpr std::size_t aroundChunk = 12; // length, name and checksum
constexpr int mostChunks = 1'000'000;
constexpr std::uint32_t longestSide = 1U << 30;

void append(std::vector<std::uint8_t>& file, Bytes bytes) {
    file.insert(file.end(), bytes.span().begin(), bytes.span().end());
}

void appendNumber(std::vector<std::uint8_t>& file, std::size_t number) {
    for (int shift = 24; shift >= 0; shift -= 8)
        file.push_back(static_cast<std::uint8_t>(number >> shift & 0xFF));
}

void appendName(std::vector<std::uint8_t>& file, std::string_view name) {
    for (const char letter : name)
        file.push_back(static_cast<std::uint8_t>(letter));
}

int side(std::uint32_t length) {
    return length <= longestSide ? static_cast<int>(length) : 0;
}

/// The fraction of a second that both numbers say, in milliseconds.
int millisecondsOf(int numerator, int denominator) {
    return static_cast<int>(
        std::lround(1000.0 * numerator / (denominator == 0 ? 100 : denominator)));
}

} // namespace

PngAnimation::PngAnimation(Bytes file) {
    bool plays = false;
    bool hasPicture = false;
    std::size_t offset = signatureLength;
    for (int count = 0; count < mostChunks && file.has(offset, aroundChunk); ++count) {
        const std::size_t length = file.be32(offset);
        const Bytes chunk = file.part(offset + 8, length);
        const auto is = [&](std::string_view name) { return file.matches(offset + 4, name); };
        if (is("IHDR"sv)) {
            // Areas that were found to lie within the picture must stay there.
            if (!_header.isEmpty()) break;
            _header = chunk;
            _size = QSize(side(chunk.be32(0)), side(chunk.be32(4)));
        } else if (is("acTL"sv)) {
            plays = true;
        } else if (is("fcTL"sv)) {
            if (_frames.size() >= mostFrames || !addControl(chunk)) break;
        } else if (is("IDAT"sv)) {
            if (!plays || _size.isEmpty()) return;
            if (!std::exchange(hasPicture, true)) _beginsWithPicture = !_open.area.isEmpty();
            if (_beginsWithPicture && _frames.empty()) _open.data.push_back(chunk);
        } else if (is("fdAT"sv) && hasPicture) {
            constexpr std::size_t numberLength = 4;
            if (!_open.area.isEmpty()) _open.data.push_back(chunk.from(numberLength));
        } else if (is("IEND"sv)) {
            break;
        } else if (!hasPicture) {
            _shared.push_back(file.part(offset, aroundChunk + length));
        }
        offset += aroundChunk + length;
    }
    endFrame();
    // The picture is a frame only as a whole.
    if (_beginsWithPicture && !_frames.empty() && _frames.front().area.size() != _size)
        _frames.clear();
}

bool PngAnimation::addControl(Bytes chunk) {
    endFrame();
    const QRect area(
        QPoint(side(chunk.be32(12)), side(chunk.be32(16))),
        QSize(side(chunk.be32(4)), side(chunk.be32(8))));
    if (area.isEmpty() || !QRect(QPoint(0, 0), _size).contains(area)) return false;
    constexpr int clears = 1;
    constexpr int goesBack = 2;
    const int disposal = chunk.u8(24);
    _open = {
        .area = area,
        .delay = millisecondsOf(chunk.be16(20), chunk.be16(22)),
        .disposal = disposal == clears     ? Disposal::Clear
                    : disposal == goesBack ? Disposal::Previous
                                           : Disposal::Keep,
        .isBlended = chunk.u8(25) != 0,
        .data = {}};
    return true;
}

void PngAnimation::endFrame() {
    Frame ended = std::exchange(_open, {});
    if (!ended.data.empty()) _frames.push_back(std::move(ended));
}

std::vector<std::uint8_t> PngAnimation::file(const Frame& frame) const {
    std::vector<std::uint8_t> file;
    appendName(file, "\x89PNG\r\n\x1A\n"sv);
    const auto begin = [&file](std::string_view name, std::size_t length) {
        appendNumber(file, length);
        appendName(file, name);
    };
    const auto end = [&file] { appendNumber(file, 0); };
    begin("IHDR"sv, _header.size());
    appendNumber(file, static_cast<std::size_t>(frame.area.width()));
    appendNumber(file, static_cast<std::size_t>(frame.area.height()));
    append(file, _header.from(sizesLength));
    end();
    for (const Bytes& chunk : _shared)
        append(file, chunk);
    for (const Bytes& piece : frame.data) {
        begin("IDAT"sv, piece.size());
        append(file, piece);
        end();
    }
    begin("IEND"sv, 0);
    end();
    return file;
}

} // namespace codec::formats
