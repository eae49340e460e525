#pragma once

#include <QDateTime>
#include <QString>

#include <cstdint>

/// One change on disk.
class SCEvent {
public:
    /// A separator at the path's end is dropped, unless the path is nothing else. The date is that
    /// of the arrival; for the flags see platform/EventStream.h.
    [[nodiscard]] static SCEvent eventWithEventId(
        std::uint64_t eventId, const QDateTime& eventDate, const QString& eventPath,
        std::uint32_t eventFlags);

    [[nodiscard]] std::uint64_t eventId() const { return _eventId; }
    [[nodiscard]] const QDateTime& eventDate() const { return _eventDate; }
    [[nodiscard]] const QString& eventPath() const { return _eventPath; }
    [[nodiscard]] std::uint32_t eventFlags() const { return _eventFlags; }
    [[nodiscard]] QString description() const;

private:
    SCEvent() = default;

    std::uint64_t _eventId = 0;
    QDateTime _eventDate;
    QString _eventPath;
    std::uint32_t _eventFlags = 0;
};
