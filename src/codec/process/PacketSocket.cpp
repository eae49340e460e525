#include "codec/process/PacketSocket.h"

#include "codec/process/Protocol.h"

#include <array>
#include <cerrno>
#include <cstring>

#include <sys/socket.h>

namespace codec::process {

namespace {

constexpr std::size_t mostDescriptors = mostPictures;

/// Room for the descriptors of one packet, aligned as the kernel wants it.
struct ControlRoom {
    alignas(cmsghdr) std::array<char, CMSG_SPACE(mostDescriptors * sizeof(int))> bytes{};
};

} // namespace

bool sendPacket(int socket, std::span<const std::byte> packet, std::span<const int> descriptors) {
    iovec part{const_cast<std::byte*>(packet.data()), packet.size()};
    ControlRoom room;
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (!descriptors.empty()) {
        message.msg_control = room.bytes.data();
        message.msg_controllen = CMSG_SPACE(descriptors.size_bytes());
        cmsghdr* control = CMSG_FIRSTHDR(&message);
        control->cmsg_level = SOL_SOCKET;
        control->cmsg_type = SCM_RIGHTS;
        control->cmsg_len = CMSG_LEN(descriptors.size_bytes());
        std::memcpy(CMSG_DATA(control), descriptors.data(), descriptors.size_bytes());
    }
    ssize_t sent = -1;
    do {
        sent = ::sendmsg(socket, &message, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(packet.size());
}

bool receivePacket(int socket, std::span<std::byte> packet, std::vector<Descriptor>& descriptors) {
    iovec part{packet.data(), packet.size()};
    ControlRoom room;
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = room.bytes.data();
    message.msg_controllen = room.bytes.size();
    ssize_t received = -1;
    do {
        received = ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    } while (received < 0 && errno == EINTR);
    if (received <= 0) return false;
    for (cmsghdr* control = CMSG_FIRSTHDR(&message); control;
         control = CMSG_NXTHDR(&message, control)) {
        if (control->cmsg_level != SOL_SOCKET || control->cmsg_type != SCM_RIGHTS) continue;
        const std::size_t count = (control->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t index = 0; index < count; ++index) {
            int descriptor = -1;
            std::memcpy(&descriptor, CMSG_DATA(control) + index * sizeof(int), sizeof(int));
            descriptors.emplace_back(descriptor);
        }
    }
    return received == static_cast<ssize_t>(packet.size()) &&
           (message.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) == 0;
}

} // namespace codec::process
