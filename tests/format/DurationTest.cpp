#include "FormatTestSupport.h"
#include "platform/text/DateComponentsFormatter.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmorant::testing {
using format::FormatTools;

namespace {

using DurationOp = std::string (FormatTools::*)(double);

#define OP(name) #name, &FormatTools::name

TEST(Duration, FormatsLengthsOfTime) {
    const struct { const char* locale; const char* name; DurationOp op; double seconds; const char* expected; }
    cases[] = {
        {"en_US", OP(formattedTimeInterval), 27000, "7h 30m"},
        {"en_US", OP(formattedTimeInterval), 36000, "10h 0m"},
        {"en_US", OP(formattedTimeInterval), 300, "0h 5m"},
        {"en_US", OP(formattedTimeInterval), 50800, "14h 6m"},  // seconds dropped, not rounded
        {"en_US", OP(formattedTimeInterval), -5400, "-1h 30m"},
        {"en_US", OP(formattedTimeInterval), -1800, "-0h 30m"},
        {"en_US", OP(formattedTimeInterval), -30, "0h 0m"},
        {"en_US", OP(formattedTimeInterval), NAN, ""},
        {"en_US", OP(formattedLongTimeInterval), 27000, "7 hours, 30 minutes"},
        {"en_US", OP(formattedLongTimeInterval), 3660, "1 hour, 1 minute"},
        {"en_US", OP(formattedMinInterval), 27000, "450m"},  // hours folded into minutes
        {"en_US", OP(formattedMinInterval), 74040, "1,234m"},
        {"en_US", OP(formattedShortTimeInterval), 27000, "7:30"},
        {"en_US", OP(formattedShortTimeInterval), 3600, "1:00"},
        {"en_US", OP(formattedShortTimeInterval), 300, "5"},  // leading zero hours dropped
        {"en_US", OP(formattedShortTimeInterval), 0, "0"},
        {"en_US", OP(formattedShortTimeInterval), -5400, "-1:30"},
        {"en_US", OP(formattedShortHMSInterval), 27000, "7:30:00"},
        {"en_US", OP(formattedShortHMSInterval), 300, "0:05:00"},
        {"en_US", OP(formattedLongMinInterval), 27000, "450 min"},
        {"en_US", OP(formattedDaysInterval), 1209600, "2w"},
        {"en_US", OP(formattedDaysInterval), 1296000 + 7200, "2w 1d"},
        {"en_GB", OP(formattedLongMinInterval), 27000, "450 mins"},
        {"de_DE", OP(formattedTimeInterval), 27000, "7 Std., 30 Min."},
        {"de_DE", OP(formattedMinInterval), 74040, "1.234 Min."},
        {"de_DE", OP(formattedLongTimeInterval), 27000, "7 Stunden, 30 Minuten"},
    };
    for (const auto& c : cases) {
        Fixture f({.locale = c.locale});
        EXPECT_EQ(((*f.tools).*c.op)(c.seconds), c.expected) << c.locale << " " << c.name << " " << c.seconds;
    }
}

// The days interval keeps whatever zero behaviour the previous duration call left.
TEST(Duration, DaysIntervalCarriesTheZeroBehaviourOver) {
    const struct { DurationOp before; const char* expected; } cases[] = {
        {nullptr, "2w"},
        {&FormatTools::formattedShortTimeInterval, "2w"},
        {&FormatTools::formattedTimeInterval, "2w 0d"},
        {&FormatTools::formattedShortHMSInterval, "2w 0d"},
    };
    for (const auto& c : cases) {
        Fixture f({});
        if (c.before) ((*f.tools).*c.before)(60);
        EXPECT_EQ(f.tools->formattedDaysInterval(1209600), c.expected);
    }
}

TEST(Duration, UnitWords) {
    const struct { const char* locale; const char *minute, *hour, *days; } cases[] = {
        {"en_US", "min", "hr", "days"},
        {"en_GB", "min", "hrs", "days"},
        {"de_DE", "Min.", "Std.", "Tg."},
    };
    for (const auto& c : cases) {
        Fixture f({.locale = c.locale});
        EXPECT_EQ(f.tools->shortTermForMIN(), c.minute) << c.locale;
        EXPECT_EQ(f.tools->shortTermForHRS(), c.hour) << c.locale;
        EXPECT_EQ(f.tools->shortTermForDAYS(), c.days) << c.locale;
    }
}

// The settings the app does not use today, so the formatter stays honest for later callers.
TEST(Duration, FormatterSettingsCombine) {
    using F = platform::DateComponentsFormatter;
    const struct { F::UnitsStyle style; unsigned zero, units; long maximum; double seconds; const char* expected; }
    cases[] = {
        {F::UnitsStyle::Abbreviated, F::ZeroDefault, F::Hour | F::Minute | F::Second, 0, 3610, "1h 10s"},
        {F::UnitsStyle::Abbreviated, F::DropLeading, F::Hour | F::Minute | F::Second, 0, 3610, "1h 0m 10s"},
        {F::UnitsStyle::Abbreviated, F::DropMiddle, F::Hour | F::Minute | F::Second, 0, 600, "0h 10m 0s"},
        {F::UnitsStyle::Abbreviated, F::DropTrailing, F::Hour | F::Minute | F::Second, 0, 3600, "1h"},
        {F::UnitsStyle::Abbreviated, F::Pad, F::Hour | F::Minute | F::Second, 2, 3725, "1h 2m"},
        {F::UnitsStyle::Abbreviated, F::ZeroDefault, F::Hour | F::Minute | F::Second, 1, 3725, "1h"},
        {F::UnitsStyle::Abbreviated, F::ZeroDefault, 0, 0, 694861, "1w 1d 1h 1m 1s"},
        {F::UnitsStyle::Positional, F::ZeroDefault, F::Minute | F::Second, 0, 65, "1:05"},
        {F::UnitsStyle::Positional, F::ZeroDefault, F::Hour | F::Minute | F::Second, 0, 5, "5"},
        {F::UnitsStyle::Positional, F::Pad, F::Day | F::Hour, 0, 90000, "1d 1h"},
    };
    for (const auto& c : cases) {
        F formatter(platform::Locale("en_US"));
        formatter.setUnitsStyle(c.style);
        formatter.setZeroFormattingBehavior(c.zero);
        formatter.setAllowedUnits(c.units);
        formatter.setMaximumUnitCount(c.maximum);
        EXPECT_EQ(formatter.stringFromTimeInterval(c.seconds), c.expected) << c.seconds;
    }
    F formatter(platform::Locale("en_US"));
    EXPECT_EQ(formatter.stringFromTimeInterval(INFINITY), std::nullopt);
    EXPECT_EQ(formatter.stringFromTimeInterval(1e300), std::nullopt);
}

}  // namespace
}  // namespace velmorant::testing
