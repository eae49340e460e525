#include "platform/files/GrowingFiles.h"

#include <sys/stat.h>

namespace platform {

std::optional<GrowingFiles::State> GrowingFiles::lookAtDisk(const QByteArray& path) {
    struct stat status {};
    if (::stat(path.constData(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    constexpr std::int64_t second = 1'000'000'000;
    return State{status.st_size, status.st_mtim.tv_sec * second + status.st_mtim.tv_nsec};
}

void GrowingFiles::add(const QByteArray& path, std::uint32_t flags, Clock::time_point now) {
    const auto state = _look(path);
    const Lock lock(_mutex);
    File& file = _files[path];
    if (file.flags == 0) {
        file.state = state.value_or(State());
        file.since = now;
    }
    file.flags |= flags;
}

void GrowingFiles::wasClosed(const QByteArray& path) {
    const Lock lock(_mutex);
    if (const auto found = _files.find(path); found != _files.end()) found->second.isClosed = true;
}

void GrowingFiles::remove(const QByteArray& path) {
    const Lock lock(_mutex);
    _files.erase(path);
}

bool GrowingFiles::rename(const QByteArray& from, const QByteArray& to, std::uint32_t flags) {
    const Lock lock(_mutex);
    auto file = _files.extract(from);
    if (file.empty()) return false;
    file.key() = to;
    file.mapped().flags |= flags;
    _files.erase(to);
    _files.insert(std::move(file));
    return true;
}

void GrowingFiles::renameFolder(const QByteArray& from, const QByteArray& to) {
    const Lock lock(_mutex);
    const QByteArray prefix = from + '/';
    std::vector<QByteArray> below;
    for (const auto& [path, file] : _files) {
        if (path.startsWith(prefix)) below.push_back(path);
    }
    for (const QByteArray& path : below) {
        auto file = _files.extract(path);
        if (to.isEmpty()) continue;
        file.key() = to + path.mid(from.size());
        _files.insert(std::move(file));
    }
}

bool GrowingFiles::isEmpty() const {
    const Lock lock(_mutex);
    return _files.empty();
}

std::vector<GrowingFiles::Complete> GrowingFiles::takeComplete(Clock::time_point now) {
    const Lock lock(_mutex);
    std::vector<Complete> complete;
    for (auto entry = _files.begin(); entry != _files.end();) {
        File& file = entry->second;
        const auto state = _look(entry->first);
        if (!state) {
            entry = _files.erase(entry);
            continue;
        }
        if (*state != file.state) {
            file.state = *state;
            file.since = now;
            file.hasGrown = true;
        }
        const std::chrono::milliseconds needed = file.hasGrown ? quietTimeOfWriter : quietTime;
        if (file.isClosed || now - file.since >= needed) {
            complete.push_back({entry->first, file.flags});
            entry = _files.erase(entry);
        } else {
            ++entry;
        }
    }
    return complete;
}

bool GrowingFiles::contains(const QByteArray& path) const {
    const Lock lock(_mutex);
    return _files.contains(path);
}

} // namespace platform
