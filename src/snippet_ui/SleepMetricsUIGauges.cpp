// The four dial gauges: blood oxygen, respiration rate, bedtime consistency
// and wrist temperature.
#include "metrics/RecordKeys.h"
#include "snippet_ui/GaugeFrame.h"
#include "snippet_ui/SleepMetricsUI.h"

#include "platform/text/StringFormat.h"

#include <array>
#include <cmath>
#include <optional>
#include <string>

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
std::optional<std::string> optionalText(const Dictionary& dict, std::string_view key) {
    const platform::Value* value = dict.objectForKey(key);
    const std::string* text = value ? value->string() : nullptr;
    if (!text) return std::nullopt;
    return *text;
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
    const std::array<Colour, 6> bands{colours.colourForReadyScore(0), colours.colourForSpO2Reading(100),
                                      Colour::blackColor(),           colours.colourForSpO2Reading(85),
                                      colours.colourForSpO2Reading(90), colours.colourForSpO2Reading(95)};
    const float lowest = spO2Fraction(number(dict, keys::kMinSpO2));
    const float highest = spO2Fraction(number(dict, keys::kMaxSpO2));
    const float lowest7 = spO2Fraction(number(dict, keys::kMinSpO27));
    const float highest7 = spO2Fraction(number(dict, keys::kMaxSpO27));
    const std::string text = platform::localizedStringWithFormat(platform_.localeId(), "%.1f%%", {average});
    double needle = (static_cast<double>(average) - 80) / 20;
    if (needle <= 0.01) needle = kLeastAverage;

    return drawLater(platform_, size, [=, widget = widgetMode, disc = gaugeBkg(), hub = needleBkg(),
                                                tint = colours.tintColour()](PictureTools& tools) {
        GaugeFrame gauge(size, widget, tools);
        // The dial, the hub and the icon are the same for every night.
        gauge.keep([&] {
            gauge.drawDisc(disc);
            gauge.drawTrack(disc);
            gauge.drawScaleBands(gauge::kSpO2Bands, bands);
        });
        gauge.drawRangeBand(lowest, highest);
        gauge.drawSevenDayRange(lowest7, highest7);
        gauge.drawSevenDayMarker(static_cast<float>(average7 - 0.005), static_cast<float>(average7 + 0.005));
        gauge.keep([&] {
            gauge.drawHub(hub);
            gauge.drawIcon("SpO2Icon");
        });
        gauge.drawText(text, gauge::valueTextPlacement(widget), tint);
        gauge.drawNeedle(needle);
        return gauge.finish();
    });
}

platform::ImagePtr SleepMetricsUI::drawRespRateGaugeWithSize(float size, const Dictionary& dict) {
    Pallet& colours = pallet();
    auto fractionOf = [&](float breaths) { return gauge::starFraction(colours.starsValueForRespRate(breaths)); };
    const float average = orWhenNone(number(dict, keys::kAverageRespRate), kLeastAverage);
    auto ready = [&](float ratio) { return colours.colourForReadyScore(ratio); };
    const std::array<Colour, 9> bands = gauge::starBandColours(
        ready(0), ready(0), {ready(0.6f), ready(1.0f), ready(1.1f), ready(1.0f), ready(0.6f), ready(0)});
    const float lowest = fractionOf(orWhenNone(number(dict, keys::kMinRespRate), average));
    const float highest = fractionOf(orWhenNone(number(dict, keys::kMaxRespRate), average));
    // A seven-day average outside any plausible breathing rate is left off the dial.
    const float average7 = number(dict, keys::kAverageRespRate7);
    const bool sevenDays = average7 > 1 && average7 < 40;
    const float lowest7 = fractionOf(orWhenNone(number(dict, keys::kMinRespRate7), average7));
    const float highest7 = fractionOf(number(dict, keys::kMaxRespRate7));
    const float fraction7 = fractionOf(average7);
    const std::string text = platform::localizedStringWithFormat(platform_.localeId(), "%.1f", {average});
    const float needle = gauge::starFraction(colours.starsValueForRespRate(average));

    return drawLater(platform_, size, [=, widget = widgetMode, disc = gaugeBkg(), hub = needleBkg(),
                                                tint = colours.tintColour()](PictureTools& tools) {
        GaugeFrame gauge(size, widget, tools);
        gauge.keep([&] {
            gauge.drawDisc(disc);
            gauge.drawTrack(disc);
            gauge.drawScaleBands(gauge::kStarBands, bands);
            gauge.drawHub(hub);
        });
        gauge.drawRangeBand(lowest, highest);
        if (sevenDays) {
            gauge.drawSevenDayRange(lowest7, highest7);
            gauge.drawSevenDayMarker(fraction7 - 0.005, fraction7 + 0.005);
        }
        gauge.keep([&] { gauge.drawIcon("RespIcon"); });
        gauge.drawText(text, gauge::valueTextPlacement(widget), tint);
        gauge.drawNeedle(needle);
        return gauge.finish();
    });
}

gauge::StarDial SleepMetricsUI::starDial(float size) {
    return {.side = size,
            .widgetMode = widgetMode,
            .disc = gaugeBkg(),
            .hub = needleBkg(),
            .tint = pallet().tintColour(),
            .placement = gauge::valueTextPlacement(widgetMode)};
}

platform::ImagePtr SleepMetricsUI::drawConsistencyGaugeWithSize(float size, const Dictionary& dict) {
    Pallet& colours = pallet();
    auto ready = [&](float ratio) { return colours.colourForReadyScore(ratio); };
    auto charge = [&](float percent) { return colours.colourForBatteryChargePercent(percent); };
    gauge::StarDial dial = starDial(size);
    dial.bands = gauge::starBandColours(ready(0), ready(0), {ready(0.6f), charge(0.9f), charge(1.0f), charge(0.9f),
                                                             ready(0.6f), ready(0)});
    dial.icon = "InBedIcon";
    dial.label = optionalText(dict, keys::kStarsLabel);
    dial.placement = {widgetMode ? 28.0f : 24.0f, -5.1};
    dial.needle = gauge::starFraction(consistencyStars(number(dict, keys::kBedTrend) / 60));
    return drawLater(platform_, size,
                     [dial](PictureTools& tools) { return gauge::drawStarDial(dial, tools); });
}

platform::ImagePtr SleepMetricsUI::drawWristTempGaugeWithSize(float size, const Dictionary& dict) {
    Pallet& colours = pallet();
    // Both round ends keep the lowest score's colour, also the one past 7.
    auto wrist = [&](float rating) { return colours.colourForWristTempScore(rating); };
    gauge::StarDial dial = starDial(size);
    dial.bands = gauge::starBandColours(wrist(0.5f), wrist(0.5f), {wrist(1.5f), wrist(2.5f), wrist(3.5f), wrist(4.5f),
                                                                   wrist(5.5f), wrist(6.5f)});
    dial.icon = "WristTempIcon";
    dial.label = optionalText(dict, keys::kWristTempDifLabel);
    dial.needle = gauge::starFraction(number(dict, keys::kWristTempScore));
    return drawLater(platform_, size,
                     [dial](PictureTools& tools) { return gauge::drawStarDial(dial, tools); });
}

}  // namespace velmorant::snippet_ui
