// The four dial gauges: blood oxygen, respiration rate, bedtime consistency
// and wrist temperature.
#include "metrics/RecordKeys.h"
#include "snippet_ui/GaugeFrame.h"
#include "snippet_ui/SleepMetricsUI.h"

#include "platform/text/StringFormat.h"

#include <cmath>

namespace velmorant::snippet_ui {
using palette::Pallet;
namespace keys = metrics::keys;

using gauge::GaugeFrame;
using platform::Colour;
using platform::Dictionary;

namespace {

// A record number; absent reads as 0.
float number(const Dictionary& dict, std::string_view key) {
    const platform::Value* value = dict.objectForKey(key);
    return value ? value->floatValue() : 0;
}

// A record text; none when absent or not a text.
const std::string* text(const Dictionary& dict, std::string_view key) {
    const platform::Value* value = dict.objectForKey(key);
    return value ? value->string() : nullptr;
}

// The blood-oxygen dial runs from 80 to 100 %.
float spO2Fraction(float percent) { return (percent - 80) / 20; }

// The smallest average the dials show; none or less reads as this.
constexpr float kLeastAverage = 0.01f;

// A reading of 0.01 or less means none; `replacement` stands in for it.
float orWhenNone(float value, float replacement) { return value <= 0.01 ? replacement : value; }

// Minutes of bedtime drift as stars: 3 to 4 within a quarter hour either way,
// then one star per half hour, then per three quarters of an hour.
float consistencyStars(float t) {
    if (std::isnan(t)) return 3.5f;
    if (t >= -15 && t <= 15) return 3 + (t + 15) / 30;
    if (t >= -45 && t < -15) return 2 + (t + 45) / 30;
    if (t >= -90 && t < -45) return 1 + (t + 90) / 45;
    if (t < -90) return t + 135 < 0 ? 0 : (t + 135) / 45;
    if (t <= 45) return 4 + (t - 15) / 30;
    if (t <= 90) return 5 + (t - 45) / 45;
    return t - 90 > 45 ? 7 : 6 + (t - 90) / 45;
}

}  // namespace

platform::ImagePtr SleepMetricsUI::drawSpO2GaugeWithSize(float size, const Dictionary& dict) {
    Pallet& colours = pallet();
    const float average = number(dict, keys::kAverageSpO2);
    const float average7 = spO2Fraction(number(dict, keys::kAverageSpO27));

    GaugeFrame gauge(size, widgetMode, platform_, layers_);
    // The dial, the hub and the icon are the same for every night.
    gauge.keep([&] {
        gauge.drawDisc(gaugeBkg());
        gauge.drawTrack(gaugeBkg());
        gauge.drawScaleBands(gauge::kSpO2Bands, {colours.colourForReadyScore(0), colours.colourForSpO2Reading(100),
                                                 Colour::blackColor(), colours.colourForSpO2Reading(85),
                                                 colours.colourForSpO2Reading(90), colours.colourForSpO2Reading(95)});
    });
    gauge.drawRangeBand(spO2Fraction(number(dict, keys::kMinSpO2)), spO2Fraction(number(dict, keys::kMaxSpO2)));
    gauge.drawSevenDayRange(spO2Fraction(number(dict, keys::kMinSpO27)), spO2Fraction(number(dict, keys::kMaxSpO27)));
    gauge.drawSevenDayMarker(static_cast<float>(average7 - 0.005), static_cast<float>(average7 + 0.005));
    gauge.keep([&] {
        gauge.drawHub(needleBkg());
        gauge.drawIcon("SpO2Icon");
    });
    gauge.drawText(platform::localizedStringWithFormat(platform_.localeId(), "%.1f%%", {average}),
                   gauge::valueTextPlacement(widgetMode), colours.tintColour());
    double needle = (static_cast<double>(average) - 80) / 20;
    if (needle <= 0.01) needle = kLeastAverage;
    gauge.drawNeedle(needle);
    return gauge.finish();
}

platform::ImagePtr SleepMetricsUI::drawRespRateGaugeWithSize(float size, const Dictionary& dict) {
    Pallet& colours = pallet();
    auto fractionOf = [&](float breaths) { return gauge::starFraction(colours.starsValueForRespRate(breaths)); };
    const float average = orWhenNone(number(dict, keys::kAverageRespRate), kLeastAverage);
    const float averageStars = colours.starsValueForRespRate(average);

    GaugeFrame gauge(size, widgetMode, platform_, layers_);
    auto ready = [&](float ratio) { return colours.colourForReadyScore(ratio); };
    gauge.keep([&] {
        gauge.drawDisc(gaugeBkg());
        gauge.drawTrack(gaugeBkg());
        gauge.drawScaleBands(gauge::kStarBands, gauge::starBandColours(ready(0), ready(0),
                                                                       {ready(0.6f), ready(1.0f), ready(1.1f),
                                                                        ready(1.0f), ready(0.6f), ready(0)}));
        gauge.drawHub(needleBkg());
    });
    const float lowest = orWhenNone(number(dict, keys::kMinRespRate), average);
    const float highest = orWhenNone(number(dict, keys::kMaxRespRate), average);
    gauge.drawRangeBand(fractionOf(lowest), fractionOf(highest));
    // A seven-day average outside any plausible breathing rate is left off the dial.
    const float average7 = number(dict, keys::kAverageRespRate7);
    if (average7 > 1 && average7 < 40) {
        const float lowest7 = orWhenNone(number(dict, keys::kMinRespRate7), average7);
        const float highest7 = number(dict, keys::kMaxRespRate7);
        gauge.drawSevenDayRange(fractionOf(lowest7), fractionOf(highest7));
        const float fraction7 = fractionOf(average7);
        gauge.drawSevenDayMarker(fraction7 - 0.005, fraction7 + 0.005);
    }
    gauge.keep([&] { gauge.drawIcon("RespIcon"); });
    gauge.drawText(platform::localizedStringWithFormat(platform_.localeId(), "%.1f", {average}),
                   gauge::valueTextPlacement(widgetMode), colours.tintColour());
    gauge.drawNeedle(gauge::starFraction(averageStars));
    return gauge.finish();
}

platform::ImagePtr SleepMetricsUI::drawConsistencyGaugeWithSize(float size, const Dictionary& dict) {
    Pallet& colours = pallet();
    const float stars = consistencyStars(number(dict, keys::kBedTrend) / 60);

    GaugeFrame gauge(size, widgetMode, platform_, layers_);
    auto ready = [&](float ratio) { return colours.colourForReadyScore(ratio); };
    auto charge = [&](float percent) { return colours.colourForBatteryChargePercent(percent); };
    gauge.keep([&] {
        gauge.drawDisc(gaugeBkg());
        gauge.drawTrack(gaugeBkg());
        gauge.drawScaleBands(gauge::kStarBands, gauge::starBandColours(ready(0), ready(0),
                                                                       {ready(0.6f), charge(0.9f), charge(1.0f),
                                                                        charge(0.9f), ready(0.6f), ready(0)}));
        gauge.drawHub(needleBkg());
        gauge.drawIcon("InBedIcon");
    });
    if (const std::string* label = text(dict, keys::kStarsLabel))
        gauge.drawText(*label, {widgetMode ? 28.0f : 24.0f, -5.1}, colours.tintColour());
    gauge.drawNeedle(gauge::starFraction(stars));
    return gauge.finish();
}

platform::ImagePtr SleepMetricsUI::drawWristTempGaugeWithSize(float size, const Dictionary& dict) {
    Pallet& colours = pallet();
    const float score = number(dict, keys::kWristTempScore);

    GaugeFrame gauge(size, widgetMode, platform_, layers_);
    // Both round ends keep the lowest score's colour, also the one past 7.
    auto wrist = [&](float rating) { return colours.colourForWristTempScore(rating); };
    gauge.keep([&] {
        gauge.drawDisc(gaugeBkg());
        gauge.drawTrack(gaugeBkg());
        gauge.drawScaleBands(gauge::kStarBands, gauge::starBandColours(wrist(0.5f), wrist(0.5f),
                                                                       {wrist(1.5f), wrist(2.5f), wrist(3.5f),
                                                                        wrist(4.5f), wrist(5.5f), wrist(6.5f)}));
        gauge.drawHub(needleBkg());
        gauge.drawIcon("WristTempIcon");
    });
    if (const std::string* label = text(dict, keys::kWristTempDifLabel))
        gauge.drawText(*label, gauge::valueTextPlacement(widgetMode), colours.tintColour());
    gauge.drawNeedle(gauge::starFraction(score));
    return gauge.finish();
}

}  // namespace velmorant::snippet_ui
