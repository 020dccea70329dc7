#include "FormatTestSupport.h"

#include <gtest/gtest.h>

namespace velmorant::testing {
using format::FormatTools;

namespace {

constexpr const char* kNY = "America/New_York";
constexpr const char* kLondon = "Europe/London";

// Night anchoring at the default and other night hours, across the 2024 clock
// changes (New York 10 Mar / 3 Nov, London 31 Mar / 27 Oct).
TEST(Night, NowDateIsTheMorningThatEndsTheCurrentNight) {
    const struct { const char* zone; std::optional<long> nightHour; platform::Date now, expected; } cases[] = {
        {kNY, {}, localDate(kNY, 2024, 3, 5, 10), localDate(kNY, 2024, 3, 5, 9)},
        {kNY, 5, localDate(kNY, 2024, 3, 5, 3), localDate(kNY, 2024, 3, 4, 17)},
        // Twelve elapsed hours after 21:00, so the morning of a clock change is an hour off 09:00.
        {kNY, 21, localDate(kNY, 2024, 3, 10, 10), localDate(kNY, 2024, 3, 10, 10)},
        {kNY, 21, localDate(kNY, 2024, 11, 3, 10), localDate(kNY, 2024, 11, 3, 8)},
        // A day back from just after a 23-hour day lands two calendar days back.
        {kNY, 21, localDate(kNY, 2024, 3, 11, 0, 30), localDate(kNY, 2024, 3, 10, 10)},
        {kLondon, 0, localDate(kLondon, 2024, 3, 31, 10), localDate(kLondon, 2024, 3, 31, 13)},
        // A negative hour: base day yesterday, hour rolled back into the day before.
        {kNY, -1, localDate(kNY, 2024, 3, 5, 10), localDate(kNY, 2024, 3, 4, 11)},
    };
    for (const auto& c : cases) {
        Fixture f({.zone = c.zone, .now = c.now, .nightHour = c.nightHour});
        EXPECT_EQ(f.tools->nowDate(), c.expected) << c.zone << " " << f.tools->CSVDate(c.now);
    }
}

TEST(Night, SeedCountsNightsAcrossShortAndLongDays) {
    const struct { const char* zone; std::optional<long> nightHour; platform::Date now, date; long seed; } cases[] = {
        {kNY, {}, localDate(kNY, 2024, 3, 5, 10), localDate(kNY, 2024, 3, 4, 23), -1},
        {kNY, {}, localDate(kNY, 2024, 3, 5, 10), localDate(kNY, 2024, 3, 6, 1), 1},
        {kNY, {}, localDate(kNY, 2024, 3, 11, 10), localDate(kNY, 2024, 3, 9, 12), -2},
        {kNY, {}, localDate(kNY, 2024, 11, 4, 10), localDate(kNY, 2024, 11, 2, 12), -2},
        {kLondon, 5, localDate(kLondon, 2024, 4, 1, 10), localDate(kLondon, 2024, 3, 30, 12), -2},
    };
    for (const auto& c : cases) {
        Fixture f({.zone = c.zone, .now = c.now, .nightHour = c.nightHour});
        EXPECT_EQ(f.tools->seedForDate(c.date), c.seed) << c.zone << " " << f.tools->CSVDate(c.date);
    }
}

TEST(Night, FromDateForSeedGivesTheStartOfThatNight) {
    const struct { std::optional<long> nightHour; platform::Date now; long seed; platform::Date expected; } cases[] = {
        {{}, localDate(kNY, 2024, 3, 5, 10), -1, localDate(kNY, 2024, 3, 3, 21)},
        {5, localDate(kNY, 2024, 3, 5, 3), 0, localDate(kNY, 2024, 3, 4, 5)},
        {{}, localDate(kNY, 2024, 3, 11, 0, 30), 0, localDate(kNY, 2024, 3, 9, 21)},
        {-1, localDate(kNY, 2024, 3, 5, 10), 0, localDate(kNY, 2024, 3, 3, 23)},
        {-1, localDate(kNY, 2024, 3, 5, 10), 1, localDate(kNY, 2024, 3, 4, 23)},
    };
    for (const auto& c : cases) {
        Fixture f({.now = c.now, .nightHour = c.nightHour});
        EXPECT_EQ(f.tools->fromDateForSeed(c.seed), c.expected) << "seed " << c.seed;
    }
}

// An hour of 24 is the midnight that ends the day: the night then begins
// exactly when it does with hour 0, at every time of day and across clock changes.
TEST(Night, HourTwentyFourIsMidnightLikeHourZero) {
    const struct { const char* zone; platform::Date now, nowDate; } cases[] = {
        {kNY, localDate(kNY, 2024, 3, 5, 0, 30), localDate(kNY, 2024, 3, 5, 12)},
        {kNY, localDate(kNY, 2024, 3, 10, 10), localDate(kNY, 2024, 3, 10, 13)},
        {kNY, localDate(kNY, 2024, 11, 3, 10), localDate(kNY, 2024, 11, 3, 11)},
        {kLondon, localDate(kLondon, 2024, 10, 27, 23), localDate(kLondon, 2024, 10, 27, 11)},
    };
    for (const auto& c : cases) {
        Fixture midnight({.zone = c.zone, .now = c.now, .nightHour = 24});
        Fixture zero({.zone = c.zone, .now = c.now, .nightHour = 0});
        FormatTools& t = *midnight.tools;
        SCOPED_TRACE(std::string(c.zone) + " " + t.CSVDate(c.now));
        EXPECT_EQ(t.nowDate(), c.nowDate);
        EXPECT_EQ(zero.tools->nowDate(), c.nowDate);
        for (long seed : {-1L, 0L, 1L}) EXPECT_EQ(t.fromDateForSeed(seed), zero.tools->fromDateForSeed(seed)) << seed;
        EXPECT_EQ(t.seedForDate(c.now), 0);
    }
}

TEST(Night, DaylightSavingDays) {
    const struct { const char* zone; platform::Date date; long kind, hour, hourBefore; } cases[] = {
        {kNY, localDate(kNY, 2024, 3, 10, 23), -1, 2, 1},
        {kNY, localDate(kNY, 2024, 11, 3, 12), 1, 2, 1},
        {kNY, localDate(kNY, 2024, 3, 5, 12), 0, 0, 0},
        {kLondon, localDate(kLondon, 2024, 3, 31, 12), -1, 1, 0},
        // Half-hour change: still well outside six minutes.
        {"Australia/Lord_Howe", localDate("Australia/Lord_Howe", 2024, 10, 6, 12), -1, 2, 1},
    };
    for (const auto& c : cases) {
        Fixture f({.zone = c.zone});
        EXPECT_EQ(f.tools->isDaylightSavings(c.date), c.kind) << c.zone << " " << f.tools->CSVDate(c.date);
        EXPECT_EQ(f.tools->getDaylightSavingsHourForDate(c.date, 0), c.hour) << c.zone;
        EXPECT_EQ(f.tools->getDaylightSavingsHourForDate(c.date, 1), c.hourBefore) << c.zone;
    }
}

TEST(Night, CalendarArithmeticRollsOver) {
    Fixture f({});  // now: Tue 5 Mar 2024 22:10:05, New York
    FormatTools& t = *f.tools;
    const platform::Date evening = localDate(kNY, 2024, 3, 5, 22, 10, 5);
    const std::pair<platform::Date, platform::Date> cases[] = {
        {t.dateForDate(evening, 25, -30), localDate(kNY, 2024, 3, 6, 0, 30)},
        {t.dateForDate(localDate(kNY, 2024, 3, 10, 12), 2, 30), localDate(kNY, 2024, 3, 10, 3, 30)},  // skipped hour
        {t.dateForDate(evening, 2024, 13, 1, 0, 0), localDate(kNY, 2025, 1, 1)},
        {t.dateForDate(evening, LONG_MAX, 1, 1, 0, 0), evening},  // beyond the calendar: unchanged
        {t.startOfMonthMonthsAgo(-10), localDate(kNY, 2025, 1, 1, 3)},
    };
    for (const auto& [got, expected] : cases) EXPECT_EQ(got, expected) << t.CSVDate(got);
    EXPECT_EQ(t.intervalSinceMidnight(localDate(kNY, 2024, 3, 10, 10)), 9 * 3600);  // 23-hour day
    EXPECT_EQ(Fixture({.locale = "de_DE"}).tools->nameOfMonthMonthsAgo(3), "Dez.");
}

TEST(Night, WhenStringLadder) {
    const platform::Date now = localDate(kNY, 2024, 3, 5, 22, 10);
    const struct { double secondsAgo; const char* expected; } cases[] = {
        {-3600, "just now"}, {60, "a minute ago"}, {3600, "60 minutes ago"}, {3601, "an hour ago"},
        {86401, "a day ago"}, {14 * 86400, "2 weeks ago"}, {29 * 86400, "Mon, Feb 5, 2024, 10:10 PM"},
    };
    Fixture f({.now = now});
    for (const auto& c : cases)
        EXPECT_EQ(f.tools->whenString(now.dateByAddingTimeInterval(-c.secondsAgo)), c.expected) << c.secondsAgo;
    EXPECT_EQ(f.tools->whenStringFB("2024-03-06T01:10:00Z"), "2 hours ago");
}

}  // namespace
}  // namespace velmorant::testing
