#pragma once

#include "platform/values/PBValue.h"

namespace group {

/// A month of the user's calendar: proleptic Gregorian, in the system's time zone.
struct CalendarMonth {
    int year = 1970;
    int month = 1; ///< 1 to 12
    auto operator<=>(const CalendarMonth&) const = default;
};

/// The month in which an instant falls. Not a number counts as the start of 1970; instants more
/// than about 7,900 years away from it count as the furthest that there is. Any thread.
[[nodiscard]] CalendarMonth calendarMonthOf(PBDate date);

} // namespace group
