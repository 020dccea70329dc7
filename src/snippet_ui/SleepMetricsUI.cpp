#include "snippet_ui/SleepMetricsUI.h"

#include "metrics/RecordKeys.h"

#include <cmath>

namespace velmorant::snippet_ui {
using format::FormatTools;
using metrics::GroupMetrics;
using palette::Pallet;
namespace keys = metrics::keys;

using platform::Colour;

SleepMetricsUI::SleepMetricsUI(platform::Platform& platform) : platform_(platform) {}

SleepMetricsUI::~SleepMetricsUI() = default;

platform::PreferencesStore& SleepMetricsUI::groupPrefs() {
    if (!groupPrefs_) groupPrefs_ = platform_.suiteNamed(platform::kAppGroupSuite);
    return *groupPrefs_;
}

FormatTools& SleepMetricsUI::formatTools() {
    if (!formatTools_) formatTools_ = std::make_unique<FormatTools>(platform_);
    return *formatTools_;
}

Pallet& SleepMetricsUI::pallet() {
    if (!pallet_) pallet_ = std::make_unique<Pallet>(platform_);
    return *pallet_;
}

GroupMetrics& SleepMetricsUI::groupMetrics() {
    if (!groupMetrics_) groupMetrics_ = std::make_unique<GroupMetrics>(platform_);
    return *groupMetrics_;
}

float SleepMetricsUI::getVelmorantConfigValueForKey(std::string_view key) { return configValueForKey(key).value_or(0); }

std::optional<float> SleepMetricsUI::configValueForKey(std::string_view key) {
    // Only a store some request has opened is read; before that there is no setting.
    if (!groupPrefs_) return std::nullopt;
    platform::Value config = groupPrefs_->objectForKey(keys::kVelmorantConfig);
    const platform::Dictionary* dict = config.dictionary();
    if (!dict) return std::nullopt;
    const platform::Value* value = dict->objectForKey(key);
    if (!value) return std::nullopt;
    float number = value->floatValue();
    if (!std::isfinite(number)) return std::nullopt;
    return number;
}

Colour SleepMetricsUI::gaugeBkg() const { return Colour::colorWithHue(193.0 / 360, 0.92, 0.10, 1); }
Colour SleepMetricsUI::ringBkg() const { return Colour::colorWithHue(193.0 / 360, 0.92, 0.15, 1); }
Colour SleepMetricsUI::needleBkg() const { return Colour::colorWithHue(193.0 / 360, 0, 0.60, 1); }
Colour SleepMetricsUI::textColour() const { return Colour::colorWithHue(55.0 / 360, 0.05, 0.85, 1); }
Colour SleepMetricsUI::subtleTextColour() const { return Colour::colorWithHue(55.0 / 360, 0.05, 0.67, 1); }
Colour SleepMetricsUI::verySubtleTextColour() const { return Colour::colorWithHue(55.0 / 360, 0.05, 0.55, 1); }

}  // namespace velmorant::snippet_ui
