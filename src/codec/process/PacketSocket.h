#pragma once

#include "codec/process/Descriptor.h"

#include <cstddef>
#include <span>
#include <vector>

namespace codec::process {

/// Sends one packet with descriptors; false when the other side is gone.
[[nodiscard]] bool
sendPacket(int socket, std::span<const std::byte> packet, std::span<const int> descriptors = {});

/// Waits for one packet of exactly this size and the descriptors that come with it (as many as
/// `mostPictures`); false at the end of the connection or when a packet is of another size.
[[nodiscard]] bool
receivePacket(int socket, std::span<std::byte> packet, std::vector<Descriptor>& descriptors);

} // namespace codec::process
