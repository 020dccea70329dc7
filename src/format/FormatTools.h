#pragma once

#include "platform/Date.h"
#include "platform/Platform.h"

#include <memory>
#include <optional>
#include <string>

namespace velmorant::platform {
class DateFormatter;
class DateComponentsFormatter;
class Calendar;
class ISO8601DateFormatter;
}  // namespace velmorant::platform

namespace velmorant {

// Dates, day keys, clock times and durations in the user's locale and time
// zone. The formatters are created on first use and reconfigured by every
// call, so one object serves one thread at a time.
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
    std::optional<platform::Date> NSDateFromYYMMDD(const std::string& key);
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

    // Calendar arithmetic.
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
    platform::Date nowDate();
    long seedForDate(platform::Date date);
    platform::Date fromDateForSeed(long seed);
    long isDaylightSavings(platform::Date date);
    long getDaylightSavingsHourForDate(platform::Date date, long mode);

    // Text.
    std::string whenString(platform::Date date);
    std::optional<std::string> whenStringFB(const std::string& text);
    std::string sentenceCapitalizedString(const std::string& text);

private:
    platform::Platform& platform_;
    std::unique_ptr<platform::DateFormatter> inputFormatter_;
    std::unique_ptr<platform::DateFormatter> outputFormatter_;
    std::unique_ptr<platform::DateFormatter> HHFormatter_;
    std::unique_ptr<platform::DateComponentsFormatter> dateComponentsFormatter_;
    std::unique_ptr<platform::Calendar> cal_;
    std::unique_ptr<platform::ISO8601DateFormatter> isoFormatter_;
};

}  // namespace velmorant
