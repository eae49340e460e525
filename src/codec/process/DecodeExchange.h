#pragma once

#include "codec/pixels/Decoder.h"
#include "codec/process/Descriptor.h"
#include "codec/process/Protocol.h"

#include <QStringView>

#include <span>
#include <vector>

namespace codec::process {

/// A request of this kind about a picture that is called by this type.
[[nodiscard]] Request makeRequest(Kind kind, QStringView typeHint, std::size_t frame);

/// One request to decode as a decoder process gets it, with the memory that it brings along, and
/// the picture that comes back. The request must outlive it.
class DecodeExchange {
public:
    /// The picture's descriptor is borrowed; -1 where the process has the picture already.
    DecodeExchange(Kind kind, QStringView typeHint, const DecodeRequest& wanted, int picture);

    /// False when memory for it was refused.
    [[nodiscard]] bool isUsable() const { return _isUsable; }
    [[nodiscard]] const Request& request() const { return _request; }
    [[nodiscard]] std::span<const int> descriptors() const { return _descriptors; }

    /// The frame of a reply that says that it is done, its pixels not copied where they lie in
    /// memory of their own; a null image when what it says can't be true.
    [[nodiscard]] Frame accept(const Reply& reply, std::span<const char> smallResult);

private:
    void addLargeResult();
    void addProfile();

    const DecodeRequest& _wanted;
    Request _request;
    Descriptor _pixels;
    Descriptor _profile;
    std::vector<int> _descriptors;
    bool _isUsable = true;
};

} // namespace codec::process
