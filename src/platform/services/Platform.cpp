#include "platform/services/Platform.h"

#include "platform/store/FilePreferencesStore.h"
#include "platform/graphics/ImageResources.h"

#include <unicode/ucal.h>
#include <unicode/uloc.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace velmorant::platform {
namespace {

bool isKnownLanguage(const icu::Locale& locale) {
    const char* language = locale.getLanguage();
    if (!language || !*language) return false;
    for (const char* const* l = icu::Locale::getISOLanguages(); *l; ++l) {
        if (std::strcmp(*l, language) == 0) return true;
    }
    return false;
}

std::filesystem::path defaultResourceDir() {
    if (const char* env = std::getenv("VELMORANT_RESOURCES"); env && *env) return env;
    return VELMORANT_RESOURCE_DIR;
}

}  // namespace

Platform::Platform(PlatformOptions options)
    : fixedNow_(options.now),
      localeId_(options.localeId.empty() ? "en_US" : options.localeId),
      locale_(localeId_.c_str()),
      scale_(options.scale),
      preferencesDir_(std::move(options.preferencesDir)),
      resourceDir_(options.resourceDir.empty() ? defaultResourceDir() : std::move(options.resourceDir)),
      diagnostics_(options.diagnostics ? Diagnostics(std::move(options.diagnostics)) : Diagnostics()) {
    if (locale_.isBogus() || !isKnownLanguage(locale_))
        throw std::invalid_argument("unknown locale \"" + localeId_ + "\" (expected an ICU id such as en_US or de_DE)");
    if (options.timeZoneId.empty()) {
        timeZone_.reset(icu::TimeZone::detectHostTimeZone());
    } else {
        timeZone_.reset(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(options.timeZoneId)));
        icu::UnicodeString id;
        timeZone_->getID(id);
        if (id == icu::UnicodeString(UCAL_UNKNOWN_ZONE_ID))
            throw std::invalid_argument("unknown time zone \"" + options.timeZoneId +
                                        "\" (expected an IANA name such as Europe/London)");
    }
    icu::UnicodeString id;
    timeZone_->getID(id);
    id.toUTF8String(timeZoneId_);
    if (!(scale_ > 0 && scale_ <= 16)) throw std::invalid_argument("scale must be between 0 and 16 pixels per point");

    preferredLanguages_ = std::move(options.preferredLanguages);
    if (preferredLanguages_.empty()) {
        std::string tag = locale_.getLanguage();
        if (*locale_.getCountry()) tag += std::string("-") + locale_.getCountry();
        preferredLanguages_.push_back(tag);
    }
    strings_ = StringTable::load(resourceDir_ / "strings", localeId_, diagnostics_);
}

Platform::~Platform() = default;

Date Platform::now() const {
    if (fixedNow_) return *fixedNow_;
    auto since = std::chrono::system_clock::now().time_since_epoch();
    return Date::fromUnix(std::chrono::duration<double>(since).count());
}

std::shared_ptr<PreferencesStore> Platform::openStore(const std::string& fileStem) {
    auto it = stores_.find(fileStem);
    if (it != stores_.end()) return it->second;
    std::shared_ptr<PreferencesStore> store;
    if (preferencesDir_.empty()) store = std::make_shared<MemoryPreferencesStore>();
    else store = std::make_shared<FilePreferencesStore>(preferencesDir_ / (fileStem + ".plist"), diagnostics_);
    stores_.emplace(fileStem, store);
    return store;
}

std::shared_ptr<PreferencesStore> Platform::standardUserDefaults() { return openStore("standard"); }

std::shared_ptr<PreferencesStore> Platform::suiteNamed(std::string_view suiteName) {
    return openStore(std::string(suiteName));
}

std::string Platform::localizedString(std::string_view key, std::string_view value, std::string_view table) const {
    return strings_.localizedStringForKey(key, value, table);
}

const FontSystem& Platform::fonts() {
    if (!fonts_) fonts_ = std::make_unique<FontSystem>(resourceDir_ / "fonts" / "fonts.conf");
    return *fonts_;
}

ImagePtr Platform::imageNamed(std::string_view name) {
    // Artwork is cheap to draw again but large at high scales (the recharge
    // backdrop is 1.4 MB at scale 3): it is not kept after its last use.
    auto it = images_.find(name);
    if (it != images_.end()) {
        if (ImagePtr image = it->second.lock()) return image;
    }
    ImagePtr image = loadNamedImage(resourceDir_ / "images", name, scale_, diagnostics_);
    if (image) images_.insert_or_assign(std::string(name), image);
    return image;
}

}  // namespace velmorant::platform
