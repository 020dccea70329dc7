#pragma once

#include "platform/core/Date.h"
#include "platform/text/TimeZone.h"

#include <optional>
#include <string>
#include <string_view>

namespace velmorant::platform {

// The phone's ISO 8601 date formatter on ICU (Gregorian calendar, ISO weeks,
// POSIX digits). Options are the phone's bit values; a new formatter writes
// internet date-times in UTC ("2024-03-05T21:10:00Z").
class ISO8601DateFormatter {
public:
    enum Options : unsigned {
        WithYear = 1u << 0,
        WithMonth = 1u << 1,
        WithWeekOfYear = 1u << 2,
        WithDay = 1u << 4,
        WithTime = 1u << 5,
        WithTimeZone = 1u << 6,
        WithSpaceBetweenDateAndTime = 1u << 7,
        WithDashSeparatorInDate = 1u << 8,
        WithColonSeparatorInTime = 1u << 9,
        WithColonSeparatorInTimeZone = 1u << 10,
        WithFractionalSeconds = 1u << 11,
        WithFullDate = WithYear | WithMonth | WithDay | WithDashSeparatorInDate,
        WithFullTime = WithTime | WithColonSeparatorInTime | WithTimeZone | WithColonSeparatorInTimeZone,
        WithInternetDateTime = WithFullDate | WithFullTime,
    };

    ISO8601DateFormatter();
    ~ISO8601DateFormatter();
    ISO8601DateFormatter(const ISO8601DateFormatter&) = delete;
    ISO8601DateFormatter& operator=(const ISO8601DateFormatter&) = delete;

    const TimeZone& timeZone() const { return timeZone_; }
    void setTimeZone(const TimeZone& timeZone) { timeZone_ = timeZone; }
    unsigned formatOptions() const { return options_; }
    void setFormatOptions(unsigned options) { options_ = options; }

    std::string stringFromDate(Date date) const;
    // None when the text is not in the configured form.
    std::optional<Date> dateFromString(std::string_view text) const;

    // One-off formatting in the given zone, as the phone's class method does.
    static std::string stringFromDate(Date date, const TimeZone& timeZone, unsigned options);

private:
    TimeZone timeZone_;
    unsigned options_ = WithInternetDateTime;
};

}  // namespace velmorant::platform
