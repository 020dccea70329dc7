#pragma once

#include "snippet_ui/SleepMetricsUI.h"

namespace velmorant::cli {

// Every widget picture, by the operation that draws it.
struct WidgetEntry {
    const char* operation;
    platform::ImagePtr (SleepMetricsUI::*draw)();
    const char* picture;
    bool accessory;
};

inline constexpr WidgetEntry kWidgets[] = {
    {"swiftSleepRingsImage", &SleepMetricsUI::swiftSleepRingsImage, "Sleep rings", false},
    {"swiftSleepRingsAccessoryImage", &SleepMetricsUI::swiftSleepRingsAccessoryImage, "Sleep rings", true},
    {"swiftSleepBankImage", &SleepMetricsUI::swiftSleepBankImage, "Sleep bank recharge rings", false},
    {"swiftSleepBankAccessoryImage", &SleepMetricsUI::swiftSleepBankAccessoryImage, "Sleep bank recharge rings", true},
    {"swiftBedtimeImage", &SleepMetricsUI::swiftBedtimeImage, "Bedtime clock", false},
    {"swiftReadinessImage", &SleepMetricsUI::swiftReadinessImage, "Readiness gauge", false},
    {"swiftOctaneImage", &SleepMetricsUI::swiftOctaneImage, "Sleep fuel gauge", false},
    {"swiftSpO2Image", &SleepMetricsUI::swiftSpO2Image, "Blood-oxygen gauge", false},
    {"swiftRespRateImage", &SleepMetricsUI::swiftRespRateImage, "Respiration-rate gauge", false},
    {"swiftWristTempImage", &SleepMetricsUI::swiftWristTempImage, "Wrist-temperature gauge", false},
};

}  // namespace velmorant::cli
