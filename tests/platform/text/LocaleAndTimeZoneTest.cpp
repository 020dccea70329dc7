// The platform's own locale and zone handles, and the calendar step the demo night is dated with.
#include "platform/text/Calendar.h"
#include "platform/text/DateFormatter.h"
#include "platform/text/Locale.h"
#include "platform/text/TimeZone.h"

#include <gtest/gtest.h>

namespace {

using velmorant::platform::Calendar;
using velmorant::platform::Date;
using velmorant::platform::DateFormatter;
using velmorant::platform::Locale;
using velmorant::platform::TimeZone;

TEST(Locale, KnownLanguagesOnlyAndTheirTags) {
    struct Case {
        const char* id;
        bool known;
        const char* tag;
    };
    const Case cases[] = {
        {"en_US", true, "en-US"}, {"de_DE", true, "de-DE"}, {"en_US_POSIX", true, "en-US-u-va-posix"},
        {"xx_YY", false, nullptr}, {"", false, nullptr},
    };
    for (const auto& c : cases) {
        Locale locale(c.id);
        EXPECT_EQ(locale.isKnown(), c.known) << c.id;
        EXPECT_EQ(locale.id(), c.id);
        if (c.tag) EXPECT_EQ(locale.languageTag(), c.tag) << c.id;
    }
}

TEST(TimeZone, NamedZonesAndTheirDaylightSavingInSeconds) {
    EXPECT_FALSE(TimeZone::named("Mars/Olympus"));
    EXPECT_FALSE(TimeZone::named(""));
    struct Case {
        const char* zone;
        double unix;
        double daylight;
    };
    const Case cases[] = {
        {"Europe/London", 1704067200, 0},       // 2024-01-01: winter
        {"Europe/London", 1719792000, 3600},    // 2024-07-01: summer time
        {"America/New_York", 1719792000, 3600},
        {"Asia/Tokyo", 1719792000, 0},          // no daylight saving at all
        {"Australia/Lord_Howe", 1704067200, 1800},  // a half-hour shift
    };
    for (const auto& c : cases) {
        auto zone = TimeZone::named(c.zone);
        ASSERT_TRUE(zone) << c.zone;
        EXPECT_EQ(zone->id(), c.zone);
        EXPECT_EQ(zone->daylightSavingTimeOffset(Date::fromUnix(c.unix)), c.daylight) << c.zone << " " << c.unix;
    }
}

TEST(Calendar, AddingDaysKeepsTheWallTimeAcrossAClockChange) {
    auto london = TimeZone::named("Europe/London");
    ASSERT_TRUE(london);
    Calendar calendar(*london);
    DateFormatter format(Locale::posix(), *london);
    format.setDateFormat("yyyy-MM-dd HH:mm:ss.SSS");
    const Date saturday = *format.dateFromString("2024-03-30 21:00:00.250");  // clocks go forward that night
    struct Case {
        long days;
        const char* expected;
    };
    const Case cases[] = {{1, "2024-03-31 21:00:00.250"}, {-1, "2024-03-29 21:00:00.250"}, {0, "2024-03-30 21:00:00.250"}};
    for (const auto& c : cases) {
        auto date = calendar.dateByAddingDays(saturday, c.days);
        ASSERT_TRUE(date) << c.days;
        EXPECT_EQ(format.stringFromDate(*date), c.expected) << c.days;
    }
    EXPECT_EQ(calendar.dateByAddingDays(saturday, 1).value().timeIntervalSinceDate(saturday), 23 * 3600.0);
    EXPECT_FALSE(calendar.dateByAddingDays(saturday, 1L << 40));
}

}  // namespace
