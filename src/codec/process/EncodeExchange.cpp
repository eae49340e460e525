#include "codec/process/EncodeExchange.h"

#include "codec/process/DecodeExchange.h"
#include "codec/process/SharedMemory.h"

#include <cstring>

namespace codec::process {

namespace {

/// Stands first; then come the lines of pixels without gaps, the profile and the two blocks of
/// metadata that go into files of these types.
struct alignas(16) Head {
    double quality = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t format = 0; ///< of the toolkit
    std::int32_t threads = 1;
    std::array<std::uint64_t, 3> lengths{}; ///< of profile and blocks
};

std::uint64_t lineBytesOf(const QImage& image) {
    return static_cast<std::uint64_t>(image.width()) *
           static_cast<std::uint64_t>(image.depth() / 8);
}

} // namespace

FileExchange encodeExchange(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata,
    const EncodeSettings& settings) {
    const std::array parts{&profile, &metadata.exif, &metadata.xmp};
    Head head{
        .quality = settings.quality,
        .width = image.width(),
        .height = image.height(),
        .format = image.format(),
        .threads = settings.threads};
    const std::uint64_t lineBytes = lineBytesOf(image);
    const std::uint64_t pixelBytes = lineBytes * static_cast<std::uint64_t>(image.height());
    std::uint64_t bytes = sizeof head + pixelBytes;
    for (std::size_t part = 0; part < parts.size(); ++part) {
        head.lengths[part] = static_cast<std::uint64_t>(parts[part]->size());
        bytes += head.lengths[part];
    }
    // Noise may become larger than it was.
    constexpr std::uint64_t roomForHeaders = std::uint64_t{1} << 20;
    return {
        makeRequest(Kind::Encode, settings.type, 0), bytes, 2 * bytes + roomForHeaders,
        [&](char* memory) {
            std::memcpy(memory, &head, sizeof head);
            char* place = memory + sizeof head;
            for (int y = 0; y < image.height(); ++y, place += lineBytes)
                std::memcpy(place, image.constScanLine(y), lineBytes);
            putParts(place, parts);
        }};
}

void answerEncode(const QString& type, int given, int result, Reply& reply) {
    Head head;
    {
        const auto first = Mapping::of(given, sizeof head, Mapping::Access::Read);
        if (!first) return;
        std::memcpy(&head, first->data(), sizeof head);
    }
    const auto format = static_cast<QImage::Format>(head.format);
    const qsizetype lineBytes =
        qsizetype{head.width} * QImage::toPixelFormat(format).bitsPerPixel() / 8;
    const auto pixelBytes = static_cast<std::uint64_t>(lineBytes * head.height);
    std::uint64_t bytes = sizeof head + pixelBytes;
    for (const std::uint64_t length : head.lengths)
        bytes += length;
    const auto memory = Mapping::of(given, bytes, Mapping::Access::Read);
    if (!memory) return;
    GivenParts parts(static_cast<const char*>(memory->data()) + sizeof head);
    const QImage image(
        reinterpret_cast<const uchar*>(parts.bytes(pixelBytes)), head.width, head.height, lineBytes,
        format);
    const QByteArray profile = parts.part(head.lengths[0]);
    MetadataBlocks metadata;
    metadata.exif = parts.part(head.lengths[1]);
    metadata.xmp = parts.part(head.lengths[2]);
    handBack(
        encodeToTheEnd(
            image, profile, metadata,
            {.type = type, .quality = head.quality, .threads = head.threads}),
        result, reply);
}

} // namespace codec::process
