#include "palette/Pallet.h"

#include "platform/text/StringFormat.h"

#include <cmath>
#include <memory>
#include <optional>
#include <string_view>

namespace velmorant::palette {
namespace {

constexpr std::string_view kThemeKey = "darkTheme6";

// A stored value read as a float; none when absent, or when it is no finite
// float (NaN, infinity, beyond single precision), which only a damaged store holds.
std::optional<float> storedFloat(const platform::Value& value) {
    if (value.isNone()) return std::nullopt;
    float f = value.floatValue();
    if (!std::isfinite(f)) return std::nullopt;
    return f;
}

// A stored number read as a float, or the default when the key is absent or unusable.
float floatPreference(platform::PreferencesStore& store, std::string_view key, float fallback) {
    return storedFloat(store.objectForKey(key)).value_or(fallback);
}

}  // namespace

Pallet::Pallet(platform::Platform& platform) : platform_(platform) {
    readTheme();
    loadCustomHues();
}

platform::Colour Pallet::hsb(double hueDegrees, double saturation, double brightness) {
    return platform::Colour::colorWithHue(hueDegrees / 360.0, saturation, brightness, 1.0);
}

void Pallet::readTheme() {
    auto defaults = platform_.standardUserDefaults();
    platform::Value stored = defaults->objectForKey(kThemeKey);
    if (!stored.isNone()) {
        darkTheme_ = stored.boolValue();
        return;
    }
    // A fresh install starts dark, and says so for the app's next launch.
    darkTheme_ = true;
    defaults->setObject(platform::Value(true), kThemeKey);
}

void Pallet::loadPrefs() {
    auto defaults = platform_.standardUserDefaults();
    platform::PreferencesStore& store = *defaults;
    maxHeartRate_ = floatPreference(store, "maxHeartRate", 180);
    restingElevated_ = floatPreference(store, "restingElevated", 100);
    restingHigh_ = floatPreference(store, "restingHigh", 80);
    restingNormal_ = floatPreference(store, "restingNormal", 50);
    restingLow_ = floatPreference(store, "restingLow", 40);
    restingVeryLow_ = floatPreference(store, "restingVeryLow", 40);
    workoutPercent1_ = floatPreference(store, "workoutPercent1", 90);
    workoutPercent2_ = floatPreference(store, "workoutPercent2", 80);
    workoutPercent3_ = floatPreference(store, "workoutPercent3", 70);
    workoutPercent4_ = floatPreference(store, "workoutPercent4", 60);
    workoutPercent5_ = floatPreference(store, "workoutPercent5", 50);
    miles_ = store.boolForKey("miles");
}

void Pallet::loadCustomHues() {
    float* hues[] = {&hue1_, &hue2_, &hue3_, &hue4_, &hue5_};
    const float defaults[] = {357, 34, 44, 128, 207};

    auto standard = platform_.standardUserDefaults();
    // The app group is the main app's copy; it is opened only when a hue is not our own.
    std::shared_ptr<platform::PreferencesStore> shared;
    for (int n = 1; n <= 5; ++n) {
        std::string key = platform::stringWithFormat("Hue%d", {n});
        float hue = defaults[n - 1];
        if (auto own = storedFloat(standard->objectForKey(key))) {
            hue = *own;
        } else {
            if (!shared) shared = platform_.suiteNamed(platform::kAppGroupSuite);
            if (auto fromApp = storedFloat(shared->objectForKey(key))) hue = *fromApp;
        }
        *hues[n - 1] = hue;
    }
}

void Pallet::loadCustomHuesFromArray(const std::optional<platform::Array>& hues) {
    if (!hues || hues->size() < 5) return;
    hue1_ = (*hues)[0].floatValue();
    hue2_ = (*hues)[1].floatValue();
    hue3_ = (*hues)[2].floatValue();
    hue4_ = (*hues)[3].floatValue();
    hue5_ = (*hues)[4].floatValue();
}

void Pallet::setDarkTheme(bool dark) {
    if (!darkTheme_) temporaryDark_ = true;
    darkTheme_ = dark;
}

void Pallet::restoreTheme() {
    temporaryDark_ = false;
    readTheme();
}

}  // namespace velmorant::palette
