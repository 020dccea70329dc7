#include "format/FormatTools.h"

#include "platform/text/Calendar.h"
#include "platform/text/DatePattern.h"
#include "platform/text/DateComponentsFormatter.h"
#include "platform/text/DateFormatter.h"
#include "platform/text/ISO8601DateFormatter.h"
#include "platform/text/Text.h"
#include "platform/core/Value.h"

#include <unicode/utf8.h>

#include <climits>
#include <cmath>
#include <vector>

namespace velmorant::format {

using platform::Date;
using platform::DateComponents;
using Durations = platform::DateComponentsFormatter;
using Style = platform::DateComponentsFormatter::UnitsStyle;

namespace {

constexpr long kDefaultNightHour = 21;
constexpr double kSecondsPerDay = 86400.0;

// a - b, held within the range of long.
long saturatingMinus(long a, long b) {
    long out;
    if (__builtin_sub_overflow(a, b, &out)) return b > 0 ? LONG_MIN : LONG_MAX;
    return out;
}

std::string firstCharacter(const std::string& text, std::string* rest = nullptr) {
    if (text.empty()) {
        if (rest) rest->clear();
        return {};
    }
    int32_t i = 0;
    U8_FWD_1(reinterpret_cast<const uint8_t*>(text.data()), i, static_cast<int32_t>(text.size()));
    if (rest) *rest = text.substr(static_cast<std::size_t>(i));
    return text.substr(0, static_cast<std::size_t>(i));
}

std::string formatDuration(Durations& formatter, double seconds, long maximumUnits, Style style,
                           std::optional<unsigned> zeroBehaviour, unsigned allowedUnits) {
    formatter.setMaximumUnitCount(maximumUnits);
    formatter.setUnitsStyle(style);
    if (zeroBehaviour) formatter.setZeroFormattingBehavior(*zeroBehaviour);
    formatter.setAllowedUnits(allowedUnits);
    return formatter.stringFromTimeInterval(seconds).value_or("");
}

// The locale's short word for a unit: a fixed length formatted, its digit and
// the spaces taken out.
std::string unitWord(Durations& formatter, double seconds, unsigned unit, std::string_view digit) {
    std::string text = formatDuration(formatter, seconds, 1, Style::Short, Durations::Pad, unit);
    text = platform::stringByReplacing(text, digit, "");
    return platform::stringByReplacing(text, " ", "");
}

}  // namespace

FormatTools::FormatTools(platform::Platform& platform) : platform_(platform) {}

FormatTools::~FormatTools() = default;

// ---- Members, created on first use ----

platform::DateFormatter& FormatTools::inputFormatter() {
    if (!inputFormatter_)
        inputFormatter_ = std::make_unique<platform::DateFormatter>(platform_.locale(), platform_.timeZone());
    return *inputFormatter_;
}

platform::DateFormatter& FormatTools::outputFormatter() {
    if (!outputFormatter_)
        outputFormatter_ = std::make_unique<platform::DateFormatter>(platform_.locale(), platform_.timeZone());
    return *outputFormatter_;
}

platform::DateFormatter& FormatTools::HHFormatter() {
    // Fixed locale: the hour and day must read back as ASCII digits whatever the user's locale.
    if (!HHFormatter_)
        HHFormatter_ = std::make_unique<platform::DateFormatter>(platform::Locale::posix(), platform_.timeZone());
    return *HHFormatter_;
}

platform::DateComponentsFormatter& FormatTools::dateComponentsFormatter() {
    if (!dateComponentsFormatter_)
        dateComponentsFormatter_ = std::make_unique<platform::DateComponentsFormatter>(platform_.locale());
    return *dateComponentsFormatter_;
}

platform::Calendar& FormatTools::cal() {
    if (!cal_) cal_ = std::make_unique<platform::Calendar>(platform_.timeZone(), platform_.locale());
    return *cal_;
}

// ---- Helpers ----

std::string FormatTools::formatPattern(std::string_view pattern, Date date) {
    outputFormatter().setDateFormat(pattern);
    return outputFormatter().stringFromDate(date);
}

std::string FormatTools::localisedPattern(std::string_view dateTemplate) {
    return platform::patternKeepingToTemplate(platform::DateFormatter::dateFormatFromTemplate(dateTemplate, platform_.locale()),
                          dateTemplate);
}

std::string FormatTools::formatTemplate(std::string_view dateTemplate, Date date) {
    return formatPattern(localisedPattern(dateTemplate), date);
}

long FormatTools::nightHour() {
    platform::Value value = platform_.standardUserDefaults()->objectForKey("nightHour11");
    if (value.isNone()) return kDefaultNightHour;
    const long hour = static_cast<long>(value.integerValue());
    // 24:00 is the midnight hour 0 names. Read as hour 24 of the day before,
    // it would start the night a day late at the end of a 25-hour day.
    return hour == 24 ? 0 : hour;
}

Date FormatTools::withDayFields(platform::Calendar& calendar, Date date,
                                const std::function<void(DateComponents&)>& change) {
    std::optional<DateComponents> fields = calendar.components(date);
    if (!fields) return date;
    change(*fields);
    return calendar.dateFromComponents(*fields).value_or(date);
}

Date FormatTools::dayAt(Date date, long hour, long minute, long second) {
    return withDayFields(cal(), date, [&](DateComponents& c) {
        c.hour = hour;
        c.minute = minute;
        c.second = second;
    });
}

// ---- Clock times ----

std::string FormatTools::hourMin(Date date) { return formatPattern("h:mma", date); }

std::string FormatTools::hrMn24(Date date) { return formatPattern("H:mm", date); }

std::string FormatTools::hrMn(Date date) { return formatTemplate(is24hr() ? "HH:mm" : "h:mm", date); }

std::string FormatTools::hrMnSec(Date date) { return formatTemplate(is24hr() ? "HH:mm:ss" : "h:mm:ss", date); }

std::string FormatTools::dayTime(Date date) { return formatTemplate(is24hr() ? "HH:mm" : "h:mma", date); }

std::string FormatTools::dayTimeNoSuffix(Date date) { return formatTemplate(is24hr() ? "HH:mm" : "H:mm", date); }

std::string FormatTools::timeAs24(Date date) { return formatTemplate("HH:mm", date); }

std::string FormatTools::HHmm(Date date) { return formatTemplate("HHmm", date); }

long FormatTools::currentHour(Date date) {
    HHFormatter().setDateFormat("HH");
    return static_cast<long>(platform::leadingInteger(HHFormatter().stringFromDate(date)));
}

long FormatTools::currentDay(Date date) {
    HHFormatter().setDateFormat("dd");
    return static_cast<long>(platform::leadingInteger(HHFormatter().stringFromDate(date)));
}

long FormatTools::currentMin(Date date) {
    return static_cast<long>(platform::leadingInteger(formatPattern("mm", date)));
}

bool FormatTools::is24hr() {
    return platform::DateFormatter::dateFormatFromTemplate("j", platform_.locale()).find('a') == std::string::npos;
}

// ---- Durations ----

std::string FormatTools::formattedTimeInterval(double seconds) {
    return formatDuration(dateComponentsFormatter(), seconds, 2, Style::Abbreviated, Durations::Pad,
                          Durations::Hour | Durations::Minute);
}

std::string FormatTools::formattedLongTimeInterval(double seconds) {
    return formatDuration(dateComponentsFormatter(), seconds, 2, Style::Full, Durations::Pad,
                          Durations::Hour | Durations::Minute);
}

std::string FormatTools::formattedMinInterval(double seconds) {
    return formatDuration(dateComponentsFormatter(), seconds, 1, Style::Abbreviated, Durations::Pad,
                          Durations::Minute);
}

std::string FormatTools::formattedShortTimeInterval(double seconds) {
    return formatDuration(dateComponentsFormatter(), seconds, 2, Style::Positional, Durations::ZeroDefault,
                          Durations::Hour | Durations::Minute);
}

std::string FormatTools::formattedShortHMSInterval(double seconds) {
    return formatDuration(dateComponentsFormatter(), seconds, 3, Style::Positional, Durations::Pad,
                          Durations::Hour | Durations::Minute | Durations::Second);
}

std::string FormatTools::formattedLongMinInterval(double seconds) {
    return formatDuration(dateComponentsFormatter(), seconds, 1, Style::Short, Durations::Pad, Durations::Minute);
}

std::string FormatTools::formattedDaysInterval(double seconds) {
    // The zero behaviour is deliberately left as the previous duration call set it.
    return formatDuration(dateComponentsFormatter(), seconds, 2, Style::Abbreviated, std::nullopt,
                          Durations::WeekOfMonth | Durations::Day);
}

std::string FormatTools::shortTermForMIN() { return unitWord(dateComponentsFormatter(), 61, Durations::Minute, "1"); }

std::string FormatTools::shortTermForHRS() { return unitWord(dateComponentsFormatter(), 7202, Durations::Hour, "2"); }

std::string FormatTools::shortTermForDAYS() {
    return unitWord(dateComponentsFormatter(), 172802, Durations::Day, "2");
}

// ---- Day keys and machine-readable dates ----

std::string FormatTools::YYMMDD(Date date) { return formatPattern("yyyyMMdd", date); }

std::optional<Date> FormatTools::NSDateFromYYMMDD(const std::string& key) {
    outputFormatter().setDateFormat("yyyyMMdd");
    return outputFormatter().dateFromString(key);
}

std::string FormatTools::CSVDate(Date date) { return formatPattern("yyyy-MM-dd HH:mm:ss", date); }

std::string FormatTools::CSVYMD(Date date) { return formatPattern("yyyy-MM-dd", date); }

std::string FormatTools::isoDateFromDate(Date date) {
    // The member is made as the app always has, but the text comes from the
    // one-off form, which writes in the device's zone rather than UTC.
    if (!isoFormatter_) isoFormatter_ = std::make_unique<platform::ISO8601DateFormatter>();
    return platform::ISO8601DateFormatter::stringFromDate(date, platform_.timeZone(),
                                                          platform::ISO8601DateFormatter::WithInternetDateTime);
}

long FormatTools::currentYear() {
    return static_cast<long>(platform::leadingInteger(formatPattern("yyyy", platform_.now())));
}

// ---- Named display patterns ----

std::string FormatTools::monthDateYear(Date date) { return formatPattern("MMMM d, yyyy", date); }

std::string FormatTools::shortDate(Date date) { return formatPattern("EEEE", date); }

std::string FormatTools::shortDay(Date date) { return formatPattern("EEE d", date); }

std::string FormatTools::shortDayMonth(Date date) { return formatPattern("EEE MMM d", date); }

std::string FormatTools::shortDayMonthYear(Date date) {
    const auto& languages = platform_.preferredLanguages();
    const bool korean = !languages.empty() && languages.front().find("ko") != std::string::npos;
    return formatPattern(korean ? "YYYY년 M월 d일 E요일" : "EEE MMM d, YYYY", date);
}

std::string FormatTools::shortDayC(Date date) { return formatPattern("EEEd", date); }

std::string FormatTools::shortDayOnly(Date date) { return formatPattern("EEE", date); }

std::string FormatTools::veryShortDayOnly(Date date) {
    return platform::uppercaseString(firstCharacter(formatPattern("E", date)));
}

std::string FormatTools::shortMD(Date date) { return formatPattern("MMM d", date); }

std::string FormatTools::shortMonth(Date date) { return formatPattern("MMM", date); }

std::string FormatTools::longMonth(Date date) { return formatPattern("MMMM", date); }

std::string FormatTools::dateInMonth(Date date) { return formatPattern("d", date); }

std::string FormatTools::yearOfDate(Date date) { return formatPattern("YYYY", date); }

std::string FormatTools::dayMonthDateTime(Date date) { return formatPattern("h:mma EEEE, MMMM d", date); }

std::string FormatTools::dayDateTime(Date date) { return formatPattern("h:mma EEEE", date); }

// ---- Localised patterns ----

std::string FormatTools::dayDate(Date date) { return formatTemplate("EEEE d", date); }

std::string FormatTools::dayMonthDate(Date date) { return formatTemplate("EEEE, MMMM d", date); }

std::string FormatTools::dayMonthDateYear(Date date) { return formatTemplate("EEEE, MMM d yyyy", date); }

std::string FormatTools::shorthhmmDDMMYY(Date date) { return formatTemplate("h:mma EEE d/M/yy", date); }

std::string FormatTools::ddmmyy(Date date) { return formatTemplate("d/M/yy", date); }

std::string FormatTools::ddmm(Date date) { return formatTemplate("d M", date); }

std::string FormatTools::ddmmm(Date date) { return formatTemplate("d MMM", date); }

// ---- Calendar arithmetic ----

Date FormatTools::getMidnight() { return dayAt(platform_.now(), 0, 0, 0); }

double FormatTools::intervalSinceMidnight(Date date) { return date.timeIntervalSinceDate(dayAt(date, 0, 0, 0)); }

Date FormatTools::dateForDate(Date date, long hour, long min) { return dayAt(date, hour, min, 0); }

double FormatTools::epochIntervalForDate(Date date, long hour, long min) {
    return dateForDate(date, hour, min).timeIntervalSince1970();
}

Date FormatTools::dateForDate(Date date, long year, long month, long day, long hour, long min) {
    return withDayFields(cal(), date, [&](DateComponents& c) {
        c.year = year;
        c.month = month;
        c.day = day;
        c.minute = min;
        c.hour = hour;
        c.second = 0;
    });
}

Date FormatTools::startDateForDaysAgo(long days, Date date) {
    return withDayFields(cal(), date, [&](DateComponents& c) {
        c.day = saturatingMinus(c.day, days);
        c.hour = 3;
        c.minute = 0;
        c.second = 0;
    });
}

Date FormatTools::startOfMonthMonthsAgo(long months) {
    return withDayFields(cal(), platform_.now(), [&](DateComponents& c) {
        c.day = 1;
        c.month = saturatingMinus(c.month, months);
        c.hour = 3;
        c.minute = 0;
        c.second = 0;
    });
}

std::string FormatTools::nameOfMonthMonthsAgo(long months) { return shortMonth(startOfMonthMonthsAgo(months)); }

long FormatTools::getWeekdayNoForDate(Date date) {
    std::optional<DateComponents> fields = cal().components(date);
    return fields ? fields->weekday : 0;
}

long FormatTools::dayNoOfDate(Date date) { return getWeekdayNoForDate(date); }

Date FormatTools::nowDate() {
    const long nh = nightHour();
    const Date now = platform_.now();
    const long h = currentHour(now);
    // Before the night hour the current night began yesterday evening.
    const Date base = (nh >= 1 && h < nh) || nh < 0 ? now.dateByAddingTimeInterval(-kSecondsPerDay) : now;
    return dayAt(base, nh, 0, 0).dateByAddingTimeInterval(43200);
}

long FormatTools::seedForDate(Date date) {
    const Date a = dayAt(date, 4, 0, 0);
    const Date b = dayAt(nowDate(), 4, 0, 0);
    // Single precision, and a fraction over a tenth counts as a further
    // night, so 23- and 25-hour days still count as one.
    const float f = static_cast<float>(b.timeIntervalSinceDate(a) / kSecondsPerDay);
    if (!std::isfinite(f)) return 0;
    const float frac = f - std::trunc(f);
    const float g = frac > 0.1 ? f + 1 : f;
    if (std::fabs(g) >= 9.0e18f) return g > 0 ? LONG_MIN : LONG_MAX;
    return static_cast<long>(std::trunc(-g));
}

Date FormatTools::fromDateForSeed(long seed) {
    const long nh = nightHour();
    const Date now = platform_.now();
    const long h = currentHour(now);
    const bool beganYesterday = (nh >= 1 && h < nh) || nh < 0;
    Date base = now;
    if (seed != 0) {
        if (beganYesterday) {
            const float offset = static_cast<float>(1 - static_cast<double>(seed)) * -86400.0f;
            base = now.dateByAddingTimeInterval(offset);
        } else {
            base = now.dateByAddingTimeInterval(static_cast<double>(seed) * kSecondsPerDay);
        }
    } else if (beganYesterday) {
        base = now.dateByAddingTimeInterval(-kSecondsPerDay);
    }
    platform::Calendar calendar(platform_.timeZone(), platform_.locale());
    return withDayFields(calendar, base, [&](DateComponents& c) {
        c.hour = nh;
        c.minute = 0;
        c.second = 0;
    });
}

long FormatTools::isDaylightSavings(Date date) {
    // A normal night has six hours between midnight and 06:00; allow six minutes either way.
    const double d = dayAt(date, 6, 0, 0).timeIntervalSinceDate(dayAt(date, 0, 0, 0));
    if (d < 21240) return -1;
    if (d > 21960) return 1;
    return 0;
}

long FormatTools::getDaylightSavingsHourForDate(Date date, long mode) {
    const Date midnight = dayAt(date, 0, 0, 0);
    auto daylightOffset = [&](long hour) {
        return platform_.timeZone().daylightSavingTimeOffset(midnight.dateByAddingTimeInterval(hour * 3600.0));
    };
    double previous = daylightOffset(0);
    for (long k = 1; k <= 5; ++k) {
        const double offset = daylightOffset(k);
        if (offset != previous) return mode == 1 ? k - 1 : k;
        previous = offset;
    }
    return 0;
}

// ---- Text ----

std::string FormatTools::whenString(Date date) {
    const double i = date.timeIntervalSinceDate(platform_.now());
    // The date branch's pattern is set whatever the branch taken.
    outputFormatter().setDateFormat(localisedPattern("h:mma E MMM d yyyy"));
    if (!std::isfinite(i)) return "";
    if (i > -60) return "just now";

    const float days = i < -86400 ? static_cast<float>(-i / 86400) : 0.0f;
    const float weeks = i < -604800 ? static_cast<float>(-i / 604800) : 0.0f;
    if (weeks > 4) return outputFormatter().stringFromDate(date);

    std::string fragment;
    if (weeks >= 2) {
        fragment = std::to_string(static_cast<long>(weeks)) + " weeks ";
    } else if (days >= 1) {
        const long whole = static_cast<long>(days);
        fragment = whole == 1 ? "a day " : std::to_string(whole) + " days ";
    } else if (const double hours = -i / 3600; i < -3600 && hours > 0) {
        fragment = hours < 2 ? "an hour " : std::to_string(static_cast<long>(hours)) + " hours ";
    } else {
        const double minutes = -i / 60;
        fragment = minutes < 2 ? "a minute " : std::to_string(static_cast<long>(minutes)) + " minutes ";
    }
    return fragment + "ago";
}

std::optional<std::string> FormatTools::whenStringFB(const std::string& text) {
    inputFormatter().setDateFormat("yyyy-MM-dd'T'HH:mm:ssZ");
    std::optional<Date> date = inputFormatter().dateFromString(text);
    if (!date) return std::nullopt;
    return whenString(*date);
}

std::string FormatTools::sentenceCapitalizedString(const std::string& text) {
    if (text.empty()) return "";
    std::string rest;
    const std::string first = firstCharacter(text, &rest);
    return platform::uppercaseString(first) + platform::lowercaseString(rest);
}

}  // namespace velmorant::format
