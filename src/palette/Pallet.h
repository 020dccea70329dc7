#pragma once

#include "platform/core/Colour.h"
#include "platform/views/Controls.h"
#include "platform/services/Platform.h"
#include "platform/core/Value.h"
#include "platform/views/View.h"

#include <optional>
#include <string>

namespace velmorant::palette {

// The extension's palette: the theme in force, the user's five rating hues and
// heart-rate thresholds, every fixed colour, the scales that rate a metric
// value as a colour, star value or word, and the styling of a few views.
// Colour operations return a new colour each time and keep no state.
class Pallet {
public:
    // Reads the theme and the rating hues; the heart-rate thresholds stay 0
    // until `loadPrefs`.
    explicit Pallet(platform::Platform& platform);

    // Preferences and theme (Pallet.cpp).
    void loadPrefs();
    void loadCustomHues();
    // Takes hues 1-5 from the first five entries; a missing or shorter array changes nothing.
    void loadCustomHuesFromArray(const std::optional<platform::Array>& hues);
    // Switching dark on over a light theme marks it as temporary.
    void setDarkTheme(bool dark);
    void restoreTheme();
    bool isDarkTheme() const { return darkTheme_; }
    bool isTemporaryDark() const { return temporaryDark_; }

    float maxHeartRate() const { return maxHeartRate_; }
    float restingElevated() const { return restingElevated_; }
    float restingHigh() const { return restingHigh_; }
    float restingNormal() const { return restingNormal_; }
    float restingLow() const { return restingLow_; }
    float restingVeryLow() const { return restingVeryLow_; }
    float workoutPercent1() const { return workoutPercent1_; }
    float workoutPercent2() const { return workoutPercent2_; }
    float workoutPercent3() const { return workoutPercent3_; }
    float workoutPercent4() const { return workoutPercent4_; }
    float workoutPercent5() const { return workoutPercent5_; }
    // Rating hues in degrees, hue1 the worst rating and hue5 the best.
    float hue1() const { return hue1_; }
    float hue2() const { return hue2_; }
    float hue3() const { return hue3_; }
    float hue4() const { return hue4_; }
    float hue5() const { return hue5_; }
    bool miles() const { return miles_; }

    // Backgrounds and lines (PalletBaseColours.cpp).
    platform::Colour backgroundColour() const;
    platform::Colour intenseBackgroundColour() const;
    platform::Colour seperatorColour() const;
    platform::Colour sectionLineColour() const;
    platform::Colour cellColour() const;
    platform::Colour subtleBackgroundColour() const;
    platform::Colour sleepingColour() const;
    platform::Colour gradientFadeColour() const;
    platform::Colour colourForSubtleSleepRing() const;
    platform::Colour colourForAdjustBackground() const;
    platform::Colour colourForSectionHeaderLine() const;
    platform::Colour clockRingColour() const;
    platform::Colour clockOutlineColour() const;

    // Text and headings.
    platform::Colour headingColour() const;
    platform::Colour subtleHeadingColour() const;
    platform::Colour tintColour() const;
    platform::Colour highTintColour() const;
    platform::Colour textColour() const;
    platform::Colour subtleTextColour() const;
    platform::Colour verySubtleTextColour() const;
    platform::Colour textEntryColour() const;
    platform::Colour textEntryBackground() const;
    platform::Colour minorTextColour() const;
    platform::Colour footerTextColour() const;
    platform::Colour colourForSleepSectionHeading() const;
    platform::Colour colourForWellnessSectionHeading() const;
    platform::Colour colourForHour() const;

    // Sleep states and clock.
    platform::Colour colourWhenRestless() const;
    platform::Colour colourWhenAwake() const;
    platform::Colour noiseTint() const;
    platform::Colour noiseTintHigh() const;
    platform::Colour noiseTintLoud() const;
    platform::Colour spO2LabelTint() const;
    platform::Colour colourForRespRateLine() const;
    platform::Colour colourForRespRateLineGood() const;

