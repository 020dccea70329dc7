#pragma once

#include "platform/text/Locale.h"
#include "platform/text/TimeZone.h"

#include <unicode/locid.h>
#include <unicode/timezone.h>

#include <memory>
#include <string>

namespace velmorant::platform {

struct Locale::Impl {
    std::string id;
    icu::Locale locale;
};

struct TimeZone::Impl {
    std::string id;
    std::unique_ptr<const icu::TimeZone> zone;
};

inline const icu::Locale& icuLocale(const Locale& locale) { return locale.impl().locale; }
inline const icu::TimeZone& icuZone(const TimeZone& zone) { return *zone.impl().zone; }

}  // namespace velmorant::platform
