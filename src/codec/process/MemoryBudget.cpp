#include "codec/process/MemoryBudget.h"

#include <QFile>

#include <algorithm>

namespace codec::process {

std::uint64_t availableMemory() {
    QFile file(QStringLiteral("/proc/meminfo"));
    if (!file.open(QIODevice::ReadOnly)) return 0;
    const QByteArray name("MemAvailable:");
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (!line.startsWith(name)) continue;
        constexpr std::uint64_t kibibyte = 1024;
        return line.mid(name.size()).trimmed().split(' ').constFirst().toULongLong() * kibibyte;
    }
    return 0;
}

MemoryBudget::Share
MemoryBudget::take(std::uint64_t bytes, const std::stop_token& stop, bool isUrgent) {
    platform::Lock lock(_mutex);
    const std::uint64_t ticket = _nextTicket++;
    _line.insert(isUrgent ? _line.begin() : _line.end(), ticket);
    const bool isFree = _changed.waitUnlessStopped(lock, stop, [&] {
        _mutex.assertHeld();
        if (_line.front() != ticket) return false;
        if (_inUse == 0) _limit = _available() / 2;
        return _inUse == 0 || (bytes <= _limit && _inUse <= _limit - bytes);
    });
    std::erase(_line, ticket);
    _changed.notifyAll();
    if (!isFree) return nullptr;
    _inUse += bytes;
    return Share(this, [this, bytes](const void*) { giveBack(bytes); });
}

std::size_t MemoryBudget::waiting() {
    const platform::Lock lock(_mutex);
    return _line.size();
}

void MemoryBudget::giveBack(std::uint64_t bytes) {
    const platform::Lock lock(_mutex);
    _inUse -= bytes;
    _changed.notifyAll();
}

} // namespace codec::process
