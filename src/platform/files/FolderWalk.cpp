#include "platform/files/FolderWalk.h"

#include "platform/files/DirectoryHandle.h"
#include "platform/files/PathNames.h"
#include "platform/files/Presence.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

struct Look {
    bool isFolder = false;
    std::uint64_t inode = 0;
    std::uint64_t mountId = 0;
};

/// At the entry itself, without waking what mounts itself when it is used; a failure is in `errno`.
std::pair<bool, Look> lookAt(int directory, const char* path) {
    struct statx status {};
    const int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;
    const unsigned wanted = STATX_TYPE | STATX_INO | STATX_MNT_ID;
    if (::statx(directory, path, flags, wanted, &status) != 0) return {false, {}};
    return {true, {S_ISDIR(status.stx_mode), status.stx_ino, status.stx_mnt_id}};
}

/// Never through a link that took the folder's place.
DirectoryHandle openItself(const QByteArray& path) {
    const int descriptor =
        ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return {};
    DirectoryHandle directory(::fdopendir(descriptor));
    if (!directory) ::close(descriptor);
    return directory;
}

} // namespace

FolderWalk::FolderWalk(Visitor visitor, Pause pause, std::stop_token stop)
    : _visitor(std::move(visitor)), _pause(std::move(pause)), _stop(std::move(stop)) {}

FolderWalk::End FolderWalk::run(const QByteArray& top, const QByteArray& nearest) {
    _isReadable = true;
    _isStopped = false;
    if (!beginsAt(top)) return End::Unreadable;
    QByteArray place = nearest;
    const auto isBelowTop = [&] {
        return place.size() > top.size() && place.startsWith(top) &&
               (top == "/" || place[top.size()] == '/');
    };
    const auto goUp = [&] { place.truncate(std::max<qsizetype>(place.lastIndexOf('/'), 1)); };
    while (isBelowTop() && !isOnMount(place))
        goUp();
    QByteArray done;
    while (isBelowTop() && !_isStopped) {
        walk(place, done);
        done = place;
        goUp();
    }
    if (!_isStopped) walk(top, done);
    if (_isStopped) return End::Stopped;
    return _isReadable ? End::Complete : End::Unreadable;
}

bool FolderWalk::beginsAt(const QByteArray& top) {
    const auto [succeeded, look] = lookAt(AT_FDCWD, top.constData());
    if (!succeeded || !look.isFolder) return false;
    _mountId = look.mountId;
    _visitor(look.inode, top);
    return true;
}

bool FolderWalk::isOnMount(const QByteArray& path) const {
    const auto [succeeded, look] = lookAt(AT_FDCWD, path.constData());
    return succeeded && look.isFolder && look.mountId == _mountId;
}

void FolderWalk::walk(const QByteArray& folder, const QByteArray& done) {
    _left.assign(1, folder);
    while (!_left.empty() && !_isStopped) {
        const QByteArray next = std::move(_left.back());
        _left.pop_back();
        if (_stop.stop_requested() || !_pause()) {
            _isStopped = true;
            return;
        }
        list(next, done);
    }
}

void FolderWalk::list(const QByteArray& folder, const QByteArray& done) {
    const auto noteFailure = [&] {
        // What went meanwhile is not what was sought, which has been away all the time.
        if (presenceAfter(errno) == Presence::Unknown) _isReadable = false;
    };
    errno = 0;
    const DirectoryHandle directory = openItself(folder);
    if (!directory) return noteFailure();
    while (!_stop.stop_requested()) {
        errno = 0;
        const dirent* entry = ::readdir(directory.get());
        if (!entry) {
            if (errno != 0) _isReadable = false;
            return;
        }
        const char* name = static_cast<const char*>(entry->d_name);
        if (qstrcmp(name, ".") == 0 || qstrcmp(name, "..") == 0) continue;
        if (entry->d_type != DT_DIR && entry->d_type != DT_UNKNOWN) continue;
        const auto [succeeded, look] = lookAt(::dirfd(directory.get()), name);
        if (!succeeded) {
            noteFailure();
            continue;
        }
        if (!look.isFolder || look.mountId != _mountId) continue;
        const QByteArray path = pathInFolder(folder, name);
        _visitor(look.inode, path);
        if (path != done) _left.push_back(path);
    }
    _isStopped = true;
}

} // namespace platform
