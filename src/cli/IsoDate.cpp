#include "IsoDate.h"

#include "platform/text/DateFormatter.h"

#include <array>
#include <memory>

namespace velmorant::cli {
namespace {

constexpr std::array<const char*, 7> kPatterns = {
    "yyyy-MM-dd'T'HH:mm:ss.SSSXXX", "yyyy-MM-dd'T'HH:mm:ssXXX", "yyyy-MM-dd'T'HH:mmXXX",
    "yyyy-MM-dd'T'HH:mm:ss.SSS",    "yyyy-MM-dd'T'HH:mm:ss",    "yyyy-MM-dd'T'HH:mm",
    "yyyy-MM-dd",
};

// One formatter per pattern, made once on each thread: setting up ICU's
// formatter and applying a pattern cost many times a parse, and a store holds
// dozens of dates.
platform::DateFormatter& formatter(std::size_t pattern, const platform::TimeZone& zone) {
    thread_local std::array<std::unique_ptr<platform::DateFormatter>, kPatterns.size()> made;
    auto& format = made[pattern];
    if (!format) {
        format = std::make_unique<platform::DateFormatter>(platform::Locale::posix(), zone);
        format->setDateFormat(kPatterns[pattern]);
    } else {
        format->setTimeZone(zone);
    }
    return *format;
}

}  // namespace

std::optional<platform::Date> parseIsoDate(std::string_view text, const platform::TimeZone& zone) {
    for (std::size_t pattern = 0; pattern < kPatterns.size(); ++pattern)
        if (auto date = formatter(pattern, zone).dateFromString(text)) return date;
    return std::nullopt;
}

}  // namespace velmorant::cli
