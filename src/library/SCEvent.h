#pragma once

#include <QString>

#include <cstdint>

/// One change on disk.
class SCEvent {
public:
    /// A separator at the path's end is dropped, unless the path is nothing else. For the flags see
    /// platform/files/EventStream.h.
    SCEvent(const QString& eventPath, std::uint32_t eventFlags, const QString& movedTo = {})
        : _eventPath(eventPath), _eventFlags(eventFlags), _movedTo(movedTo) {
        if (_eventPath.size() >= 2 && _eventPath.endsWith(u'/')) _eventPath.chop(1);
    }

    [[nodiscard]] const QString& eventPath() const { return _eventPath; }
    [[nodiscard]] std::uint32_t eventFlags() const { return _eventFlags; }
    /// Where a root was seen to go; empty where nobody saw it.
    [[nodiscard]] const QString& movedTo() const { return _movedTo; }

private:
    QString _eventPath;
    std::uint32_t _eventFlags;
    QString _movedTo;
};
