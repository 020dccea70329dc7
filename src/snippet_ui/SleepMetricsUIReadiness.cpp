// The readiness dial, which also shows the sleep-fuel percentage.
#include "snippet_ui/GaugeFrame.h"
#include "snippet_ui/SleepMetricsUI.h"

namespace velmorant::snippet_ui {
using palette::Pallet;

using gauge::GaugeFrame;

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

    GaugeFrame gauge(size, widgetMode, platform_, layers_);
    auto ready = [&](float ratio) { return colours.colourForReadyScore(ratio); };
    // The dial, the hub and the icon are the same for every reading.
    gauge.keep([&] {
        gauge.drawDisc(gaugeBkg());
        gauge.drawTrack(gaugeBkg());
        gauge.drawScaleBands(gauge::kStarBands, gauge::starBandColours(ready(0), ready(1.6f),
                                                                       {ready(0.6f), ready(0.75f), ready(0.9f),
                                                                        ready(1.1f), ready(1.3f), ready(1.6f)}));
        gauge.drawHub(needleBkg());
        if (legend == 1)
            gauge.drawIcon("FuelIcon", 18, 28, 40);
        else if (legend > 1)
            gauge.drawIcon("Readiperson");
    });
    if (label) gauge.drawText(*label, gauge::valueTextPlacement(widgetMode), colours.tintColour());
    gauge.drawNeedle(fraction);
    return gauge.finish();
}

}  // namespace velmorant::snippet_ui
