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

EmbedExchange::EmbedExchange(
    const QByteArray& file, const MetadataBlocks& metadata, const QByteArray& profile)
    : _request(makeRequest(Kind::EmbedMetadata, {}, 0)) {
    const std::array parts{&file, &profile, &metadata.exif, &metadata.iptc, &metadata.xmp};
    Lengths lengths{};
    std::uint64_t bytes = sizeof lengths;
    for (std::size_t part = 0; part < parts.size(); ++part) {
        lengths[part] = static_cast<std::uint64_t>(parts[part]->size());
        bytes += lengths[part];
    }
    _room = lengths[0] + growth * (bytes - lengths[0]) + roomForHeaders;
    _given = makeSharedMemory(bytes);
    _result = makeSharedMemory(_room);
    const auto memory = Mapping::of(_given.get(), bytes, Mapping::Access::ReadWrite);
    if (!memory || !_result.isOpen()) return;
    auto* place = static_cast<char*>(memory->data());
    std::memcpy(place, lengths.data(), sizeof lengths);
    place += sizeof lengths;
    for (const QByteArray* part : parts) {
        std::memcpy(place, part->constData(), static_cast<std::size_t>(part->size()));
        place += part->size();
    }
    _request.hasLargeResult = 1;
    _descriptors = {_given.get(), _result.get()};
    _isUsable = true;
}

QByteArray EmbedExchange::accept(const Reply& reply) const {
    if (reply.count > _room) return {};
    const auto memory = Mapping::of(_result.get(), reply.count, Mapping::Access::Read);
    if (!memory) return {};
    return {static_cast<const char*>(memory->data()), static_cast<qsizetype>(memory->size())};
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
    const auto* place = static_cast<const char*>(memory->data()) + sizeof lengths;
    const auto next = [&place](std::uint64_t length) {
        const auto part = QByteArray::fromRawData(place, static_cast<qsizetype>(length));
        place += length;
        return part;
    };
    QByteArray file = next(lengths[0]);
    const QByteArray profile = next(lengths[1]);
    MetadataBlocks metadata;
    metadata.exif = next(lengths[2]);
    metadata.iptc = next(lengths[3]);
    metadata.xmp = next(lengths[4]);
    if (!embedMetadata(file, metadata, profile)) return;
    const auto room =
        Mapping::of(result, static_cast<std::size_t>(file.size()), Mapping::Access::ReadWrite);
    if (!room) return;
    std::memcpy(room->data(), file.constData(), room->size());
    reply.count = room->size();
    reply.status = Status::Done;
}

} // namespace codec::process
