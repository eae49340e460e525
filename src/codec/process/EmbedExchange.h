#pragma once

#include "codec/metadata/MetadataBlocks.h"
#include "codec/process/Descriptor.h"
#include "codec/process/Protocol.h"

#include <QByteArray>

#include <array>
#include <cstdint>
#include <span>

namespace codec::process {

/// An encoded file with the metadata and the profile that are to go into it, in memory that a
/// decoder process gets, and memory for the file that comes back. Everything is copied.
class EmbedExchange {
public:
    EmbedExchange(
        const QByteArray& file, const MetadataBlocks& metadata, const QByteArray& profile);

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
    std::uint64_t _room = 0; ///< bytes of the result at most
    std::array<int, 2> _descriptors{-1, -1};
    bool _isUsable = false;
};

/// The other side of it, in the decoder process: the reply stays as it is where it can't be done.
void answerEmbed(int given, int result, Reply& reply);

} // namespace codec::process
