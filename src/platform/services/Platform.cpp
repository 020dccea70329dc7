#include "platform/services/Platform.h"

#include "platform/graphics/FontSystem.h"
#include "platform/store/FilePreferencesStore.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace velmorant::platform {
namespace {

TimeZone zoneNamed(const std::string& id) {
    if (id.empty()) return TimeZone::host();
    std::optional<TimeZone> zone = TimeZone::named(id);
    if (!zone) throw std::invalid_argument("unknown time zone \"" + id + "\" (expected an IANA name such as Europe/London)");
    return *zone;
}

std::filesystem::path defaultResourceDir() {
    if (const char* env = std::getenv("VELMORANT_RESOURCES"); env && *env) return env;
    // An installed program finds them where the install put them, relative to itself.
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error) {
        std::filesystem::path installed = program.parent_path() / VELMORANT_RESOURCES_FROM_PROGRAM;
        if (std::filesystem::is_regular_file(installed / "fonts" / "fonts.conf", error)) return installed.lexically_normal();
    }
    return VELMORANT_RESOURCE_DIR;
}

}  // namespace

Platform::Platform(PlatformOptions options)
    : fixedNow_(options.now),
      localeId_(options.localeId.empty() ? "en_US" : options.localeId),
      locale_(localeId_),
      timeZone_(zoneNamed(options.timeZoneId)),
      scale_(options.scale),
      preferencesDir_(std::move(options.preferencesDir)),
      resourceDir_(options.resourceDir.empty() ? defaultResourceDir() : std::move(options.resourceDir)),
      diagnostics_(options.diagnostics ? std::make_shared<Diagnostics>(std::move(options.diagnostics))
                                       : std::make_shared<Diagnostics>()) {
    if (!locale_.isKnown())
        throw std::invalid_argument("unknown locale \"" + localeId_ + "\" (expected an ICU id such as en_US or de_DE)");
    if (!(scale_ > 0 && scale_ <= 16)) throw std::invalid_argument("scale must be between 0 and 16 pixels per point");
    // Drawing needs the pinned fonts: a missing configuration is refused here, not at the first picture.
    std::error_code error;
    if (!std::filesystem::is_regular_file(resourceDir_ / "fonts" / "fonts.conf", error))
        throw std::invalid_argument("no font configuration at " + (resourceDir_ / "fonts" / "fonts.conf").string());

    preferredLanguages_ = std::move(options.preferredLanguages);
    if (preferredLanguages_.empty()) {
        std::string tag = locale_.language();
        if (!locale_.country().empty()) tag += "-" + locale_.country();
        preferredLanguages_.push_back(tag);
    }
    strings_ = StringTable::load(resourceDir_ / "strings", localeId_, *diagnostics_);
    // Artwork is kept for good only in resources shared on purpose.
    const bool keepsArtwork = options.shared != nullptr;
    drawing_ = std::make_shared<DrawingResources>(
        keepsArtwork ? std::move(options.shared) : std::make_shared<SharedResources>(), keepsArtwork, resourceDir_,
        scale_, diagnostics_);
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
    else store = std::make_shared<FilePreferencesStore>(preferencesDir_ / (fileStem + ".plist"), *diagnostics_);
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

const FontSystem& Platform::fonts() { return drawing_->fonts(); }

ImagePtr Platform::imageNamed(std::string_view name) { return drawing_->imageNamed(name); }

}  // namespace velmorant::platform
