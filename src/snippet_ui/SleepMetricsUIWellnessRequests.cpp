// Wellness requests: the GroupMetrics record's display fields, its colours and
// its gauge, as the snippets show them.
#include "snippet_ui/SleepMetricsUI.h"

#include "metrics/RecordKeys.h"
#include "platform/text/StringFormat.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmorant::snippet_ui {
using metrics::GroupMetrics;
namespace keys = metrics::keys;

using platform::Colour;
using platform::Dictionary;
using platform::Value;

namespace {

float floatIn(const Dictionary& record, std::string_view key) {
    const Value* value = record.objectForKey(key);
    return value ? value->floatValue() : 0.0f;
}

std::optional<std::string> stringIn(const Dictionary& record, std::string_view key) {
    const Value* value = record.objectForKey(key);
    if (value && value->string()) return *value->string();
    return std::nullopt;
}

}  // namespace

float SleepMetricsUI::wellnessImageSide() const { return widgetMode ? 220.0f : 280.0f; }

float SleepMetricsUI::held(double value) {
    if (std::isnan(value)) return 0.0f;
    constexpr double kLargest = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(value, -kLargest, kLargest));
}

void SleepMetricsUI::copyKeys(const Dictionary& from, Dictionary& to, std::initializer_list<std::string_view> keys) {
    for (std::string_view key : keys)
        if (const Value* value = from.objectForKey(key)) to.setObject(*value, key);
}

SleepMetricsUI::Record SleepMetricsUI::requestSpO2() {
    GroupMetrics::Record source = groupMetrics().requestSpO2();
    if (!source) return std::nullopt;
    Dictionary record;
    copyKeys(*source, record,
             {keys::kAverageSpO2Label, keys::kAverageSpO2Label7, keys::kMinSpO2Label, keys::kMaxSpO2Label,
              keys::kAverageSpO2RangeLabel, keys::kAverageSpO2RangeLabel7, keys::kDifLabel, keys::kDifColour,
              keys::kPasteItem});
    record.setObject(Value(drawSpO2GaugeWithSize(wellnessImageSide(), *source)), keys::kRingsImage);
    return record;
}

SleepMetricsUI::Record SleepMetricsUI::requestRespRate() {
    GroupMetrics::Record source = groupMetrics().requestRespRate();
    if (!source) return std::nullopt;
    Dictionary record;
    copyKeys(*source, record,
             {keys::kAverageRespRate, keys::kAverageRespRateLabel, keys::kAverageRespRateWidgetLabel,
              keys::kAverageRespRateLabel7, keys::kMinRespRateLabel, keys::kMaxRespRateLabel,
              keys::kAverageRespRateRangeLabel, keys::kAverageRespRateRangeLabel7, keys::kDifLabel, keys::kDifColour,
              keys::kPasteItem});
    record.setObject(Value(drawRespRateGaugeWithSize(wellnessImageSide(), *source)), keys::kRingsImage);
    return record;
}

SleepMetricsUI::Record SleepMetricsUI::requestWristTemp() {
    groupMetrics();
    pallet();
    GroupMetrics::Record source = groupMetrics().requestWristTemp();
    if (!source) return std::nullopt;
    Dictionary record;
    copyKeys(*source, record,
             {keys::kWristTempTodayLabel, keys::kWristTempAverage28Label, keys::kWristTempDifLabel,
              keys::kWristTempScore, keys::kPasteItem});
    record.setObject(Value(pallet().colourForWristTempScore(floatIn(*source, keys::kWristTempScore))),
                     keys::kRatingColour);
    record.setObject(Value(drawWristTempGaugeWithSize(wellnessImageSide(), *source)), keys::kRingsImage);
    return record;
}

SleepMetricsUI::Record SleepMetricsUI::requestReadiness() { return scoreRecord(groupMetrics().requestReadiness(), 2); }

SleepMetricsUI::Record SleepMetricsUI::requestOctane() { return scoreRecord(groupMetrics().requestOctane(), 1); }

SleepMetricsUI::Record SleepMetricsUI::scoreRecord(const GroupMetrics::Record& source, std::int64_t legend) {
    if (!source || !source->contains(keys::kTodaysReadinessStars)) return std::nullopt;
    Dictionary record;
    // The stars text stands in for the copyable text only when the source has none.
    record.setObject(Value(platform::localizedStringWithFormat(platform_.localeId(), "%.1f",
                                                               {floatIn(*source, keys::kStarsValue)})),
                     keys::kPasteItem);
    const float percentage = floatIn(*source, keys::kPercentage);
    // The drawing makes the palette, so the colours below are asked of it afterwards.
    record.setObject(
        Value(drawReadiRingsWithSize(wellnessImageSide(), percentage, stringIn(*source, keys::kRating), legend)),
        keys::kRingsImage);

    // Heart-rate variability gets five points more than the waking heart rate
    // on the scale: the two indicators are deliberately unequal.
    const float hrvPoints = floatIn(*source, keys::kHrvPoints);
    record.setObject(Value(hrvPoints != 0.0f ? pallet().lightRatingColour(held((hrvPoints + 0.05) * 100.0))
                                             : Colour::darkGrayColor()),
                     keys::kHrvIndicatorColour);
    const float wakingPoints = floatIn(*source, keys::kWakingPoints);
    record.setObject(
        Value(wakingPoints != 0.0f ? pallet().lightRatingColour(held(wakingPoints * 100.0)) : Colour::darkGrayColor()),
        keys::kWakingIndicatorColour);

    copyKeys(*source, record, {keys::kHrvDifLabel, keys::kHrvLabel, keys::kWakingDifLabel, keys::kWakingLabel});
    record.setObject(Value(stringIn(*source, keys::kRating)), keys::kStarsLabel);
    if (widgetMode) copyKeys(*source, record, {keys::kWakingTint, keys::kHrvTint});
    copyKeys(*source, record, {keys::kPasteItem});
    return record;
}

}  // namespace velmorant::snippet_ui
