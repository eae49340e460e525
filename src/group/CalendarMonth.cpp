#include "group/CalendarMonth.h"

#include "core/LocalTime.h"

#include <algorithm>
#include <cmath>

namespace group {

namespace {

constexpr double furthestSeconds = 2.5e11;

} // namespace

CalendarMonth calendarMonthOf(PBDate date) {
    if (std::isnan(date.secondsSince1970)) return {};
    const double seconds = std::clamp(date.secondsSince1970, -furthestSeconds, furthestSeconds);
    const QDate day = PBUtilities::localDateOf(static_cast<qint64>(std::floor(seconds)));
    return {day.year(), day.month()};
}

} // namespace group
