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
        if (const auto offset = steadyOffset(day)) return *offset;
        const int offset = QDateTime(day, QTime(0, 0)).offsetFromUtc();
        const int later = QDateTime(day.addDays(1), QTime(0, 0)).offsetFromUtc();
        return offset == later ? offset : changes;
    }

    /// Most days are far from any change: then what the rules in memory say just before and just
    /// after the day, wherever on the Earth, is enough. The files are asked for the others.
    static std::optional<int> steadyOffset(QDate day) {
        if (day.year() <= 1970 || day.year() >= 2037) return std::nullopt;
        constexpr qint64 hour = 3600;
        const qint64 midnight = (day.toJulianDay() - epochDay) * secondsPerDay;
        std::optional<int> common;
        for (const qint64 hours : {-14, 11, 36}) {
            const std::time_t instant = midnight + hours * hour;
            std::tm local{};
            if (!::localtime_r(&instant, &local)) return std::nullopt;
            const int offset = static_cast<int>(local.tm_gmtoff);
            if (common.value_or(offset) != offset) return std::nullopt;
            common = offset;
        }
        return common;
    }

    void dropWhenStale() {
        const char* zone = std::getenv("TZ");
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
        if (now.tv_sec < _end && (zone ? _zone == zone : _zone.isNull())) return;
        _offsets.clear();
        ::tzset();
        _zone = QByteArray(zone);
        _end = now.tv_sec + lifetime;
    }

    QHash<qint64, int> _offsets;
    QByteArray _zone;
    std::time_t _end = 0; // by the monotonic clock
};

std::optional<int> offsetOfDay(qint64 julianDay) {
    // Of each thread its own: this is asked for every image of every operation.
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
