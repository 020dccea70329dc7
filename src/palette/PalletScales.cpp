#include "palette/Pallet.h"

#include <algorithm>
#include <iterator>

// The rating scales. Thresholds are single-precision unless written as double
// literals: the double ones are deliberate and decide which band a float that
// lies next to the bound falls in.

namespace velmorant::palette {

using platform::Colour;

Colour Pallet::colourForBatteryChargePercent(float p) const {
    if (p >= 1.5f) {
        float t = std::min(1.0f, 1.0f - 2.0f * (2.0f - p));
        return hsb(hue5_, 0.8, 0.8 + 0.2 * t);
    }
    if (p >= 1.0f) {
        float t = 1.0f - 2.0f * (1.5f - p);
        return hsb(hue4_, 0.8, 0.6 + 0.3 * t);
    }
    if (p >= 0.85) {
        float t = 1.0f - (1.0f - p) / 0.15f;
        return hsb(hue3_, 0.94, 0.8 + 0.15 * t);
    }
    if (p >= 0.75f) {
        float t = 1.0f - (0.85f - p) / 0.1f;
        return hsb(hue2_, 0.8, 0.75 + 0.15 * t);
    }
    // Not clamped: far below the scale the colour simply goes darker.
    float t = 1.0f - (0.75f - p) / 0.75f;
    return hsb(hue1_, 0.69, 0.7 + 0.2 * t);
}

Colour Pallet::lightRatingColour(float percentage) const { return colourForBatteryChargePercent(percentage / 100.0f); }

Colour Pallet::colourForReadyScore(float r) const {
    float percentage = 50;
    if (r > 1.5f) percentage = 160;
    else if (r > 1.2f) percentage = 140;
    else if (r > 0.95f) percentage = 120;
    else if (r > 0.825f) percentage = 110;
    else if (r > 0.7f) percentage = 99;
    else if (r > 0.5f) percentage = 75;
    return lightRatingColour(percentage);
}

float Pallet::starsValueForReadyPercent(float r) const {
    if (r > 1.5f) {
        float stars = 6.0f + 2.0f * (r - 1.5f);
        return stars >= 7.0f ? 6.99f : stars;
    }
    if (r > 1.2f) return static_cast<float>(5.0 + (r - 1.2f) / (1.5 - 1.2));
    if (r > 0.95f) return 4.0f + 4.0f * (r - 0.95f);
    if (r > 0.825f) return 3.0f + 8.0f * (r - 0.825f);
    if (r > 0.7f) return 2.0f + 8.0f * (r - 0.7f);
    if (r > 0.5f) return static_cast<float>(1.0 + (r - 0.5f) / (0.7 - 0.5));
    return 2.0f * r;
}

float Pallet::starsValueForRespRate(float b) const {
    if (b < 11.99) return b / 12.0f + b / 12.0f;
    if (b >= 20.49) return std::min(6.99f, 5.0f + 2.0f * (b - 20.5f) / 9.5f);
    if (b < 16.25f) return std::clamp(3.5f - 1.5f * (16.25f - b) / 4.25f, 2.0f, 3.5f);
    if (b == 16.25f) return 3.5f;
    return std::min(4.99f, 3.5f + 1.5f * (b - 16.25f) / 4.25f);
}

Colour Pallet::colourForSpO2Reading(float s) const {
    if (s >= 95.0f) return spO2TintGood();
    if (s >= 90.0f) return spO2TintOK();
    return spO2TintBad();
}

// Respiration is rated with the blood-oxygen tints so both indicators match.
Colour Pallet::colourForRespRateReading(float b) const {
    return (11.999f <= b && b < 20.499f) ? spO2TintGood() : spO2TintBad();
}

Colour Pallet::colourForRespRateGraphReading(float b) const {
    return (11.999f <= b && b < 20.499f) ? colourForRespRateLineGood() : colourForRespRateLineBad();
}

float Pallet::wristTempScoreForValue(float v, float baseline) {
    if (v <= 0 || baseline <= 0) return 0;
    float d = v - baseline;
    // Scores are banded in Celsius degrees.
    if (platform_.standardUserDefaults()->boolForKey("tempF")) d = d / 1.8f;

    if (d >= -0.25f && d <= 0.25f) return 3.0f + 2.0f * (d + 0.25f);
    if (d > 0.25f && d <= 1.0f) return 4.0f + (d - 0.25f) * 4.0f / 3.0f;
    if (d > 1.0f && d <= 1.5f) return 5.0f + 2.0f * (d - 1.0f);
    if (d > 1.5f) {
        float above = 2.0f * (d - 1.5f);
        return above > 1.0f ? 7.0f : 6.0f + above;
    }
    if (d >= -1.0f && d < -0.25f) return 3.0f + (d + 0.25f) * 4.0f / 3.0f;
    if (d >= -1.5f && d < -1.0f) return 2.0f + 2.0f * (d + 1.0f);
    if (d < -1.5f) {
        float below = 2.0f * (d + 1.5f);
        return below < -1.0f ? 0.0f : 1.0f + below;
    }
    return 0;  // not a number
}

// Symmetric: the best colour sits on the baseline, and it worsens either way.
Colour Pallet::colourForWristTempScore(float s) const {
    float percentage = 70;
    if (s >= 6) percentage = 70;
    else if (s >= 5) percentage = 90;
    else if (s >= 4) percentage = 105;
    else if (s >= 3) percentage = 120;
    else if (s >= 2) percentage = 105;
    else if (s >= 1) percentage = 90;
    return lightRatingColour(percentage);
}

Colour Pallet::wristTempColourForValue(float value, float baseline) {
    return colourForWristTempScore(wristTempScoreForValue(value, baseline));
}

namespace {
// How far above the half-way mark a sleep share is, as a brightness.
float sleepShareBrightness(float p, bool dark) {
    if (p >= 2.0f) return 1.0f;
    float base = dark ? 0.7f : 0.5f;
    float span = 1.0f - base;
    return base + std::clamp(span * 2.0f * (p - 0.5f), 0.0f, span);
}
}  // namespace

Colour Pallet::colourForQualityWithPercent(float p) const {
    return hsb(256, 0.55, sleepShareBrightness(p, darkTheme_));
}

Colour Pallet::colourForDeepSleepWithPercent(float p) const {
    return hsb(256, 0.75, sleepShareBrightness(p, darkTheme_));
}

Colour Pallet::efficiencyRatingColour(float e) const {
    float r = e / 100.0f;
    if (r >= 0.9f) return hsb(hue4_, 0.8, 0.6f + 0.3f * (1.0f - 2.0f * (1.0f - r)));
    if (r >= 0.85f) return hsb(hue3_, 0.94, 0.8f + 0.15f * (1.0f - 4.0f * (1.0f - r)));
    if (r >= 0.8f) return hsb(hue2_, 0.8, 0.75f + 0.15f * (1.0f - 4.0f * (0.85f - r)));
    return hsb(hue1_, 0.69, 0.7f + 0.2f * (1.0f - 2.0f * (0.8f - r)));
}

// Against the user's average, a lower rate is good and a rate well above it poor.
Colour Pallet::heartRatingColourForBPM(float bpm, float average) const {
    float d = bpm - average;
    if (d < 0) return hsb(hue4_, 0.8, 0.8);
    if (d >= 4.5f) return hsb(hue1_, 0.69, 0.7);
    if (d >= 3.5f) return hsb(hue2_, 0.8, 0.8);
    if (d >= 2.0f) return hsb(hue3_, 0.94, 0.8);
    if (d >= 1.0f) return hsb(hue3_, 0.94, 0.9);
    return hsb(hue4_, 0.8, 0.7);
}

Colour Pallet::colourForClockFace(long face, bool darker) const {
    switch (face) {
        case 1: return darker ? hsb(193, 0.92, 0.15) : hsb(193, 0.1, 0.95);
        case 2: return darker ? hsb(193, 0.92, 0.2) : hsb(193, 0.2, 0.8);
        case 3: return darker ? hsb(255, 0.52, 0.15) : hsb(255, 0.1, 0.15);
        case 4: return darker ? hsb(207, 0.92, 0.15) : hsb(207, 0.92, 0.25);
        case 5: return darker ? hsb(193, 0.92, 0.25) : hsb(192, 0.92, 0.3);
        default: return darker ? Colour::blackColor() : hsb(193, 0, 0.98);
    }
}

Colour Pallet::colourForRestingBPM(float bpm) {
    loadPrefs();
    if (bpm >= restingElevated_) return hsb(357, 0.8, 1);
    if (bpm >= restingHigh_) return hsb(270, 0.4, 0.67);
    if (bpm >= restingNormal_ + 5) return hsb(207, 0.75, 0.92);
    if (bpm >= restingNormal_) return hsb(207, 0.65, 0.94);
    if (bpm >= restingLow_) return hsb(354, 0.4, 0.75);
    return hsb(354, 0.4, 0.5);
}

Colour Pallet::colourForWorkoutBPM(float bpm) {
    loadPrefs();
    float p = bpm / maxHeartRate_ * 100.0f;
    if (p >= workoutPercent1_) return colourForWorkoutZone(0);
    if (p >= workoutPercent2_) return colourForWorkoutZone(1);
    if (p >= workoutPercent3_) return colourForWorkoutZone(2);
    if (p >= workoutPercent4_) return colourForWorkoutZone(3);
    if (p >= workoutPercent5_) return colourForWorkoutZone(4);
    // Below every zone the effort is rated as a resting rate.
    return colourForRestingBPM(bpm);
}

Colour Pallet::colourForWorkoutZone(long zone) const {
    switch (zone) {
        case 0: return hsb(357, 0.8, 1);
        case 1: return hsb(357, 0.69, 0.87);
        case 2: return hsb(44, 0.94, 0.91);
        case 3: return hsb(139, 0.82, 0.65);
        default: return hsb(171, 0.82, 0.55);
    }
}

Colour Pallet::colourForLoadPercent(float p) const {
    if (p <= 0.3f) return hsb(205, 0.99, 0.99);
    if (p <= 0.5f) return hsb(60, 0.89, 0.75);
    if (p <= 0.7f) return hsb(34, 0.99, 0.99);
    if (p <= 0.9f) return hsb(356, 0.8, 0.99);
    return hsb(354, 0.99, 0.99);
}

Colour Pallet::colourForFeelingPercent(float p) const {
    if (p < 0.29f) return hsb(356, 0.79, 0.84);
    if (p < 0.69f) return hsb(200, 0.6, 0.8);
    return hsb(134, 0.85, 0.6);
}

Colour Pallet::colourForSorenessPercent(float p) const {
    if (p <= 0.29f) return hsb(134, 0.85, 0.6);
    if (p <= 0.49f) return hsb(42, 0.96, 0.89);
    if (p <= 0.79f) return hsb(356, 0.79, 0.84);
    return hsb(354, 0.92, 0.98);
}

std::string Pallet::emojiForFeeling(float f) const {
    const char* key = f < 3 ? "💩" : f < 7 ? "😐" : "😄";
    return platform_.localizedString(key, "");
}

std::string Pallet::textForSpeedZone(long zone) const {
    static constexpr const char* kZones[] = {"Bolting", "Running", "Jogging", "Brisk",  "Walking",
                                             "Mobile",  "Active",  "Semi-Active", "Minimal"};
    constexpr long count = static_cast<long>(std::size(kZones));
    const char* key = (zone >= 0 && zone < count) ? kZones[zone] : "Nothing";
    return platform_.localizedString(key, "");
}

}  // namespace velmorant::palette
