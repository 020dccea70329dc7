#include "platform/text/ISO8601DateFormatter.h"

#include "platform/text/detail/IcuHandles.h"
#include "platform/text/detail/IcuStrings.h"

#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

namespace velmorant::platform {
namespace {

// The ICU pattern for a set of options.
icu::UnicodeString patternFor(unsigned options) {
    using F = ISO8601DateFormatter;
    const bool dash = options & F::WithDashSeparatorInDate;
    const bool week = options & F::WithWeekOfYear;
    icu::UnicodeString date;
    auto addDatePart = [&](const char16_t* part) {
        if (dash && !date.isEmpty()) date += u'-';
        date += part;
    };
    if (options & F::WithYear) addDatePart(week ? u"YYYY" : u"yyyy");
    if (week) {
        addDatePart(u"'W'ww");
        if (options & F::WithDay) addDatePart(u"ee");
    } else {
        if (options & F::WithMonth) addDatePart(u"MM");
        if (options & F::WithDay) addDatePart((options & F::WithMonth) ? u"dd" : u"DDD");
    }

    icu::UnicodeString time;
    if (options & F::WithTime) {
        time = (options & F::WithColonSeparatorInTime) ? u"HH:mm:ss" : u"HHmmss";
        if (options & F::WithFractionalSeconds) time += u".SSS";
    }
    if (options & F::WithTimeZone) time += (options & F::WithColonSeparatorInTimeZone) ? u"XXX" : u"XX";

    if (date.isEmpty()) return time;
    if (time.isEmpty()) return date;
    return date + ((options & F::WithSpaceBetweenDateAndTime) ? u" " : u"'T'") + time;
}

std::unique_ptr<icu::SimpleDateFormat> makeFormat(const icu::TimeZone& timeZone, unsigned options) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale posix("en_US_POSIX");
    auto format = std::make_unique<icu::SimpleDateFormat>(patternFor(options), posix, status);
    if (U_FAILURE(status)) return nullptr;
    auto calendar = std::make_unique<icu::GregorianCalendar>(timeZone.clone(), posix, status);
    // ISO weeks start on Monday; week 1 holds the year's first Thursday.
    calendar->setFirstDayOfWeek(UCAL_MONDAY);
    calendar->setMinimalDaysInFirstWeek(4);
    format->adoptCalendar(calendar.release());
    format->setLenient(false);
    return format;
}

}  // namespace

ISO8601DateFormatter::ISO8601DateFormatter() : timeZone_(*TimeZone::named("GMT")) {}

ISO8601DateFormatter::~ISO8601DateFormatter() = default;

std::string ISO8601DateFormatter::stringFromDate(Date date) const {
    return stringFromDate(date, timeZone_, options_);
}

std::string ISO8601DateFormatter::stringFromDate(Date date, const TimeZone& timeZone, unsigned options) {
    auto format = makeFormat(icuZone(timeZone), options);
    if (!format) return {};
    icu::UnicodeString text;
    format->format(date.icuMillis(), text);
    std::string out;
    text.toUTF8String(out);
    return out;
}

std::optional<Date> ISO8601DateFormatter::dateFromString(std::string_view text) const {
    auto format = makeFormat(icuZone(timeZone_), options_);
    if (!format) return std::nullopt;
    icu::UnicodeString source =
        fromUtf8(text);
    icu::ParsePosition position(0);
    UDate millis = format->parse(source, position);
    if (position.getErrorIndex() >= 0 || position.getIndex() == 0 || position.getIndex() != source.length())
        return std::nullopt;
    return Date::fromIcuMillis(millis);
}

}  // namespace velmorant::platform
