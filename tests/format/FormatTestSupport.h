#pragma once

#include "format/FormatTools.h"
#include "platform/services/Platform.h"

#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmorant::testing {

// A wall-clock time in a zone, read by ICU directly so expectations do not
// depend on the calendar code under test.
inline platform::Date localDate(const char* zone, int year, int month, int day, int hour = 0, int minute = 0,
                                int second = 0) {
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar calendar(icu::TimeZone::createTimeZone(zone), icu::Locale("en_US_POSIX"), status);
    calendar.clear();
    calendar.set(year, month - 1, day, hour, minute, second);
    return platform::Date::fromIcuMillis(calendar.getTime(status));
}

struct Setup {
    std::string locale = "en_US";
    std::string zone = "America/New_York";
    platform::Date now = localDate("America/New_York", 2024, 3, 5, 22, 10, 5);
    std::optional<long> nightHour;  // none leaves "nightHour11" unset
    std::vector<std::string> languages;
};

// A platform and a FormatTools on it; the platform is kept alive with the tools.
struct Fixture {
    explicit Fixture(const Setup& setup)
        : platform(std::make_unique<platform::Platform>(platform::PlatformOptions{
              .now = setup.now, .timeZoneId = setup.zone, .localeId = setup.locale,
              .preferredLanguages = setup.languages})),
          tools(std::make_unique<format::FormatTools>(*platform)) {
        if (setup.nightHour) platform->standardUserDefaults()->setObject(*setup.nightHour, "nightHour11");
    }
    std::unique_ptr<platform::Platform> platform;
    std::unique_ptr<format::FormatTools> tools;
};

}  // namespace velmorant::testing
