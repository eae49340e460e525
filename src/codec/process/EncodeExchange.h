#pragma once

#include "codec/encoding/PictureEncoder.h"
#include "codec/process/Descriptor.h"
#include "codec/process/Protocol.h"

#include <QByteArray>

#include <array>
#include <cstdint>
#include <span>

namespace codec::process {

/// Pixels that a decoder process is to encode, with all that goes into the file, in memory that it
/// gets, and memory for the file that comes back. Everything is copied.
class EncodeExchange {
public:
    EncodeExchange(
        const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata,
        const EncodeSettings& settings);

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
void answerEncode(const QString& type, int given, int result, Reply& reply);

} // namespace codec::process
