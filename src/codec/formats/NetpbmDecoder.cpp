#include "codec/formats/Formats.h"
#include "codec/pixels/FrameWriter.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace codec::formats {

namespace {

struct Header {
    char kind = 0; // '1' to '7', as in "P6"
    QSize size;
    unsigned most = 1;
    int channels = 1;
};

/// The next number of a text header; comments run from # to the end of the line.
unsigned readNumber(ByteReader& reader) {
    std::uint8_t byte = reader.u8();
    while (!reader.failed() && !std::isdigit(byte)) {
        if (byte == '#') {
            while (!reader.failed() && byte != '\n')
                byte = reader.u8();
        }
        byte = reader.u8();
    }
    unsigned value = 0;
    while (!reader.failed() && std::isdigit(byte)) {
        value = std::min(value * 10 + byte - '0', 100'000'000U);
        byte = reader.left() > 0 ? reader.u8() : 0;
    }
    return value;
}

std::string readLine(ByteReader& reader) {
    std::string line;
    for (std::uint8_t byte = reader.u8(); !reader.failed() && byte != '\n'; byte = reader.u8()) {
        if (line.size() < 200) line.push_back(static_cast<char>(byte));
    }
    return line;
}

bool readArbitraryMap(ByteReader& reader, Header& header) {
    int width = 0;
    int height = 0;
    readLine(reader);
    for (std::string line = readLine(reader); line != "ENDHDR"; line = readLine(reader)) {
        if (reader.failed()) return false;
        const auto value = [&line](std::string_view key) -> std::optional<int> {
            if (!line.starts_with(key)) return {};
            return std::clamp(std::atoi(line.c_str() + key.size()), 0, 100'000'000);
        };
        if (const auto found = value("WIDTH ")) width = *found;
        if (const auto found = value("HEIGHT ")) height = *found;
        if (const auto found = value("DEPTH ")) header.channels = *found;
        if (const auto found = value("MAXVAL ")) header.most = static_cast<unsigned>(*found);
    }
    header.size = QSize(width, height);
    return header.channels >= 1 && header.channels <= 4;
}

std::optional<Header> readHeader(ByteReader& reader) {
    Header header;
    reader.skip(1);
    header.kind = static_cast<char>(reader.u8());
    if (header.kind == '7') {
        if (!readArbitraryMap(reader, header)) return std::nullopt;
    } else {
        const unsigned width = readNumber(reader);
        header.size = QSize(static_cast<int>(width), static_cast<int>(readNumber(reader)));
        if (header.kind != '1' && header.kind != '4') header.most = readNumber(reader);
        if (header.kind == '3' || header.kind == '6') header.channels = 3;
    }
    if (reader.failed() || header.size.isEmpty() || header.most < 1 || header.most > 65535) {
        return std::nullopt;
    }
    return header;
}

class NetpbmDecoder final : public Decoder {
public:
    explicit NetpbmDecoder(Source source) : _source(std::move(source)) {}

    Frame frame(const DecodeRequest& request) override {
        ByteReader reader(_source.bytes());
        const auto header = readHeader(reader);
        if (request.frame != 0 || !header) return {};
        PixelLayout layout;
        layout.model = header->channels < 3 ? ColourModel::Gray : ColourModel::Rgb;
        layout.sample = header->most > 255 ? SampleType::U16 : SampleType::U8;
        layout.alpha = header->channels % 2 == 0 ? AlphaType::Straight : AlphaType::None;
        FrameWriter writer(request, header->size, header->size, layout, {});
        if (!writer.isUsable()) return {};
        for (int y = 0; y < header->size.height(); ++y) {
            if (writer.isStopped() || !readRow(reader, *header, writer.row())) break;
            writer.rowDone();
        }
        return writer.finish();
    }

private:
    static bool readRow(ByteReader& reader, const Header& header, std::uint8_t* target) {
        const std::size_t count = static_cast<std::size_t>(header.size.width()) *
                                  static_cast<std::size_t>(header.channels);
        const bool isWide = header.most > 255;
        const auto store = [&](std::size_t index, unsigned value) {
            const unsigned top = isWide ? 65535 : 255;
            const unsigned scaled = std::min(value, header.most) * top / header.most;
            if (isWide)
                reinterpret_cast<std::uint16_t*>(target)[index] =
                    static_cast<std::uint16_t>(scaled);
            else
                target[index] = static_cast<std::uint8_t>(scaled);
        };
        if (header.kind == '4') {
            const auto row = reader.take((count + 7) / 8);
            if (reader.failed()) return false;
            for (std::size_t x = 0; x < count; ++x) {
                target[x] = (row[x / 8] >> (7 - x % 8) & 1U) != 0 ? 0 : 255;
            }
        } else if (header.kind == '1') {
            for (std::size_t x = 0; x < count; ++x) {
                std::uint8_t digit = reader.u8();
                while (!reader.failed() && digit != '0' && digit != '1')
                    digit = reader.u8();
                target[x] = digit == '1' ? 0 : 255;
            }
        } else if (header.kind == '2' || header.kind == '3') {
            for (std::size_t x = 0; x < count; ++x)
                store(x, readNumber(reader));
        } else {
            const auto row = reader.take(count * (isWide ? 2 : 1));
            if (reader.failed()) return false;
            for (std::size_t x = 0; x < count; ++x) {
                store(x, isWide ? row[x * 2] * 256U + row[x * 2 + 1] : row[x]);
            }
        }
        return !reader.failed();
    }

    Source _source;
};

} // namespace

const Codec netpbm = {
    [](std::span<const std::uint8_t> head, QStringView) -> QStringView {
        if (head.size() < 8 || head[0] != 'P' || !std::isspace(head[2])) return {};
        switch (head[1]) {
        case '1':
        case '4':
            return u"public.pbm";
        case '2':
        case '5':
            return u"public.pgm";
        case '3':
        case '6':
            return u"public.ppm";
        case '7':
            return u"public.pam";
        default:
            return {};
        }
    },
    [](const Source& source) -> std::unique_ptr<Decoder> {
        return std::make_unique<NetpbmDecoder>(source);
    }};

} // namespace codec::formats
