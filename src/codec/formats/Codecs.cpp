#include "codec/formats/Codecs.h"

#include "codec/formats/Formats.h"

#include <algorithm>
#include <cstring>
#include <exception>

namespace codec {

namespace formats {

bool hasSignature(
    std::span<const std::uint8_t> head, std::string_view signature, std::size_t offset) {
    return head.size() >= offset + signature.size() &&
           std::memcmp(head.data() + offset, signature.data(), signature.size()) == 0;
}

} // namespace formats

CodecTable allCodecs() {
    using namespace formats;
    static const Codec table[] = {
        raw,    rawBySignature, jpeg, png, heif, webp,   gif, tiff,
        jpegXl, jpeg2000,       psd,  bmp, ico,  netpbm, tga,
    };
    return table;
}

QString sniffType(std::span<const std::uint8_t> head, QStringView typeHint, CodecTable codecs) {
    head = head.first(std::min(head.size(), sniffLength));
    for (const Codec& codec : codecs) {
        const QStringView type = codec.sniff(head, typeHint);
        if (!type.isEmpty()) return type.toString();
    }
    return {};
}

std::unique_ptr<Decoder>
openDecoder(const Source& source, QStringView typeHint, CodecTable codecs) {
    const auto head = source.bytes().first(std::min(source.size(), sniffLength));
    for (const Codec& codec : codecs) {
        if (codec.sniff(head, typeHint).isEmpty()) continue;
        if (auto decoder = codec.open(source)) return decoder;
    }
    return nullptr;
}

Frame decode(
    const Source& source, QStringView typeHint, const DecodeRequest& request,
    CodecTable codecs) noexcept {
    try {
        const auto decoder = openDecoder(source, typeHint, codecs);
        if (!decoder || request.stop.isSet()) return {};
        Frame frame = decoder->wanted(request);
        // What a stopped decode left behind is no picture.
        return request.stop.isSet() ? Frame() : frame;
    } catch (const std::exception&) {
        return {}; // Memory ran out, or a library gave up on a damaged file.
    }
}

std::size_t countFrames(const Source& source, QStringView typeHint, CodecTable codecs) noexcept {
    try {
        const auto decoder = openDecoder(source, typeHint, codecs);
        return decoder ? decoder->frameCount() : 0;
    } catch (const std::exception&) {
        return 0;
    }
}

} // namespace codec
