#pragma once

#include "platform/core/Date.h"
#include "platform/core/Diagnostics.h"
#include "platform/services/DrawingResources.h"
#include "platform/store/PreferencesStore.h"
#include "platform/text/StringTable.h"
#include "platform/core/Value.h"
#include "platform/text/Locale.h"
#include "platform/text/TimeZone.h"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmorant::platform {

class FontSystem;

// The app group shared by the main app, its widgets and this extension.
inline constexpr std::string_view kAppGroupSuite = "group.brumelkai.Velmorant";

struct PlatformOptions {
    // The current instant; none follows the system clock.
    std::optional<Date> now;
    // IANA zone; empty uses the system's.
    std::string timeZoneId;
    // ICU locale id such as en_US; empty uses en_US.
    std::string localeId;
    // The user's preferred languages, most preferred first; empty derives one from the locale.
    std::vector<std::string> preferredLanguages;
    // Pixels per point of the device screen.
    double scale = 3;
    // Folder of the store files; empty keeps every store in memory.
    std::filesystem::path preferencesDir;
    // Folder of artwork, string tables and the interface description; empty uses the built-in location.
    std::filesystem::path resourceDir;
    // Where problems with files are reported; none reports to standard error.
    Diagnostics::Sink diagnostics;
    // Fonts and artwork shared with other platforms; none keeps its own.
    std::shared_ptr<SharedResources> shared;
};

// The stand-in for the phone's platform services that this system's objects use:
// clock, time zone, locale, preferences stores, localisation, named images.
// One instance is made by the program (or a test) and passed by reference to
// every object; it must outlive them.
class Platform {
public:
    explicit Platform(PlatformOptions options = {});
    ~Platform();
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;

    // The current instant.
    Date now() const;
    void setNow(std::optional<Date> now) { fixedNow_ = now; }

    const Locale& locale() const { return locale_; }
    const std::string& localeId() const { return localeId_; }
    const TimeZone& timeZone() const { return timeZone_; }
    const std::string& timeZoneId() const { return timeZone_.id(); }
    const std::vector<std::string>& preferredLanguages() const { return preferredLanguages_; }
    double screenScale() const { return scale_; }

    // The extension's own preferences (standard user defaults).
    std::shared_ptr<PreferencesStore> standardUserDefaults();
    // A preferences suite by name; every open of the same suite shares its data.
    std::shared_ptr<PreferencesStore> suiteNamed(std::string_view suiteName);

    // Main-bundle localisation lookup (see StringTable::localizedStringForKey).
    std::string localizedString(std::string_view key, std::string_view value = "",
                                std::string_view table = "") const;
    // An image resource by name; none when there is no such artwork. Drawn
    // once and shared while anyone holds it, then let go with its pixels.
    ImagePtr imageNamed(std::string_view name);

    // Text layout with the project's pinned fonts; made on first use.
    const FontSystem& fonts();
    // The fonts and artwork, for pictures drawn on demand.
    const std::shared_ptr<DrawingResources>& drawingResources() const { return drawing_; }
    // The layers pictures keep, shared with the platforms sharing these resources.
    LayerCache& layers() { return drawing_->layers(); }

    const std::filesystem::path& resourceDir() const { return resourceDir_; }
    const std::filesystem::path& preferencesDir() const { return preferencesDir_; }
    Diagnostics& diagnostics() { return *diagnostics_; }

private:
    std::shared_ptr<PreferencesStore> openStore(const std::string& fileStem);

    std::optional<Date> fixedNow_;
    std::string localeId_;
    Locale locale_;
    TimeZone timeZone_;
    std::vector<std::string> preferredLanguages_;
    double scale_;
    std::filesystem::path preferencesDir_;
    std::filesystem::path resourceDir_;
    std::shared_ptr<Diagnostics> diagnostics_;
    StringTable strings_;
    std::map<std::string, std::shared_ptr<PreferencesStore>, std::less<>> stores_;
    std::shared_ptr<DrawingResources> drawing_;
};

}  // namespace velmorant::platform
