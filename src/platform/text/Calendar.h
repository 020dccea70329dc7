#pragma once

#include "platform/core/Date.h"
#include "platform/text/Locale.h"
#include "platform/text/TimeZone.h"

#include <memory>
#include <optional>

namespace velmorant::platform {

// The calendar fields the phone's calendar hands out for a date. Month and
// weekday are counted from 1 (January; Sunday).
struct DateComponents {
    long year = 0;
    long month = 0;
    long day = 0;
    long hour = 0;
    long minute = 0;
    long second = 0;
    long weekday = 0;  // read only: ignored when building a date
};

// A Gregorian calendar in a given time zone, on ICU's GregorianCalendar.
// Building a date is lenient as on the phone: fields out of range roll over
// (day 0 is the last day of the month before, hour 25 is 01:00 the day after).
// A wall time the clocks skip moves forward by the gap; a wall time that
// happens twice is read as ICU's calendar reads it (the later, standard-time
// one).
class Calendar {
public:
    explicit Calendar(const TimeZone& timeZone, const Locale& locale = Locale::posix());
    ~Calendar();
    Calendar(const Calendar&) = delete;
    Calendar& operator=(const Calendar&) = delete;

    // Year, month, day, hour, minute, second and weekday of a date; the part
    // of a second is not kept. None for a date beyond the calendar's range.
    std::optional<DateComponents> components(Date date) const;
    // The date of the given year, month, day, hour, minute and second; none
    // when a field lies beyond a million years' worth of its unit.
    std::optional<Date> dateFromComponents(const DateComponents& components) const;
    // The same wall time `days` days later (earlier when negative); none beyond the calendar's range.
    std::optional<Date> dateByAddingDays(Date date, long days) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace velmorant::platform
