#pragma once

#include "platform/core/Date.h"
#include "platform/services/Platform.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmorant::platform {
class DateFormatter;
class DateComponentsFormatter;
class Calendar;
struct DateComponents;
class ISO8601DateFormatter;
}  // namespace velmorant::platform

namespace velmorant::format {

// Dates, day keys, clock times and durations in the user's locale and time
// zone. The formatters are created on first use and reconfigured by every
// call, so one object serves one thread at a time.
//
// Everything takes the locale, time zone and clock of the Platform it was
// made with; the night hour is the standard preference "nightHour11" (21 when
// absent; 24 is midnight, read as 0).
//
// Where the locale data would not give the texts the app has always shown:
// - Clock texts have a plain space before AM/PM ("10:10 PM"), never the
//   narrow no-break space of current locale data (see DateFormatter).
// - A localised template keeps to the fields it asks for: when it has no
//   AM/PM field the locale's pattern loses its AM/PM marker too (hrMn is
//   "10:10", hrMnSec "10:10:05" in en_US), and a template written without
//   separators stays without them (HHmm is "2210", not "22:10").
// - Durations follow DateComponentsFormatter: dropped parts are truncated,
//   positional text with the default zero behaviour drops leading zero units
//   (formattedShortTimeInterval of 300 s is "5", of 27000 s "7:30"), and a
//   length that is not a finite number gives "".
class FormatTools {
public:
    explicit FormatTools(platform::Platform& platform);
    ~FormatTools();
    FormatTools(const FormatTools&) = delete;
    FormatTools& operator=(const FormatTools&) = delete;

    // Clock times.
    std::string hourMin(platform::Date date);
    std::string hrMn24(platform::Date date);
    std::string hrMn(platform::Date date);
    std::string hrMnSec(platform::Date date);
    std::string dayTime(platform::Date date);
    std::string dayTimeNoSuffix(platform::Date date);
    std::string timeAs24(platform::Date date);
    std::string HHmm(platform::Date date);
    long currentHour(platform::Date date);
    long currentDay(platform::Date date);
    long currentMin(platform::Date date);
    bool is24hr();

    // Durations (seconds).
    std::string formattedTimeInterval(double seconds);
    std::string formattedLongTimeInterval(double seconds);
    std::string formattedMinInterval(double seconds);
    std::string formattedShortTimeInterval(double seconds);
    std::string formattedShortHMSInterval(double seconds);
    std::string formattedLongMinInterval(double seconds);
    std::string formattedDaysInterval(double seconds);
    std::string shortTermForMIN();
    std::string shortTermForHRS();
    std::string shortTermForDAYS();

    // Day keys and machine-readable dates.
    std::string YYMMDD(platform::Date date);
    [[nodiscard]] std::optional<platform::Date> NSDateFromYYMMDD(const std::string& key);
    std::string CSVDate(platform::Date date);
    std::string CSVYMD(platform::Date date);
    std::string isoDateFromDate(platform::Date date);
    long currentYear();

    // Named display patterns.
    std::string monthDateYear(platform::Date date);
    std::string shortDate(platform::Date date);
    std::string shortDay(platform::Date date);
    std::string shortDayMonth(platform::Date date);
    std::string shortDayMonthYear(platform::Date date);
    std::string shortDayC(platform::Date date);
    std::string shortDayOnly(platform::Date date);
    std::string veryShortDayOnly(platform::Date date);
    std::string shortMD(platform::Date date);
    std::string shortMonth(platform::Date date);
    std::string longMonth(platform::Date date);
    std::string dateInMonth(platform::Date date);
    std::string yearOfDate(platform::Date date);
    std::string dayMonthDateTime(platform::Date date);
    std::string dayDateTime(platform::Date date);

    // Localised patterns (best pattern for a template).
    std::string dayDate(platform::Date date);
    std::string dayMonthDate(platform::Date date);
    std::string dayMonthDateYear(platform::Date date);
    std::string shorthhmmDDMMYY(platform::Date date);
    std::string ddmmyy(platform::Date date);
    std::string ddmm(platform::Date date);
    std::string ddmmm(platform::Date date);

    // Calendar arithmetic. Fields out of range roll over by calendar rules;
    // fields or dates beyond the calendar's range leave the date as it was
    // (and give weekday 0).
    platform::Date getMidnight();
    double intervalSinceMidnight(platform::Date date);
    platform::Date dateForDate(platform::Date date, long hour, long min);
    double epochIntervalForDate(platform::Date date, long hour, long min);
    platform::Date dateForDate(platform::Date date, long year, long month, long day, long hour, long min);
    platform::Date startDateForDaysAgo(long days, platform::Date date);
    platform::Date startOfMonthMonthsAgo(long months);
    std::string nameOfMonthMonthsAgo(long months);
    long getWeekdayNoForDate(platform::Date date);
    long dayNoOfDate(platform::Date date);
    // A negative night hour (a damaged preference) is used as it is: nowDate
    // and fromDateForSeed(0) then take the day before now as the base day,
    // as fromDateForSeed does for every other seed, and the hour rolls back
    // into the day before that (-1 is 23:00).
    platform::Date nowDate();
    long seedForDate(platform::Date date);
    platform::Date fromDateForSeed(long seed);
    long isDaylightSavings(platform::Date date);
    long getDaylightSavingsHourForDate(platform::Date date, long mode);

    // Text. whenString of a date that is not a finite instant is "".
    std::string whenString(platform::Date date);
    [[nodiscard]] std::optional<std::string> whenStringFB(const std::string& text);
    std::string sentenceCapitalizedString(const std::string& text);

private:
    platform::DateFormatter& inputFormatter();
    platform::DateFormatter& outputFormatter();
    platform::DateFormatter& HHFormatter();
    platform::DateComponentsFormatter& dateComponentsFormatter();
    platform::Calendar& cal();

    std::string formatPattern(std::string_view pattern, platform::Date date);
    std::string formatTemplate(std::string_view dateTemplate, platform::Date date);
    std::string localisedPattern(std::string_view dateTemplate);
    long nightHour();
    // The date's day fields with the time of day replaced.
    platform::Date dayAt(platform::Date date, long hour, long minute, long second);
    // The date's day fields in `calendar`, changed by `change`, as a date again
    // (out-of-range fields roll over); the date itself when ICU cannot.
    static platform::Date withDayFields(platform::Calendar& calendar, platform::Date date,
                                        const std::function<void(platform::DateComponents&)>& change);

    platform::Platform& platform_;
    std::unique_ptr<platform::DateFormatter> inputFormatter_;
    std::unique_ptr<platform::DateFormatter> outputFormatter_;
    std::unique_ptr<platform::DateFormatter> HHFormatter_;
    std::unique_ptr<platform::DateComponentsFormatter> dateComponentsFormatter_;
    std::unique_ptr<platform::Calendar> cal_;
    std::unique_ptr<platform::ISO8601DateFormatter> isoFormatter_;
};

}  // namespace velmorant::format
