#pragma once

#include "platform/text/Locale.h"

#include <memory>
#include <optional>
#include <string>

namespace velmorant::platform {

// The phone's duration formatter on ICU's MeasureFormat. Configured by the
// largest number of units shown, the units style, the zero-formatting
// behaviour and the allowed units; settings stay until changed.
//
// How a length of time becomes text:
// - It is split into the allowed units, largest first. Units that are not
//   allowed are folded into the next larger allowed one (7 h 30 min with only
//   minutes allowed is 450 min), and whatever is left below the smallest
//   allowed unit is dropped, not rounded (50800 s as hours and minutes is
//   14 h 6 min). Units dropped by the largest-number-of-units limit are also
//   truncated.
// - Zero-valued units: Pad and None show every allowed unit; Default drops
//   leading zero units in the positional style (300 s as hours and minutes
//   is "5"; 3600 s is "1:00") and every zero unit in the other styles
//   ("7h", not "7h 0m"). When every unit is zero the smallest one is shown
//   ("0m", "0").
// - Styles: Full, Short and Abbreviated are ICU's wide, short and narrow
//   widths ("7 hours, 30 minutes", "7 hr, 30 min", "7h 30m"). Positional is
//   ICU's numeric width for hours, minutes and seconds ("7:30", "0:05",
//   "7:30:00"); a single unit is the bare number; positional text that would
//   need days or weeks uses the abbreviated form.
// - A negative length shows its sign once, on the first unit ("-1h 30m",
//   "-1:30"); one that truncates to zero shows none.
class DateComponentsFormatter {
public:
    enum class UnitsStyle { Positional, Abbreviated, Short, Full };

    // The phone's calendar-unit bit values, for the units durations use.
    enum CalendarUnit : unsigned {
        Day = 1u << 4,
        Hour = 1u << 5,
        Minute = 1u << 6,
        Second = 1u << 7,
        WeekOfMonth = 1u << 12,
    };

    // The phone's zero-formatting bit values.
    enum ZeroFormattingBehavior : unsigned {
        ZeroNone = 0,
        ZeroDefault = 1u << 0,
        DropLeading = 1u << 1,
        DropMiddle = 1u << 2,
        DropTrailing = 1u << 3,
        DropAll = DropLeading | DropMiddle | DropTrailing,
        Pad = 1u << 16,
    };

    explicit DateComponentsFormatter(const Locale& locale);
    ~DateComponentsFormatter();
    DateComponentsFormatter(const DateComponentsFormatter&) = delete;
    DateComponentsFormatter& operator=(const DateComponentsFormatter&) = delete;

    // 0 means no limit.
    void setMaximumUnitCount(long count) { maximumUnitCount_ = count; }
    long maximumUnitCount() const { return maximumUnitCount_; }
    void setUnitsStyle(UnitsStyle style) { unitsStyle_ = style; }
    UnitsStyle unitsStyle() const { return unitsStyle_; }
    void setZeroFormattingBehavior(unsigned behavior) { zeroFormattingBehavior_ = behavior; }
    unsigned zeroFormattingBehavior() const { return zeroFormattingBehavior_; }
    // 0 means weeks, days, hours, minutes and seconds.
    void setAllowedUnits(unsigned units) { allowedUnits_ = units; }
    unsigned allowedUnits() const { return allowedUnits_; }

    // None for a length that is not a finite number of seconds, or too large to count.
    std::optional<std::string> stringFromTimeInterval(double seconds);

private:
    // ICU's formatters, made when first asked for and kept.
    struct Impl;

    Locale locale_;
    long maximumUnitCount_ = 0;
    UnitsStyle unitsStyle_ = UnitsStyle::Positional;
    unsigned zeroFormattingBehavior_ = ZeroDefault;
    unsigned allowedUnits_ = 0;
    std::unique_ptr<Impl> impl_;
};

}  // namespace velmorant::platform
