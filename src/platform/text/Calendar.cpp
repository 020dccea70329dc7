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

Calendar::Calendar(const icu::TimeZone& timeZone, const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    calendar_ = std::make_unique<icu::GregorianCalendar>(timeZone.clone(), locale, status);
    calendar_->setLenient(true);
}

Calendar::Calendar(const TimeZone& timeZone, const Locale& locale) : Calendar(icuZone(timeZone), icuLocale(locale)) {}

Calendar::~Calendar() = default;

std::optional<Date> Calendar::dateByAddingDays(Date date, long days) const {
    if (!within(days, kDayLimit)) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    calendar_->setTime(date.icuMillis(), status);
    calendar_->add(UCAL_DATE, static_cast<int32_t>(days), status);
    UDate millis = calendar_->getTime(status);
    if (U_FAILURE(status)) return std::nullopt;
    return Date::fromIcuMillis(millis);
}

const icu::TimeZone& Calendar::timeZone() const { return calendar_->getTimeZone(); }

std::optional<DateComponents> Calendar::components(Date date) const {
    UErrorCode status = U_ZERO_ERROR;
    calendar_->setTime(date.icuMillis(), status);
    if (U_FAILURE(status)) return std::nullopt;
    DateComponents c;
    c.year = calendar_->get(UCAL_EXTENDED_YEAR, status);
    c.month = calendar_->get(UCAL_MONTH, status) + 1;
    c.day = calendar_->get(UCAL_DATE, status);
    c.hour = calendar_->get(UCAL_HOUR_OF_DAY, status);
    c.minute = calendar_->get(UCAL_MINUTE, status);
    c.second = calendar_->get(UCAL_SECOND, status);
    c.weekday = calendar_->get(UCAL_DAY_OF_WEEK, status);
    if (U_FAILURE(status)) return std::nullopt;
    return c;
}

std::optional<Date> Calendar::dateFromComponents(const DateComponents& c) const {
    if (!within(c.year, kYearLimit) || !within(c.month, kMonthLimit) || !within(c.day, kDayLimit) ||
        !within(c.hour, kTimeLimit) || !within(c.minute, kTimeLimit) || !within(c.second, kTimeLimit))
        return std::nullopt;
    calendar_->clear();
    calendar_->set(UCAL_EXTENDED_YEAR, static_cast<int32_t>(c.year));
    calendar_->set(UCAL_MONTH, static_cast<int32_t>(c.month) - 1);
    calendar_->set(UCAL_DATE, static_cast<int32_t>(c.day));
    calendar_->set(UCAL_HOUR_OF_DAY, static_cast<int32_t>(c.hour));
    calendar_->set(UCAL_MINUTE, static_cast<int32_t>(c.minute));
    calendar_->set(UCAL_SECOND, static_cast<int32_t>(c.second));
    UErrorCode status = U_ZERO_ERROR;
    UDate millis = calendar_->getTime(status);
    if (U_FAILURE(status)) return std::nullopt;
    return Date::fromIcuMillis(millis);
}

}  // namespace velmorant::platform
