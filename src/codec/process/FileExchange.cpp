#include "codec/process/FileExchange.h"

#include "codec/process/SharedMemory.h"

#include <cstring>
#include <utility>

namespace codec::process {

FileExchange::FileExchange(
    const Request& request, std::uint64_t givenBytes, std::uint64_t room,
    const std::function<void(char* memory)>& fill)
    : _request(request), _given(makeSharedMemory(givenBytes)), _result(makeSharedMemory(room)),
      _room(room) {
    const auto memory = Mapping::of(_given.get(), givenBytes, Mapping::Access::ReadWrite);
    if (!memory || !_result.isOpen()) return;
    fill(static_cast<char*>(memory->data()));
    _request.hasLargeResult = 1;
    _descriptors = {_given.get(), _result.get()};
    _isUsable = true;
}

QByteArray FileExchange::accept(const Reply& reply) const {
    if (reply.count > _room) return {};
    const auto memory = Mapping::of(_result.get(), reply.count, Mapping::Access::Read);
    if (!memory) return {};
    return {static_cast<const char*>(memory->data()), static_cast<qsizetype>(memory->size())};
}

void putParts(char* memory, std::span<const QByteArray* const> parts) {
    for (const QByteArray* part : parts) {
        std::memcpy(memory, part->constData(), static_cast<std::size_t>(part->size()));
        memory += part->size();
    }
}

const char* GivenParts::bytes(std::uint64_t length) {
    return std::exchange(_next, _next + length);
}

QByteArray GivenParts::part(std::uint64_t length) {
    return QByteArray::fromRawData(bytes(length), static_cast<qsizetype>(length));
}

void handBack(const QByteArray& file, int result, Reply& reply) {
    const auto room =
        Mapping::of(result, static_cast<std::size_t>(file.size()), Mapping::Access::ReadWrite);
    if (!room) return;
    std::memcpy(room->data(), file.constData(), room->size());
    reply.count = room->size();
    reply.status = Status::Done;
}

} // namespace codec::process
