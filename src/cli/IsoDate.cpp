#include "IsoDate.h"

#include "platform/text/DateFormatter.h"

namespace velmorant::cli {

std::optional<platform::Date> parseIsoDate(std::string_view text, const platform::TimeZone& zone) {
    static constexpr const char* kPatterns[] = {
        "yyyy-MM-dd'T'HH:mm:ss.SSSXXX", "yyyy-MM-dd'T'HH:mm:ssXXX", "yyyy-MM-dd'T'HH:mmXXX",
        "yyyy-MM-dd'T'HH:mm:ss.SSS",    "yyyy-MM-dd'T'HH:mm:ss",    "yyyy-MM-dd'T'HH:mm",
        "yyyy-MM-dd",
    };
    platform::DateFormatter format(platform::Locale::posix(), zone);
    for (const char* pattern : kPatterns) {
        format.setDateFormat(pattern);
        if (auto date = format.dateFromString(text)) return date;
    }
    return std::nullopt;
}

}  // namespace velmorant::cli
