#pragma once

#include "codec/process/Descriptor.h"
#include "codec/process/Protocol.h"

#include <QByteArray>

#include <array>
#include <cstdint>
#include <functional>
#include <span>

namespace codec::process {

/// A file that a decoder process is to make of what it gets in memory, and memory for the file that
/// comes back.
class FileExchange {
public:
    /// `fill` writes what is given, of so many bytes, and isn't kept. `room` is how many the file
    /// has at most; what is not written of it costs nothing.
    FileExchange(
        const Request& request, std::uint64_t givenBytes, std::uint64_t room,
        const std::function<void(char* memory)>& fill);

    /// False when memory for it was refused.
    [[nodiscard]] bool isUsable() const { return _isUsable; }
    [[nodiscard]] const Request& request() const { return _request; }
    [[nodiscard]] std::span<const int> descriptors() const { return _descriptors; }

    /// The file of a reply that says that it is done; empty when what it says can't be true.
    [[nodiscard]] QByteArray accept(const Reply& reply) const;

private:
    Request _request;
    Descriptor _given;
    Descriptor _result;
    std::uint64_t _room;
    std::array<int, 2> _descriptors{-1, -1};
    bool _isUsable = false;
};

/// One after the other, without gaps.
void putParts(char* memory, std::span<const QByteArray* const> parts);

/// Takes parts out of memory one after the other, without a copy.
class GivenParts {
public:
    explicit GivenParts(const char* memory) : _next(memory) {}
    [[nodiscard]] const char* bytes(std::uint64_t length);
    [[nodiscard]] QByteArray part(std::uint64_t length);

private:
    const char* _next;
};

/// The end of the other side of it, in the decoder process: a file that is not empty goes into the
/// memory for it and is told; the reply stays as it is where there is none.
void handBack(const QByteArray& file, int result, Reply& reply);

} // namespace codec::process
