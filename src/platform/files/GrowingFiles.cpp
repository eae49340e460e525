#include "platform/files/GrowingFiles.h"

#include "platform/files/PathNames.h"

#include <cerrno>

#include <sys/stat.h>

namespace platform {

namespace {

/// What is known of the path goes to the other one, in the place of what was known of that; with an
/// empty one it goes away.
template <typename Map>
bool moveEntry(Map& map, const QByteArray& from, const QByteArray& to) {
    map.erase(to);
    auto entry = map.extract(from);
    if (entry.empty()) return false;
    if (to.isEmpty()) return true;
    entry.key() = to;
    map.insert(std::move(entry));
    return true;
}

template <typename Map>
void moveEntriesBelow(Map& map, const QByteArray& from, const QByteArray& to) {
    const QByteArray prefix = pathInFolder(from, {});
    std::vector<QByteArray> below;
    for (const auto& [path, value] : map) {
        if (path.startsWith(prefix)) below.push_back(path);
    }
    for (const QByteArray& path : below)
        moveEntry(map, path, to.isEmpty() ? to : pathInFolder(to, path.mid(prefix.size())));
}

} // namespace

GrowingFiles::Sight GrowingFiles::lookAtDisk(const QByteArray& path) {
    struct stat status {};
    if (::stat(path.constData(), &status) != 0) return {presenceAfter(errno), {}};
    if (!S_ISREG(status.st_mode)) return {Presence::Gone, {}};
    constexpr std::int64_t second = 1'000'000'000;
    return {
        Presence::There, {status.st_size, status.st_mtim.tv_sec * second + status.st_mtim.tv_nsec}};
}

void GrowingFiles::add(const QByteArray& path, std::uint32_t flags, Clock::time_point now) {
    const State state = _questions.look(path).state;
    const Lock lock(_mutex);
    _toldEarly.erase(path);
    File& file = _files[path];
    if (file.flags == 0) {
        file.state = state;
        file.since = now;
        file.isNew = true;
    }
    file.flags |= flags;
}

void GrowingFiles::wasClosed(const QByteArray& path, std::uint32_t flags, Clock::time_point now) {
    const Lock lock(_mutex);
    if (const auto found = _files.find(path); found != _files.end()) {
        found->second.isClosed = found->second.isNew;
        return;
    }
    const auto told = _toldEarly.extract(path);
    const Sight sight = _questions.look(path);
    const bool isThere = sight.presence == Presence::There;
    if (!told.empty() && isThere && sight.state == told.mapped()) return;
    File file{.state = sight.state, .since = now, .flags = flags};
    file.isNew = file.isClosed = !told.empty();
    if (isThere || file.isNew) _files[path] = file;
}

void GrowingFiles::remove(const QByteArray& path) {
    const Lock lock(_mutex);
    _files.erase(path);
    _toldEarly.erase(path);
}

bool GrowingFiles::rename(const QByteArray& from, const QByteArray& to, std::uint32_t flags) {
    const Lock lock(_mutex);
    moveEntry(_toldEarly, from, to);
    if (!moveEntry(_files, from, to)) return false;
    _files[to].flags |= flags;
    return true;
}

void GrowingFiles::renameFolder(const QByteArray& from, const QByteArray& to) {
    const Lock lock(_mutex);
    moveEntriesBelow(_files, from, to);
    moveEntriesBelow(_toldEarly, from, to);
}

bool GrowingFiles::isEmpty() const {
    const Lock lock(_mutex);
    return _files.empty();
}

std::vector<GrowingFiles::Complete> GrowingFiles::takeComplete(Clock::time_point now) {
    const Lock lock(_mutex);
    std::vector<Complete> complete;
    for (auto entry = _files.begin(); entry != _files.end();) {
        auto& [path, file] = *entry;
        const Sight sight = _questions.look(path);
        if (sight.presence == Presence::Gone) {
            entry = _files.erase(entry);
            continue;
        }
        if (sight.presence == Presence::There && sight.state != file.state) {
            file.state = sight.state;
            file.since = now;
        }
        const auto quiet = now - file.since;
        const bool isComplete =
            file.isClosed || (quiet >= quietTime && _questions.writers(path) == Writers::None);
        if (isComplete || quiet >= quietTimeOfWriter) {
            if (!isComplete) _toldEarly[path] = file.state;
            complete.push_back({path, file.flags});
            entry = _files.erase(entry);
        } else {
            ++entry;
        }
    }
    return complete;
}

bool GrowingFiles::isOld(const State& state) const {
    using namespace std::chrono;
    const auto now = system_clock::now().time_since_epoch();
    return nanoseconds(state.modified) < now - oldTime;
}

bool GrowingFiles::holdIfWritten(
    const QByteArray& path, std::uint32_t flags, Clock::time_point now) {
    {
        const Lock lock(_mutex);
        if (_files.contains(path)) return true;
        if (_toldEarly.contains(path)) return false;
    }
    const Sight sight = _questions.look(path);
    if (sight.presence != Presence::There || isOld(sight.state) ||
        _questions.writers(path) != Writers::Some) {
        return false;
    }
    add(path, flags, now);
    return true;
}

} // namespace platform
