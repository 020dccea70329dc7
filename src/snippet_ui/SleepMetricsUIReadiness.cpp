// The readiness dial, which also shows the sleep-fuel percentage.
#include "snippet_ui/GaugeFrame.h"
#include "snippet_ui/SleepMetricsUI.h"

#include <array>

namespace velmorant::snippet_ui {
using palette::Pallet;


platform::ImagePtr SleepMetricsUI::drawReadiRingsWithSize(float size, float value) {
    return drawReadiRingsWithSize(size, value, std::nullopt, 0);
}

platform::ImagePtr SleepMetricsUI::drawReadiRingsWithSize(float size, float value,
                                                          const std::optional<std::string>& label,
                                                          std::int64_t legend) {
    Pallet& colours = pallet();
    // No reading still shows the needle just off the scale's start.
    const float shown = value <= 0.01 ? 0.01f : value;
    const float fraction = gauge::starFraction(colours.starsValueForReadyPercent(shown));
    auto ready = [&](float ratio) { return colours.colourForReadyScore(ratio); };
    gauge::StarDial dial = starDial(size);
    dial.bands = gauge::starBandColours(ready(0), ready(1.6f), {ready(0.6f), ready(0.75f), ready(0.9f), ready(1.1f),
                                                                ready(1.3f), ready(1.6f)});
    dial.label = label;
    dial.needle = fraction;
    if (legend == 1) {
        dial.icon = "FuelIcon";
        dial.iconPlace = {18, 28, 40};
    } else if (legend > 1) {
        dial.icon = "Readiperson";
    }
    return drawLater(platform_, size,
                     [dial](PictureTools& tools) { return gauge::drawStarDial(dial, tools); });
}

}  // namespace velmorant::snippet_ui
