#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace velmorant::platform {

// A locale by ICU id (language, region, variants), as a value: what formatters, calendars and
// string tables are made with. Cheap to copy; the ICU object stays inside the platform.
class Locale {
public:
    // The locale of an id such as en_US or de_DE, as ICU reads it (see isKnown).
    explicit Locale(std::string_view id);
    // The fixed, locale-independent conventions (en_US_POSIX): machine dates, day keys.
    static const Locale& posix();

    const std::string& id() const;
    // True when ICU reads the id and its language is an ISO 639 language.
    bool isKnown() const;
    std::string language() const;
    std::string country() const;
    // The BCP 47 tag, such as en-US; "en" when the locale has none.
    std::string languageTag() const;

    // What the platform's own sources unwrap (platform/text/detail/IcuHandles.h).
    struct Impl;
    const Impl& impl() const { return *impl_; }

private:
    std::shared_ptr<const Impl> impl_;
};

}  // namespace velmorant::platform
