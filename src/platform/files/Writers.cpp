#include "platform/files/Writers.h"

#include <algorithm>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace platform {

namespace {

/// On these a lease is refused for the server's reasons, too. From linux/magic.h and the kernel's
/// file systems.
constexpr decltype(statfs::f_type) serverFileSystems[] = {
    0x6969,     // NFS
    0x517B,     // SMB
    0xFE534D42, // SMB 2
    0xFF534D42, // CIFS
};

/// A lease for reading can be had only while nobody has the file open for writing (fcntl(2),
/// F_SETLEASE). It is given back at once; who opens the file in between waits that long.
Writers writersOfDescriptor(int file) {
    struct stat status {};
    struct statfs system {};
    if (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) return Writers::Unknown;
    if (::fstatfs(file, &system) != 0 ||
        std::ranges::find(serverFileSystems, system.f_type) != std::end(serverFileSystems)) {
        return Writers::Unknown;
    }
    // Who opens the file in between makes the kernel send a signal: one that is ignored unless
    // somebody asks for it.
    if (::fcntl(file, F_SETSIG, SIGURG) != 0) return Writers::Unknown;
    if (::fcntl(file, F_SETLEASE, F_RDLCK) == 0) {
        ::fcntl(file, F_SETLEASE, F_UNLCK);
        return Writers::None;
    }
    return errno == EAGAIN ? Writers::Some : Writers::Unknown;
}

} // namespace

Writers writersOfFile(const QByteArray& path) {
    const int file = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (file < 0) return Writers::Unknown;
    const Writers writers = writersOfDescriptor(file);
    ::close(file);
    return writers;
}

} // namespace platform
