#include "palette/Pallet.h"

namespace velmorant::palette {

using platform::Colour;

// Backgrounds and lines.
Colour Pallet::backgroundColour() const { return darkTheme_ ? hsb(193, 0.92, 0.08) : hsb(193, 0, 0.98); }
Colour Pallet::intenseBackgroundColour() const { return darkTheme_ ? hsb(193, 0.92, 0) : hsb(193, 0, 1); }
Colour Pallet::seperatorColour() const { return darkTheme_ ? hsb(193, 0.92, 0.02) : hsb(193, 0, 1); }
Colour Pallet::sectionLineColour() const { return darkTheme_ ? hsb(193, 0.1, 0.12) : hsb(193, 0, 0.95); }
Colour Pallet::cellColour() const { return darkTheme_ ? hsb(193, 0.92, 0.14) : hsb(193, 0, 0.92); }
Colour Pallet::subtleBackgroundColour() const { return darkTheme_ ? hsb(193, 0.92, 0.14) : hsb(193, 0, 0.92); }
Colour Pallet::sleepingColour() const { return darkTheme_ ? hsb(193, 0.92, 0.24) : hsb(193, 0, 0.92); }
Colour Pallet::gradientFadeColour() const { return darkTheme_ ? hsb(239, 0.2, 0) : hsb(239, 0, 0.94); }
Colour Pallet::colourForSubtleSleepRing() const { return darkTheme_ ? hsb(207, 0.15, 0.38) : hsb(207, 0.2, 0.65); }
Colour Pallet::colourForAdjustBackground() const { return darkTheme_ ? hsb(207, 0.15, 0.38) : hsb(207, 0, 0.95); }
Colour Pallet::colourForSectionHeaderLine() const { return darkTheme_ ? Colour::blackColor() : sectionLineColour(); }
Colour Pallet::clockRingColour() const { return darkTheme_ ? hsb(193, 0.05, 0.08) : hsb(193, 0.05, 0.85); }
Colour Pallet::clockOutlineColour() const { return darkTheme_ ? Colour::blackColor() : hsb(193, 0, 0.95); }

// Text and headings.
Colour Pallet::headingColour() const { return darkTheme_ ? hsb(55, 0.1, 1) : hsb(55, 0, 0.1); }
Colour Pallet::subtleHeadingColour() const { return darkTheme_ ? hsb(60, 0.1, 0.9) : hsb(55, 0, 0.15); }
Colour Pallet::tintColour() const { return darkTheme_ ? hsb(55, 0.2, 1) : hsb(55, 0, 0.1); }
Colour Pallet::highTintColour() const { return darkTheme_ ? hsb(60, 0.34, 1) : hsb(55, 0, 0.1); }
Colour Pallet::textColour() const { return darkTheme_ ? hsb(55, 0.05, 0.85) : hsb(55, 0, 0.15); }
Colour Pallet::subtleTextColour() const { return darkTheme_ ? hsb(55, 0.05, 0.67) : hsb(55, 0, 0.3); }
Colour Pallet::verySubtleTextColour() const { return darkTheme_ ? hsb(55, 0.05, 0.55) : hsb(55, 0, 0.45); }
Colour Pallet::textEntryColour() const { return darkTheme_ ? hsb(55, 0.05, 0.85) : hsb(55, 0, 0.15); }
Colour Pallet::textEntryBackground() const { return darkTheme_ ? hsb(199, 0.73, 0.49) : hsb(55, 0, 0.8); }
Colour Pallet::minorTextColour() const { return darkTheme_ ? hsb(55, 0.05, 0.85) : hsb(55, 0, 0.2); }
Colour Pallet::footerTextColour() const { return darkTheme_ ? hsb(55, 0.05, 0.75) : hsb(55, 0, 0.2); }
Colour Pallet::colourForSleepSectionHeading() const { return darkTheme_ ? hsb(55, 0.1, 0.85) : hsb(193, 0, 0.1); }
Colour Pallet::colourForWellnessSectionHeading() const { return darkTheme_ ? hsb(55, 0.1, 0.85) : hsb(193, 0, 0.1); }
Colour Pallet::colourForHour() const { return darkTheme_ ? hsb(55, 0, 0.8) : hsb(55, 0, 1); }

// Sleep states and clock.
Colour Pallet::colourWhenRestless() const { return darkTheme_ ? hsb(197, 0.74, 0.8) : hsb(197, 0.74, 0.5); }
Colour Pallet::colourWhenAwake() const { return darkTheme_ ? hsb(133, 0.85, 0.71) : hsb(133, 0.85, 0.6); }
Colour Pallet::noiseTint() const { return darkTheme_ ? hsb(43, 0.8, 0.3) : hsb(43, 0.2, 0.9); }
Colour Pallet::noiseTintHigh() const { return darkTheme_ ? hsb(43, 1, 0.7) : hsb(43, 1, 0.8); }
Colour Pallet::noiseTintLoud() const { return darkTheme_ ? hsb(43, 1, 0.85) : hsb(43, 1, 0.9); }
Colour Pallet::spO2LabelTint() const { return darkTheme_ ? hsb(43, 0, 0.98) : hsb(43, 0, 0.02); }
Colour Pallet::colourForRespRateLine() const { return darkTheme_ ? hsb(65, 1, 0.9) : hsb(55, 1, 0.1); }
Colour Pallet::colourForRespRateLineGood() const { return darkTheme_ ? hsb(hue4_, 1, 0.9) : hsb(hue4_, 1, 0.75); }

// The same in both themes.
Colour Pallet::colourForNightHour() const { return hsb(55, 0.23, 1); }
Colour Pallet::colourForMajorHour() const { return hsb(55, 0, 1); }
Colour Pallet::pickerBackgroundColour() const { return hsb(55, 0.5, 0.7); }
Colour Pallet::featureBackgroundColour() const { return hsb(193, 0.92, 0.05); }
Colour Pallet::colourForPurpleEye() const { return hsb(274, 0.7, 1); }
Colour Pallet::switchOnColour() const { return hsb(199, 0.73, 0.49); }
Colour Pallet::mutedColourWhenRestless() const { return hsb(197, 0.74, 0.65); }
Colour Pallet::mutedColourWhenAwake() const { return hsb(133, 0.85, 0.6); }
Colour Pallet::mutedColourForLightsOff() const { return hsb(43, 0.88, 0.8); }
Colour Pallet::colourForLightsOff() const { return hsb(43, 0.88, 1); }
Colour Pallet::colourForREMSleep() const { return hsb(283, 0.8, 1); }
Colour Pallet::colourForDeepSleep() const { return hsb(256, 0.6, 1); }
Colour Pallet::colourForRestfulSleep() const { return colourForDeepSleepWithPercent(0.7f); }
Colour Pallet::clockSleepSessionColour() const { return hsb(193, 0.05, 0.85); }
Colour Pallet::clockSleepSessionColourSpecial() const { return hsb(193, 0.05, 0.85); }
Colour Pallet::darkModeSelectedTint() const { return hsb(208, 0.15, 0.42); }
Colour Pallet::darkModeBkgTint() const { return hsb(202, 0.37, 0.19); }
Colour Pallet::noiseLabelTint() const { return hsb(43, 1, 0.75); }
Colour Pallet::trackBkgColour() const { return hsb(6, 0.63, 0.53); }
Colour Pallet::trackColour() const { return hsb(6, 0.63, 0.73); }
Colour Pallet::trackWorkoutBkgColour() const { return hsb(207, 0.63, 0.53); }
Colour Pallet::trackWorkoutColour() const { return hsb(207, 0.63, 0.73); }
Colour Pallet::colourForRespRateLineBad() const { return hsb(hue1_, 1, 1); }

Colour Pallet::colourForHRDipZone(float value) const {
    float brightness = 0.35f + 0.1625f * value;
    return hsb(340, 1, brightness);
}

// Fixed points on the rating scale.
Colour Pallet::spO2TintGood() const { return lightRatingColour(110); }
Colour Pallet::spO2TintOK() const { return lightRatingColour(99); }
Colour Pallet::spO2TintBad() const { return lightRatingColour(50); }
Colour Pallet::respRateTintGood() const { return lightRatingColour(110); }
Colour Pallet::respRateTintBad() const { return lightRatingColour(50); }

}  // namespace velmorant::palette
