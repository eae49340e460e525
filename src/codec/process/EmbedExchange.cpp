#include "codec/process/EmbedExchange.h"

#include "codec/metadata/CarriedMetadata.h"
#include "codec/process/DecodeExchange.h"
#include "codec/process/SharedMemory.h"

#include <cstring>

namespace codec::process {

namespace {

/// Bytes of the file, its profile and the three blocks, which stand behind the lengths.
using Lengths = std::array<std::uint64_t, 5>;

/// What a file grows by beyond the bytes that are put in, a few times written out, is headers.
constexpr std::uint64_t growth = 4;
constexpr std::uint64_t roomForHeaders = std::uint64_t{1} << 20;

} // namespace

FileExchange
embedExchange(const QByteArray& file, const MetadataBlocks& metadata, const QByteArray& profile) {
    const std::array parts{&file, &profile, &metadata.exif, &metadata.iptc, &metadata.xmp};
    Lengths lengths{};
    std::uint64_t bytes = sizeof lengths;
    for (std::size_t part = 0; part < parts.size(); ++part) {
        lengths[part] = static_cast<std::uint64_t>(parts[part]->size());
        bytes += lengths[part];
    }
    const std::uint64_t room = lengths[0] + growth * (bytes - lengths[0]) + roomForHeaders;
    return {makeRequest(Kind::EmbedMetadata, {}, 0), bytes, room, [&](char* memory) {
                std::memcpy(memory, lengths.data(), sizeof lengths);
                putParts(memory + sizeof lengths, parts);
            }};
}

void answerEmbed(int given, int result, Reply& reply) {
    Lengths lengths{};
    const auto head = Mapping::of(given, sizeof lengths, Mapping::Access::Read);
    if (!head) return;
    std::memcpy(lengths.data(), head->data(), sizeof lengths);
    std::uint64_t bytes = sizeof lengths;
    for (const std::uint64_t length : lengths)
        bytes += length;
    const auto memory = Mapping::of(given, bytes, Mapping::Access::Read);
    if (!memory) return;
    GivenParts parts(static_cast<const char*>(memory->data()) + sizeof lengths);
    QByteArray file = parts.part(lengths[0]);
    const QByteArray profile = parts.part(lengths[1]);
    MetadataBlocks metadata;
    metadata.exif = parts.part(lengths[2]);
    metadata.iptc = parts.part(lengths[3]);
    metadata.xmp = parts.part(lengths[4]);
    if (embedMetadata(file, metadata, profile)) handBack(file, result, reply);
}

} // namespace codec::process
