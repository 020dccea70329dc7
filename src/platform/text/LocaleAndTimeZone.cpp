#include "platform/text/detail/IcuHandles.h"
#include "platform/text/detail/IcuStrings.h"

#include <unicode/ucal.h>

#include <cstring>

namespace velmorant::platform {

Locale::Locale(std::string_view id) {
    std::string name(id);
    icu::Locale locale(name.c_str());
    impl_ = std::make_shared<const Impl>(Impl{std::move(name), std::move(locale)});
}

const Locale& Locale::posix() {
    static const Locale posix("en_US_POSIX");
    return posix;
}

const std::string& Locale::id() const { return impl_->id; }

bool Locale::isKnown() const {
    const icu::Locale& locale = impl_->locale;
    const char* language = locale.getLanguage();
    if (locale.isBogus() || !language || !*language) return false;
    for (const char* const* l = icu::Locale::getISOLanguages(); *l; ++l) {
        if (std::strcmp(*l, language) == 0) return true;
    }
    return false;
}

std::string Locale::language() const { return impl_->locale.getLanguage(); }
std::string Locale::country() const { return impl_->locale.getCountry(); }

std::string Locale::languageTag() const {
    UErrorCode status = U_ZERO_ERROR;
    std::string tag = impl_->locale.toLanguageTag<std::string>(status);
    return U_SUCCESS(status) && !tag.empty() ? tag : "en";
}

namespace {

std::shared_ptr<const TimeZone::Impl> adoptZone(icu::TimeZone* zone) {
    icu::UnicodeString id;
    zone->getID(id);
    return std::make_shared<const TimeZone::Impl>(TimeZone::Impl{toUtf8(id), std::unique_ptr<const icu::TimeZone>(zone)});
}

}  // namespace

std::optional<TimeZone> TimeZone::named(std::string_view id) {
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(fromUtf8(id)));
    icu::UnicodeString found;
    zone->getID(found);
    if (found == icu::UnicodeString(UCAL_UNKNOWN_ZONE_ID)) return std::nullopt;
    return TimeZone(adoptZone(zone.release()));
}

TimeZone TimeZone::host() { return TimeZone(adoptZone(icu::TimeZone::detectHostTimeZone())); }

const std::string& TimeZone::id() const { return impl_->id; }

double TimeZone::daylightSavingTimeOffset(Date date) const {
    int32_t raw = 0, dst = 0;
    UErrorCode status = U_ZERO_ERROR;
    impl_->zone->getOffset(date.icuMillis(), false, raw, dst, status);
    return U_SUCCESS(status) ? dst / 1000.0 : 0;
}

}  // namespace velmorant::platform
