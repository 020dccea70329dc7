#include "FormatTestSupport.h"

#include <gtest/gtest.h>

namespace velmorant::testing {
using format::FormatTools;

namespace {

using TextOp = std::string (FormatTools::*)(platform::Date);

struct TextCase { const char* locale; const char* name; TextOp op; platform::Date date; const char* expected; };

const platform::Date kTuesdayEvening = localDate("America/New_York", 2024, 3, 5, 22, 10, 5);
const platform::Date kMorning = localDate("America/New_York", 2024, 3, 5, 9, 5);
const platform::Date kThursday = localDate("America/New_York", 2024, 3, 7, 12);
const platform::Date kYearEnd = localDate("America/New_York", 2024, 12, 30, 12);

#define OP(name) #name, &FormatTools::name

// Formatting a date into text, in the user's locale and time zone.
TEST(DateText, FormatsInTheUsersLocale) {
    const TextCase cases[] = {
        // Clock times: the en-US texts the app shows, and 24-hour locales.
        {"en_US", OP(hourMin), kTuesdayEvening, "10:10PM"},
        {"en_US", OP(hourMin), kMorning, "9:05AM"},
        {"en_US", OP(hrMn24), kTuesdayEvening, "22:10"},
        {"en_US", OP(hrMn), kTuesdayEvening, "10:10"},
        {"en_US", OP(hrMnSec), kTuesdayEvening, "10:10:05"},
        {"en_US", OP(dayTime), kTuesdayEvening, "10:10 PM"},
        {"en_US", OP(dayTime), kMorning, "9:05 AM"},
        {"en_US", OP(dayTimeNoSuffix), kTuesdayEvening, "22:10"},
        {"en_US", OP(timeAs24), kTuesdayEvening, "22:10"},
        {"en_US", OP(HHmm), kTuesdayEvening, "2210"},
        {"en_US", OP(HHmm), kMorning, "0905"},
        {"de_DE", OP(hrMn), kTuesdayEvening, "22:10"},
        {"de_DE", OP(hrMnSec), kTuesdayEvening, "22:10:05"},
        {"de_DE", OP(dayTime), kTuesdayEvening, "22:10"},
        {"de_DE", OP(HHmm), kTuesdayEvening, "2210"},
        {"en_GB", OP(dayTime), kMorning, "09:05"},
        {"ko_KR", OP(hrMn), kTuesdayEvening, "10:10"},
        {"ko_KR", OP(dayTime), kTuesdayEvening, "오후 10:10"},
        // Day keys and machine-readable dates.
        {"en_US", OP(YYMMDD), localDate("America/New_York", 2024, 3, 5, 23, 59), "20240305"},
        {"en_US", OP(CSVDate), kTuesdayEvening, "2024-03-05 22:10:05"},
        // Named patterns, set as they stand.
        {"en_US", OP(monthDateYear), kTuesdayEvening, "March 5, 2024"},
        {"en_US", OP(shortDate), kTuesdayEvening, "Tuesday"},
        {"en_US", OP(shortDayMonth), kTuesdayEvening, "Tue Mar 5"},
        {"en_US", OP(shortDayMonthYear), kTuesdayEvening, "Tue Mar 5, 2024"},
        {"en_US", OP(shortDayC), kTuesdayEvening, "Tue5"},
        {"en_US", OP(veryShortDayOnly), kThursday, "T"},
        {"en_US", OP(longMonth), kTuesdayEvening, "March"},
        {"en_US", OP(yearOfDate), kTuesdayEvening, "2024"},
        {"en_US", OP(dayMonthDateTime), kTuesdayEvening, "10:10PM Tuesday, March 5"},
        // The week-based year differs from the calendar year at New Year, on purpose.
        {"en_US", OP(yearOfDate), kYearEnd, "2025"},
        {"en_US", OP(shortDayMonthYear), kYearEnd, "Mon Dec 30, 2025"},
        {"en_US", OP(YYMMDD), kYearEnd, "20241230"},
        // Month and weekday names in the user's language.
        {"de_DE", OP(shortDate), kTuesdayEvening, "Dienstag"},
        {"de_DE", OP(longMonth), kTuesdayEvening, "März"},
        {"de_DE", OP(veryShortDayOnly), kThursday, "D"},
        {"fr_FR", OP(shortDayOnly), kTuesdayEvening, "mar."},
        {"fr_FR", OP(veryShortDayOnly), kTuesdayEvening, "M"},
        {"ko_KR", OP(veryShortDayOnly), kThursday, "목"},
        // Localised templates.
        {"en_US", OP(dayDate), kTuesdayEvening, "5 Tuesday"},
        {"en_US", OP(dayMonthDate), kTuesdayEvening, "Tuesday, March 5"},
        {"en_US", OP(dayMonthDateYear), kTuesdayEvening, "Tuesday, Mar 5, 2024"},
        {"en_US", OP(shorthhmmDDMMYY), kTuesdayEvening, "Tue, 3/5/24, 10:10 PM"},
        {"en_US", OP(ddmmyy), kTuesdayEvening, "3/5/24"},
        {"en_US", OP(ddmm), kTuesdayEvening, "3/5"},
        {"en_GB", OP(ddmmyy), kTuesdayEvening, "05/03/24"},
        {"en_GB", OP(dayMonthDate), kTuesdayEvening, "Tuesday, 5 March"},
        {"de_DE", OP(dayMonthDate), kTuesdayEvening, "Dienstag, 5. März"},
        {"de_DE", OP(ddmm), kTuesdayEvening, "5.3."},
    };
    for (const auto& c : cases) {
        Fixture f({.locale = c.locale});
        EXPECT_EQ(((*f.tools).*c.op)(c.date), c.expected) << c.locale << " " << c.name;
    }
}

TEST(DateText, KoreanPatternFollowsTheFirstPreferredLanguage) {
    struct { const char* locale; std::vector<std::string> languages; const char* expected; } cases[] = {
        {"ko_KR", {"ko-KR"}, "2024년 3월 5일 화요일"},
        {"en_US", {"ko"}, "2024년 3월 5일 Tue요일"},
        {"ko_KR", {"en-US", "ko-KR"}, "화 3월 5, 2024"},
    };
    for (const auto& c : cases) {
        Fixture f({.locale = c.locale, .languages = c.languages});
        EXPECT_EQ(f.tools->shortDayMonthYear(kTuesdayEvening), c.expected) << c.locale << " " << c.languages[0];
    }
}

TEST(DateText, NumbersReadBackFromADate) {
    struct { const char* locale; platform::Date date; long hour, day, minute; } cases[] = {
        {"en_US", localDate("America/New_York", 2024, 3, 5, 0, 30), 0, 5, 30},
        {"en_US", localDate("America/New_York", 2024, 3, 31, 23, 59), 23, 31, 59},
        // The hour and day come through a fixed locale, so other digits cannot upset them.
        {"ar_EG", localDate("America/New_York", 2024, 3, 5, 23, 59), 23, 5, 0},
    };
    for (const auto& c : cases) {
        Fixture f({.locale = c.locale});
        EXPECT_EQ(f.tools->currentHour(c.date), c.hour) << c.locale;
        EXPECT_EQ(f.tools->currentDay(c.date), c.day) << c.locale;
        EXPECT_EQ(f.tools->currentMin(c.date), c.minute) << c.locale;
    }
    Fixture f({.now = kYearEnd});
    EXPECT_EQ(f.tools->currentYear(), 2024);
}

TEST(DateText, TwelveOrTwentyFourHourClockFollowsTheLocale) {
    const std::pair<const char*, bool> cases[] = {
        {"en_US", false}, {"en_GB", true}, {"de_DE", true}, {"fr_FR", true}, {"ko_KR", false}};
    for (const auto& [locale, expected] : cases)
        EXPECT_EQ(Fixture({.locale = locale}).tools->is24hr(), expected) << locale;
}

TEST(DateText, IsoDateIsWrittenInTheDevicesZone) {
    const struct { const char* zone; platform::Date date; const char* expected; } cases[] = {
        {"Europe/London", localDate("Europe/London", 2024, 7, 5, 22, 10), "2024-07-05T22:10:00+01:00"},
        {"Europe/London", localDate("Europe/London", 2024, 3, 5, 22, 10), "2024-03-05T22:10:00Z"},
        {"America/New_York", kTuesdayEvening, "2024-03-05T22:10:05-05:00"},
    };
    for (const auto& c : cases) EXPECT_EQ(Fixture({.zone = c.zone}).tools->isoDateFromDate(c.date), c.expected);
}

TEST(DateText, DayKeysParseStrictly) {
    Fixture f({});
    EXPECT_EQ(f.tools->NSDateFromYYMMDD("20240305"), localDate("America/New_York", 2024, 3, 5));
    // A date read back gives the key it came from, also on a daylight-saving day.
    const platform::Date spring = localDate("America/New_York", 2024, 3, 10, 15);
    EXPECT_EQ(f.tools->YYMMDD(*f.tools->NSDateFromYYMMDD(f.tools->YYMMDD(spring))), "20240310");
    for (const char* bad : {"2024-03-05", "", "2024030", "202403055", "20241305", "20240230", "abcdefgh", "20240305x"})
        EXPECT_EQ(f.tools->NSDateFromYYMMDD(bad), std::nullopt) << bad;
}

TEST(DateText, SentenceCapitalisation) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""}, {"hELLO wORLD", "Hello world"}, {"a", "A"}, {"élan VITAL", "Élan vital"}, {"123 ABC", "123 abc"}};
    Fixture f({});
    for (const auto& [in, out] : cases) EXPECT_EQ(f.tools->sentenceCapitalizedString(in), out) << in;
}

}  // namespace
}  // namespace velmorant::testing
