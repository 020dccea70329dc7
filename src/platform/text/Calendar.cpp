#include "platform/text/Calendar.h"

#include "platform/text/detail/IcuHandles.h"

#include <unicode/gregocal.h>

namespace velmorant::platform {
namespace {

// Bounds that keep any mix of fields well inside the span ICU's calendar can
// count (about 5.8 million years each way); ICU does not report every
// overflow, so larger requests are refused here.
constexpr long kYearLimit = 1'000'000;
constexpr long kMonthLimit = 12 * kYearLimit;
constexpr long kDayLimit = 366 * kYearLimit;
constexpr long kTimeLimit = 1'000'000'000;

bool within(long value, long limit) { return value >= -limit && value <= limit; }

}  // namespace

// Held by pointer, which keeps ICU out of the header and lets the const
// members call ICU's getters (they compute fields, so they are not const).
struct Calendar::Impl {
    Impl(const icu::TimeZone& timeZone, const icu::Locale& locale, UErrorCode& status)
        : calendar(timeZone.clone(), locale, status) {}
    icu::GregorianCalendar calendar;
};

Calendar::Calendar(const TimeZone& timeZone, const Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    impl_ = std::make_unique<Impl>(icuZone(timeZone), icuLocale(locale), status);
    impl_->calendar.setLenient(true);
}

Calendar::~Calendar() = default;

std::optional<Date> Calendar::dateByAddingDays(Date date, long days) const {
    if (!within(days, kDayLimit)) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    impl_->calendar.setTime(date.icuMillis(), status);
    impl_->calendar.add(UCAL_DATE, static_cast<int32_t>(days), status);
    UDate millis = impl_->calendar.getTime(status);
    if (U_FAILURE(status)) return std::nullopt;
    return Date::fromIcuMillis(millis);
}

std::optional<DateComponents> Calendar::components(Date date) const {
    UErrorCode status = U_ZERO_ERROR;
    impl_->calendar.setTime(date.icuMillis(), status);
    if (U_FAILURE(status)) return std::nullopt;
    DateComponents c;
    c.year = impl_->calendar.get(UCAL_EXTENDED_YEAR, status);
    c.month = impl_->calendar.get(UCAL_MONTH, status) + 1;
    c.day = impl_->calendar.get(UCAL_DATE, status);
    c.hour = impl_->calendar.get(UCAL_HOUR_OF_DAY, status);
    c.minute = impl_->calendar.get(UCAL_MINUTE, status);
    c.second = impl_->calendar.get(UCAL_SECOND, status);
    c.weekday = impl_->calendar.get(UCAL_DAY_OF_WEEK, status);
    if (U_FAILURE(status)) return std::nullopt;
    return c;
}

std::optional<Date> Calendar::dateFromComponents(const DateComponents& c) const {
    if (!within(c.year, kYearLimit) || !within(c.month, kMonthLimit) || !within(c.day, kDayLimit) ||
        !within(c.hour, kTimeLimit) || !within(c.minute, kTimeLimit) || !within(c.second, kTimeLimit))
        return std::nullopt;
    impl_->calendar.clear();
    impl_->calendar.set(UCAL_EXTENDED_YEAR, static_cast<int32_t>(c.year));
    impl_->calendar.set(UCAL_MONTH, static_cast<int32_t>(c.month) - 1);
    impl_->calendar.set(UCAL_DATE, static_cast<int32_t>(c.day));
    impl_->calendar.set(UCAL_HOUR_OF_DAY, static_cast<int32_t>(c.hour));
    impl_->calendar.set(UCAL_MINUTE, static_cast<int32_t>(c.minute));
    impl_->calendar.set(UCAL_SECOND, static_cast<int32_t>(c.second));
    UErrorCode status = U_ZERO_ERROR;
    UDate millis = impl_->calendar.getTime(status);
    if (U_FAILURE(status)) return std::nullopt;
    return Date::fromIcuMillis(millis);
}

}  // namespace velmorant::platform
