#pragma once

#include "platform/core/Date.h"
#include "platform/text/Locale.h"
#include "platform/text/TimeZone.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmorant::platform {

// The phone's date formatter on ICU's SimpleDateFormat: a pattern, a locale
// (whose calendar and digits it uses), a time zone. Locale and zone are always
// given explicitly; ICU's process-wide defaults are never read or changed.
//
// Formatted text has every U+202F (narrow no-break space, which CLDR 42 puts
// before AM/PM) replaced by a plain space, because the phone's clock texts
// read "10:10 PM".
//
// Parsing is strict, like the phone's non-lenient formatter: every field must
// be valid for the calendar and the whole string must be used.
class DateFormatter {
public:
    DateFormatter(const Locale& locale, const TimeZone& timeZone);
    ~DateFormatter();
    DateFormatter(const DateFormatter&) = delete;
    DateFormatter& operator=(const DateFormatter&) = delete;

    void setDateFormat(std::string_view pattern);
    const std::string& dateFormat() const { return pattern_; }

    void setLocale(const Locale& locale);
    const Locale& locale() const { return locale_; }
    void setTimeZone(const TimeZone& timeZone);
    const TimeZone& timeZone() const { return timeZone_; }
    // A calendar by CLDR name ("gregorian", "buddhist", ...); empty returns to the locale's own.
    void setCalendar(std::string_view identifier);
    const std::string& calendar() const { return calendar_; }

    std::string stringFromDate(Date date);
    // None when the text does not match the pattern.
    std::optional<Date> dateFromString(std::string_view text);

    // The locale's best pattern for a template of pattern letters ("h:mma" ->
    // "h:mm a" in en_US). Options are those of the phone's call with 0.
    static std::string dateFormatFromTemplate(std::string_view dateTemplate, const Locale& locale);

private:
    // ICU's formatter, made when first used and again after the locale or calendar changes.
    struct Impl;
    Impl& formatter();

    Locale locale_;
    TimeZone timeZone_;
    std::string calendar_;
    std::string pattern_;
    std::unique_ptr<Impl> formatter_;
};

}  // namespace velmorant::platform
