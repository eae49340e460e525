#include "core/LocalTime.h"

#include <QByteArray>
#include <QDateTime>
#include <QHash>

#include <climits>
#include <cstdlib>
#include <ctime>
#include <optional>

namespace PBUtilities {

namespace {

constexpr qint64 secondsPerDay = 86400;
/// Julian day of 1 January 1970.
constexpr qint64 epochDay = 2440588;

/// By how much local time is ahead of UTC, for days on which that does not change.
class DayOffsets {
public:
    [[nodiscard]] std::optional<int> ofDay(qint64 julianDay) {
        dropWhenStale();
        const auto known = _offsets.constFind(julianDay);
        if (known != _offsets.cend())
            return *known == changes ? std::nullopt : std::optional(*known);
        if (_offsets.size() >= maximalDays) _offsets.clear();
        const int offset = findOffset(QDate::fromJulianDay(julianDay));
        _offsets.insert(julianDay, offset);
        return offset == changes ? std::nullopt : std::optional(offset);
    }

private:
    static constexpr int changes = INT_MAX;
    static constexpr qsizetype maximalDays = 1 << 14; // 45 years
    static constexpr std::time_t lifetime = 60;       // seconds

    static int findOffset(QDate day) {
        const int offset = QDateTime(day, QTime(0, 0)).offsetFromUtc();
        const int later = QDateTime(day.addDays(1), QTime(0, 0)).offsetFromUtc();
        return offset == later ? offset : changes;
    }

    void dropWhenStale() {
        const char* zone = std::getenv("TZ");
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
        if (now.tv_sec < _end && (zone ? _zone == zone : _zone.isNull())) return;
        _offsets.clear();
        _zone = QByteArray(zone);
        _end = now.tv_sec + lifetime;
    }

    QHash<qint64, int> _offsets;
    QByteArray _zone;
    std::time_t _end = 0; // by the monotonic clock
};

std::optional<int> offsetOfDay(qint64 julianDay) {
    thread_local DayOffsets offsets;
    return offsets.ofDay(julianDay);
}

qint64 floorDays(qint64 seconds) {
    return (seconds >= 0 ? seconds : seconds - (secondsPerDay - 1)) / secondsPerDay;
}

} // namespace

QDate localDateOf(qint64 secondsSince1970) {
    // The offset of the day in UTC gives the local day; if both days have it, it is right.
    const qint64 dayInUTC = floorDays(secondsSince1970) + epochDay;
    if (const auto offset = offsetOfDay(dayInUTC)) {
        const qint64 day = floorDays(secondsSince1970 + *offset) + epochDay;
        if (day == dayInUTC || offsetOfDay(day) == offset) return QDate::fromJulianDay(day);
    }
    return QDateTime::fromSecsSinceEpoch(secondsSince1970).date();
}

qint64 secondsOfLocalTime(QDate date, QTime time) {
    if (const auto offset = offsetOfDay(date.toJulianDay())) {
        return (date.toJulianDay() - epochDay) * secondsPerDay +
               time.msecsSinceStartOfDay() / 1000 - *offset;
    }
    const QDateTime instant(date, time);
    if (instant.isValid()) return instant.toSecsSinceEpoch();
    return QDateTime(date.addDays(-1), time).toSecsSinceEpoch() + secondsPerDay;
}

} // namespace PBUtilities
