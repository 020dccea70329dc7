#include "platform/text/DateFormatter.h"

#include "platform/text/detail/IcuHandles.h"
#include "platform/text/detail/IcuStrings.h"

#include <unicode/calendar.h>
#include <unicode/dtptngen.h>
#include <unicode/smpdtfmt.h>

#include <map>
#include <mutex>

namespace velmorant::platform {
namespace {

// Building a pattern generator reads a good deal of locale data, so one per
// locale is kept for the life of the process. ICU's generator is not const
// when asked, hence the lock.
std::string bestPattern(const icu::UnicodeString& skeleton, const icu::Locale& locale) {
    static std::mutex mutex;
    static std::map<std::string, std::unique_ptr<icu::DateTimePatternGenerator>> generators;
    std::lock_guard lock(mutex);
    auto& generator = generators[locale.getName()];
    UErrorCode status = U_ZERO_ERROR;
    if (!generator) {
        generator.reset(icu::DateTimePatternGenerator::createInstance(locale, status));
        if (U_FAILURE(status)) {
            generator.reset();
            return toUtf8(skeleton);
        }
    }
    icu::UnicodeString pattern = generator->getBestPattern(skeleton, status);
    return U_FAILURE(status) ? toUtf8(skeleton) : toUtf8(pattern);
}

}  // namespace

struct DateFormatter::Impl {
    Impl(const icu::UnicodeString& pattern, const icu::Locale& locale, UErrorCode& status)
        : format(pattern, locale, status) {}
    icu::SimpleDateFormat format;
};

DateFormatter::DateFormatter(const Locale& locale, const TimeZone& timeZone)
    : locale_(locale), timeZone_(timeZone) {}

DateFormatter::~DateFormatter() = default;

DateFormatter::Impl& DateFormatter::formatter() {
    if (formatter_) return *formatter_;
    icu::Locale locale = icuLocale(locale_);
    UErrorCode status = U_ZERO_ERROR;
    if (!calendar_.empty()) locale.setKeywordValue("calendar", calendar_.c_str(), status);
    status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(icuZone(timeZone_).clone(), locale, status));
    // The formatter takes the symbols of the locale with its calendar named, as adopting the calendar
    // would: named from the start, the symbols are read once, not once for each form of the locale.
    status = U_ZERO_ERROR;
    if (calendar) locale.setKeywordValue("calendar", calendar->getType(), status);
    status = U_ZERO_ERROR;
    formatter_ = std::make_unique<Impl>(fromUtf8(pattern_), locale, status);
    if (U_FAILURE(status)) {
        // A pattern ICU rejects formats nothing; start from an empty one.
        status = U_ZERO_ERROR;
        formatter_ = std::make_unique<Impl>(icu::UnicodeString(), locale, status);
    }
    formatter_->format.adoptCalendar(calendar.release());
    formatter_->format.setLenient(false);
    return *formatter_;
}

void DateFormatter::setDateFormat(std::string_view pattern) {
    pattern_ = std::string(pattern);
    if (formatter_) formatter_->format.applyPattern(fromUtf8(pattern_));
}

void DateFormatter::setLocale(const Locale& locale) {
    locale_ = locale;
    formatter_.reset();
}

void DateFormatter::setTimeZone(const TimeZone& timeZone) {
    timeZone_ = timeZone;
    if (formatter_) formatter_->format.setTimeZone(icuZone(timeZone_));
}

void DateFormatter::setCalendar(std::string_view identifier) {
    calendar_ = std::string(identifier);
    formatter_.reset();
}

std::string DateFormatter::stringFromDate(Date date) {
    icu::UnicodeString text;
    formatter().format.format(date.icuMillis(), text);
    text.findAndReplace(icu::UnicodeString(static_cast<UChar32>(0x202F)), icu::UnicodeString(u' '));
    return toUtf8(text);
}

std::optional<Date> DateFormatter::dateFromString(std::string_view text) {
    icu::UnicodeString source = fromUtf8(text);
    icu::ParsePosition position(0);
    UDate millis = formatter().format.parse(source, position);
    if (position.getErrorIndex() >= 0 || position.getIndex() == 0 || position.getIndex() != source.length())
        return std::nullopt;
    return Date::fromIcuMillis(millis);
}

std::string DateFormatter::dateFormatFromTemplate(std::string_view dateTemplate, const Locale& locale) {
    return bestPattern(fromUtf8(dateTemplate), icuLocale(locale));
}

}  // namespace velmorant::platform
