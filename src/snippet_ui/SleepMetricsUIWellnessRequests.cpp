// Wellness requests: the GroupMetrics record's display fields, its colours and
// its gauge, as the snippets show them.
#include "snippet_ui/SleepMetricsUI.h"

#include "platform/text/StringFormat.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmorant::snippet_ui {
using metrics::GroupMetrics;

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
             {"averageSpO2Label", "averageSpO2Label7", "minSpO2Label", "maxSpO2Label", "averageSpO2RangeLabel",
              "averageSpO2RangeLabel7", "difLabel", "difColour", "pasteItem"});
    record.setObject(Value(drawSpO2GaugeWithSize(wellnessImageSide(), *source)), "ringsImage");
    return record;
}

SleepMetricsUI::Record SleepMetricsUI::requestRespRate() {
    GroupMetrics::Record source = groupMetrics().requestRespRate();
    if (!source) return std::nullopt;
    Dictionary record;
    copyKeys(*source, record,
             {"averageRespRate", "averageRespRateLabel", "averageRespRateWidgetLabel", "averageRespRateLabel7",
              "minRespRateLabel", "maxRespRateLabel", "averageRespRateRangeLabel", "averageRespRateRangeLabel7",
              "difLabel", "difColour", "pasteItem"});
    record.setObject(Value(drawRespRateGaugeWithSize(wellnessImageSide(), *source)), "ringsImage");
    return record;
}

SleepMetricsUI::Record SleepMetricsUI::requestWristTemp() {
    groupMetrics();
    pallet();
    GroupMetrics::Record source = groupMetrics().requestWristTemp();
    if (!source) return std::nullopt;
    Dictionary record;
    copyKeys(*source, record,
             {"wristTempTodayLabel", "wristTempAverage28Label", "wristTempDifLabel", "wristTempScore", "pasteItem"});
    record.setObject(Value(pallet().colourForWristTempScore(floatIn(*source, "wristTempScore"))), "ratingColour");
    record.setObject(Value(drawWristTempGaugeWithSize(wellnessImageSide(), *source)), "ringsImage");
    return record;
}

SleepMetricsUI::Record SleepMetricsUI::requestReadiness() { return scoreRecord(groupMetrics().requestReadiness(), 2); }

SleepMetricsUI::Record SleepMetricsUI::requestOctane() { return scoreRecord(groupMetrics().requestOctane(), 1); }

SleepMetricsUI::Record SleepMetricsUI::scoreRecord(const GroupMetrics::Record& source, std::int64_t legend) {
    if (!source || !source->contains("todaysReadinessStars")) return std::nullopt;
    Dictionary record;
    // The stars text stands in for the copyable text only when the source has none.
    record.setObject(Value(platform::localizedStringWithFormat(platform_.localeId(), "%.1f",
                                                               {floatIn(*source, "starsValue")})),
                     "pasteItem");
    const float percentage = floatIn(*source, "percentage");
    // The drawing makes the palette, so the colours below are asked of it afterwards.
    record.setObject(Value(drawReadiRingsWithSize(wellnessImageSide(), percentage, stringIn(*source, "rating"), legend)),
                     "ringsImage");

    // Heart-rate variability gets five points more than the waking heart rate
    // on the scale: the two indicators are deliberately unequal.
    const float hrvPoints = floatIn(*source, "hrvPoints");
    record.setObject(Value(hrvPoints != 0.0f ? pallet().lightRatingColour(held((hrvPoints + 0.05) * 100.0))
                                             : Colour::darkGrayColor()),
                     "hrvIndicatorColour");
    const float wakingPoints = floatIn(*source, "wakingPoints");
    record.setObject(
        Value(wakingPoints != 0.0f ? pallet().lightRatingColour(held(wakingPoints * 100.0)) : Colour::darkGrayColor()),
        "wakingIndicatorColour");

    copyKeys(*source, record, {"hrvDifLabel", "hrvLabel", "wakingDifLabel", "wakingLabel"});
    record.setObject(Value(stringIn(*source, "rating")), "starsLabel");
    if (widgetMode) copyKeys(*source, record, {"wakingTint", "hrvTint"});
    copyKeys(*source, record, {"pasteItem"});
    return record;
}

}  // namespace velmorant::snippet_ui
