#include "IsoDate.h"

#include "platform/text/detail/IcuStrings.h"

#include <unicode/smpdtfmt.h>

#include <memory>

namespace velmorant::cli {

std::optional<platform::Date> parseIsoDate(std::string_view text, const icu::TimeZone& zone) {
    static constexpr const char* kPatterns[] = {
        "yyyy-MM-dd'T'HH:mm:ss.SSSXXX", "yyyy-MM-dd'T'HH:mm:ssXXX", "yyyy-MM-dd'T'HH:mmXXX",
        "yyyy-MM-dd'T'HH:mm:ss.SSS",    "yyyy-MM-dd'T'HH:mm:ss",    "yyyy-MM-dd'T'HH:mm",
        "yyyy-MM-dd",
    };
    icu::UnicodeString input = platform::fromUtf8(text);
    for (const char* pattern : kPatterns) {
        UErrorCode status = U_ZERO_ERROR;
        icu::SimpleDateFormat format(icu::UnicodeString(pattern), icu::Locale("en_US_POSIX"), status);
        if (U_FAILURE(status)) continue;
        format.setLenient(false);
        format.setTimeZone(zone);
        icu::ParsePosition position(0);
        UDate millis = format.parse(input, position);
        if (position.getErrorIndex() < 0 && position.getIndex() == input.length())
            return platform::Date::fromIcuMillis(millis);
    }
    return std::nullopt;
}

}  // namespace velmorant::cli