    // The same in both themes.
    platform::Colour colourForNightHour() const;
    platform::Colour colourForMajorHour() const;
    platform::Colour pickerBackgroundColour() const;
    platform::Colour featureBackgroundColour() const;
    platform::Colour colourForPurpleEye() const;
    platform::Colour switchOnColour() const;
    platform::Colour mutedColourWhenRestless() const;
    platform::Colour mutedColourWhenAwake() const;
    platform::Colour mutedColourForLightsOff() const;
    platform::Colour colourForLightsOff() const;
    platform::Colour colourForREMSleep() const;
    platform::Colour colourForDeepSleep() const;
    platform::Colour colourForRestfulSleep() const;
    platform::Colour clockSleepSessionColour() const;
    platform::Colour clockSleepSessionColourSpecial() const;
    platform::Colour darkModeSelectedTint() const;
    platform::Colour darkModeBkgTint() const;
    platform::Colour noiseLabelTint() const;
    platform::Colour trackBkgColour() const;
    platform::Colour trackColour() const;
    platform::Colour trackWorkoutBkgColour() const;
    platform::Colour trackWorkoutColour() const;
    platform::Colour colourForRespRateLineBad() const;
    platform::Colour colourForHRDipZone(float value) const;

    // Fixed rating tints.
    platform::Colour spO2TintGood() const;
    platform::Colour spO2TintOK() const;
    platform::Colour spO2TintBad() const;
    platform::Colour respRateTintGood() const;
    platform::Colour respRateTintBad() const;

    // Rating scales (PalletScales.cpp). Fractions are 1.0 for 100 %.
    platform::Colour colourForBatteryChargePercent(float percent) const;
    platform::Colour lightRatingColour(float percentage) const;
    platform::Colour colourForReadyScore(float ratio) const;
    float starsValueForReadyPercent(float ratio) const;
    float starsValueForRespRate(float breaths) const;
    platform::Colour colourForSpO2Reading(float percent) const;
    platform::Colour colourForRespRateReading(float breaths) const;
    platform::Colour colourForRespRateGraphReading(float breaths) const;
    // 0 to 7, 3.5 on the baseline; reads the "tempF" preference.
    float wristTempScoreForValue(float value, float baseline);
    platform::Colour colourForWristTempScore(float score) const;
    platform::Colour wristTempColourForValue(float value, float baseline);
    platform::Colour colourForQualityWithPercent(float percent) const;
    platform::Colour colourForDeepSleepWithPercent(float percent) const;
    platform::Colour efficiencyRatingColour(float percent) const;
    platform::Colour heartRatingColourForBPM(float bpm, float average) const;
    platform::Colour colourForClockFace(long face, bool darker) const;
    // These two read the heart-rate thresholds again first.
    platform::Colour colourForRestingBPM(float bpm);
    platform::Colour colourForWorkoutBPM(float bpm);
    platform::Colour colourForWorkoutZone(long zone) const;
    platform::Colour colourForLoadPercent(float percent) const;
    platform::Colour colourForFeelingPercent(float percent) const;
    platform::Colour colourForSorenessPercent(float percent) const;
    std::string emojiForFeeling(float feeling) const;
    std::string textForSpeedZone(long zone) const;

    // View styling (PalletStyling.cpp).
    void applyGradientToView(platform::View& view) const;
    void applyChildGradientToView(platform::View& view) const;
    void applyTitleBackgroundToView(platform::View& view) const;
    void applyLowerTitleBackgroundToView(platform::View& view) const;
    void applyLowerTitleBackgroundToChildView(platform::View& view) const;
    void applyTintToSegmentedControl(platform::SegmentedControl& control) const;
    void applyTintToStepperControl(platform::Stepper& stepper) const;
    platform::Colour innerShadeForType(float type) const;

private:
    // A colour from a hue in degrees, alpha 1.
    static platform::Colour hsb(double hueDegrees, double saturation, double brightness);
    void readTheme();
    void applyGradient(platform::View& view, const platform::Colour& lightTop,
                       const platform::Colour& lightBottom) const;

    platform::Platform& platform_;

    float maxHeartRate_ = 0;
    float restingElevated_ = 0;
    float restingHigh_ = 0;
    float restingNormal_ = 0;
    float restingLow_ = 0;
    float restingVeryLow_ = 0;
    float workoutPercent1_ = 0;
    float workoutPercent2_ = 0;
    float workoutPercent3_ = 0;
    float workoutPercent4_ = 0;
    float workoutPercent5_ = 0;
    float hue1_ = 0;
    float hue2_ = 0;
    float hue3_ = 0;
    float hue4_ = 0;
    float hue5_ = 0;
    bool miles_ = false;
    bool darkTheme_ = false;
    bool temporaryDark_ = false;
};

}  // namespace velmorant::palette
