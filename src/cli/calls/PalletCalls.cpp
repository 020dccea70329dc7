#include "cli/CallRegistry.h"
#include "palette/Pallet.h"

#include <utility>

namespace velmorant::cli {
using palette::Pallet;

namespace {

using platform::Colour;

// Each call works on a freshly made palette, as every drawing component makes its own.
template <typename Result>
void addNoArgument(CallRegistry& registry, const char* selector, Result (Pallet::*operation)() const) {
    registry.add("Pallet", selector, {}, [operation](platform::Platform& p, const CallArgs&) -> CallResult {
        Pallet pallet(p);
        return CallResult((pallet.*operation)());
    });
}

// A single number argument read as the float the operation takes; nil gives none.
template <typename Result, typename Operation>
void addNumber(CallRegistry& registry, const char* selector, Operation operation) {
    registry.add("Pallet", selector, {ParamType::Number},
                 [operation](platform::Platform& p, const CallArgs& a) -> CallResult {
                     if (a.isNil(0)) return {};
                     Pallet pallet(p);
                     return CallResult(Result((pallet.*operation)(a.floatNumber(0))));
                 });
}

template <typename Result, typename Operation>
void addInteger(CallRegistry& registry, const char* selector, Operation operation) {
    registry.add("Pallet", selector, {ParamType::Integer},
                 [operation](platform::Platform& p, const CallArgs& a) -> CallResult {
                     if (a.isNil(0)) return {};
                     Pallet pallet(p);
                     return CallResult(Result((pallet.*operation)(a.integer(0))));
                 });
}

template <typename Result, typename Operation>
void addTwoNumbers(CallRegistry& registry, const char* selector, Operation operation) {
    registry.add("Pallet", selector, {ParamType::Number, ParamType::Number},
                 [operation](platform::Platform& p, const CallArgs& a) -> CallResult {
                     if (a.isNil(0) || a.isNil(1)) return {};
                     Pallet pallet(p);
                     return CallResult(Result((pallet.*operation)(a.floatNumber(0), a.floatNumber(1))));
                 });
}

void addThemeCalls(CallRegistry& registry) {
    // Theme, hues and thresholds as a new palette has them (thresholds are read by loadPrefs only).
    const std::pair<const char*, bool (Pallet::*)() const> flags[] = {
        {"isDarkTheme", &Pallet::isDarkTheme},
        {"isTemporaryDark", &Pallet::isTemporaryDark},
        {"miles", &Pallet::miles},
    };
    for (const auto& [selector, op] : flags) addNoArgument(registry, selector, op);

    const std::pair<const char*, float (Pallet::*)() const> numbers[] = {
        {"maxHeartRate", &Pallet::maxHeartRate},       {"restingElevated", &Pallet::restingElevated},
        {"restingHigh", &Pallet::restingHigh},         {"restingNormal", &Pallet::restingNormal},
        {"restingLow", &Pallet::restingLow},           {"restingVeryLow", &Pallet::restingVeryLow},
        {"workoutPercent1", &Pallet::workoutPercent1}, {"workoutPercent2", &Pallet::workoutPercent2},
        {"workoutPercent3", &Pallet::workoutPercent3}, {"workoutPercent4", &Pallet::workoutPercent4},
        {"workoutPercent5", &Pallet::workoutPercent5}, {"hue1", &Pallet::hue1},
        {"hue2", &Pallet::hue2},                       {"hue3", &Pallet::hue3},
        {"hue4", &Pallet::hue4},                       {"hue5", &Pallet::hue5},
    };
    for (const auto& [selector, op] : numbers) addNoArgument(registry, selector, op);

    const std::pair<const char*, Colour (Pallet::*)() const> colours[] = {
        {"backgroundColour", &Pallet::backgroundColour},
        {"intenseBackgroundColour", &Pallet::intenseBackgroundColour},
        {"seperatorColour", &Pallet::seperatorColour},
        {"sectionLineColour", &Pallet::sectionLineColour},
        {"cellColour", &Pallet::cellColour},
        {"subtleBackgroundColour", &Pallet::subtleBackgroundColour},
        {"sleepingColour", &Pallet::sleepingColour},
        {"gradientFadeColour", &Pallet::gradientFadeColour},
        {"colourForSubtleSleepRing", &Pallet::colourForSubtleSleepRing},
        {"colourForAdjustBackground", &Pallet::colourForAdjustBackground},
        {"colourForSectionHeaderLine", &Pallet::colourForSectionHeaderLine},
        {"clockRingColour", &Pallet::clockRingColour},
        {"clockOutlineColour", &Pallet::clockOutlineColour},
        {"headingColour", &Pallet::headingColour},
        {"subtleHeadingColour", &Pallet::subtleHeadingColour},
        {"tintColour", &Pallet::tintColour},
        {"highTintColour", &Pallet::highTintColour},
        {"textColour", &Pallet::textColour},
        {"subtleTextColour", &Pallet::subtleTextColour},
        {"verySubtleTextColour", &Pallet::verySubtleTextColour},
        {"textEntryColour", &Pallet::textEntryColour},
        {"textEntryBackground", &Pallet::textEntryBackground},
        {"minorTextColour", &Pallet::minorTextColour},
        {"footerTextColour", &Pallet::footerTextColour},
        {"colourForSleepSectionHeading", &Pallet::colourForSleepSectionHeading},
        {"colourForWellnessSectionHeading", &Pallet::colourForWellnessSectionHeading},
        {"colourForHour", &Pallet::colourForHour},
        {"colourWhenRestless", &Pallet::colourWhenRestless},
        {"colourWhenAwake", &Pallet::colourWhenAwake},
        {"noiseTint", &Pallet::noiseTint},
        {"noiseTintHigh", &Pallet::noiseTintHigh},
        {"noiseTintLoud", &Pallet::noiseTintLoud},
        {"spO2LabelTint", &Pallet::spO2LabelTint},
        {"colourForRespRateLine", &Pallet::colourForRespRateLine},
        {"colourForRespRateLineGood", &Pallet::colourForRespRateLineGood},
        {"colourForNightHour", &Pallet::colourForNightHour},
        {"colourForMajorHour", &Pallet::colourForMajorHour},
        {"pickerBackgroundColour", &Pallet::pickerBackgroundColour},
        {"featureBackgroundColour", &Pallet::featureBackgroundColour},
        {"colourForPurpleEye", &Pallet::colourForPurpleEye},
        {"switchOnColour", &Pallet::switchOnColour},
        {"mutedColourWhenRestless", &Pallet::mutedColourWhenRestless},
        {"mutedColourWhenAwake", &Pallet::mutedColourWhenAwake},
        {"mutedColourForLightsOff", &Pallet::mutedColourForLightsOff},
        {"colourForLightsOff", &Pallet::colourForLightsOff},
        {"colourForREMSleep", &Pallet::colourForREMSleep},
        {"colourForDeepSleep", &Pallet::colourForDeepSleep},
        {"colourForRestfulSleep", &Pallet::colourForRestfulSleep},
        {"clockSleepSessionColour", &Pallet::clockSleepSessionColour},
        {"clockSleepSessionColourSpecial", &Pallet::clockSleepSessionColourSpecial},
        {"darkModeSelectedTint", &Pallet::darkModeSelectedTint},
        {"darkModeBkgTint", &Pallet::darkModeBkgTint},
        {"noiseLabelTint", &Pallet::noiseLabelTint},
        {"trackBkgColour", &Pallet::trackBkgColour},
        {"trackColour", &Pallet::trackColour},
        {"trackWorkoutBkgColour", &Pallet::trackWorkoutBkgColour},
        {"trackWorkoutColour", &Pallet::trackWorkoutColour},
        {"colourForRespRateLineBad", &Pallet::colourForRespRateLineBad},
        {"spO2TintGood", &Pallet::spO2TintGood},
        {"spO2TintOK", &Pallet::spO2TintOK},
        {"spO2TintBad", &Pallet::spO2TintBad},
        {"respRateTintGood", &Pallet::respRateTintGood},
        {"respRateTintBad", &Pallet::respRateTintBad},
    };
    for (const auto& [selector, op] : colours) addNoArgument(registry, selector, op);
}

// Colours, stars and texts for a figure.
void addScaleCalls(CallRegistry& registry) {
    using ColourOfNumber = Colour (Pallet::*)(float) const;
    const std::pair<const char*, ColourOfNumber> colourScales[] = {
        {"colourForHRDipZone:", &Pallet::colourForHRDipZone},
        {"colourForBatteryChargePercent:", &Pallet::colourForBatteryChargePercent},
        {"lightRatingColour:", &Pallet::lightRatingColour},
        {"colourForReadyScore:", &Pallet::colourForReadyScore},
        {"colourForSpO2Reading:", &Pallet::colourForSpO2Reading},
        {"colourForRespRateReading:", &Pallet::colourForRespRateReading},
        {"colourForRespRateGraphReading:", &Pallet::colourForRespRateGraphReading},
        {"colourForWristTempScore:", &Pallet::colourForWristTempScore},
        {"colourForQualityWithPercent:", &Pallet::colourForQualityWithPercent},
        {"colourForDeepSleepWithPercent:", &Pallet::colourForDeepSleepWithPercent},
        {"efficiencyRatingColour:", &Pallet::efficiencyRatingColour},
        {"colourForLoadPercent:", &Pallet::colourForLoadPercent},
        {"colourForFeelingPercent:", &Pallet::colourForFeelingPercent},
        {"colourForSorenessPercent:", &Pallet::colourForSorenessPercent},
        {"innerShadeForType:", &Pallet::innerShadeForType},
    };
    for (const auto& [selector, op] : colourScales) addNumber<Colour>(registry, selector, op);

    addNumber<Colour>(registry, "colourForRestingBPM:", &Pallet::colourForRestingBPM);
    addNumber<Colour>(registry, "colourForWorkoutBPM:", &Pallet::colourForWorkoutBPM);
    addNumber<float>(registry, "starsValueForReadyPercent:", &Pallet::starsValueForReadyPercent);
    addNumber<float>(registry, "starsValueForRespRate:", &Pallet::starsValueForRespRate);
    addNumber<std::string>(registry, "emojiForFeeling:", &Pallet::emojiForFeeling);
    addInteger<Colour>(registry, "colourForWorkoutZone:", &Pallet::colourForWorkoutZone);
    addInteger<std::string>(registry, "textForSpeedZone:", &Pallet::textForSpeedZone);
    addTwoNumbers<float>(registry, "wristTempScoreForValue:forBaseline:", &Pallet::wristTempScoreForValue);
    addTwoNumbers<Colour>(registry, "wristTempColourForValue:forBaseline:", &Pallet::wristTempColourForValue);
    addTwoNumbers<Colour>(registry, "heartRatingColourForBPM:againstAverage:", &Pallet::heartRatingColourForBPM);

    registry.add("Pallet", "colourForClockFace:isDarker:", {ParamType::Integer, ParamType::Bool},
                 [](platform::Platform& p, const CallArgs& a) -> CallResult {
                     if (a.isNil(0)) return {};
                     Pallet pallet(p);
                     // A nil flag reads as off.
                     return CallResult(pallet.colourForClockFace(a.integer(0), a.boolean(1)));
                 });
}

}  // namespace

void registerPalletCalls(CallRegistry& registry) {
    addThemeCalls(registry);
    addScaleCalls(registry);
}

}  // namespace velmorant::cli
