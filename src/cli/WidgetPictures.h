#pragma once

#include "snippet_ui/SleepMetricsUI.h"

namespace velmorant::cli {

// Every widget picture, by the operation that draws it.
struct WidgetEntry {
    const char* operation;
    platform::ImagePtr (snippet_ui::SleepMetricsUI::*draw)();
    const char* picture;
    bool accessory;
};

inline constexpr WidgetEntry kWidgets[] = {
    {"swiftSleepRingsImage", &snippet_ui::SleepMetricsUI::swiftSleepRingsImage, "Sleep rings", false},
    {"swiftSleepRingsAccessoryImage", &snippet_ui::SleepMetricsUI::swiftSleepRingsAccessoryImage, "Sleep rings", true},
    {"swiftSleepBankImage", &snippet_ui::SleepMetricsUI::swiftSleepBankImage, "Sleep bank recharge rings", false},
    {"swiftSleepBankAccessoryImage", &snippet_ui::SleepMetricsUI::swiftSleepBankAccessoryImage, "Sleep bank recharge rings", true},
    {"swiftBedtimeImage", &snippet_ui::SleepMetricsUI::swiftBedtimeImage, "Bedtime clock", false},
    {"swiftReadinessImage", &snippet_ui::SleepMetricsUI::swiftReadinessImage, "Readiness gauge", false},
    {"swiftOctaneImage", &snippet_ui::SleepMetricsUI::swiftOctaneImage, "Sleep fuel gauge", false},
    {"swiftSpO2Image", &snippet_ui::SleepMetricsUI::swiftSpO2Image, "Blood-oxygen gauge", false},
    {"swiftRespRateImage", &snippet_ui::SleepMetricsUI::swiftRespRateImage, "Respiration-rate gauge", false},
    {"swiftWristTempImage", &snippet_ui::SleepMetricsUI::swiftWristTempImage, "Wrist-temperature gauge", false},
};

}  // namespace velmorant::cli
