// The readiness dial, which also shows the sleep-fuel percentage.
#include "snippet_ui/GaugeFrame.h"
#include "snippet_ui/SleepMetricsUI.h"

#include <array>

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
    auto ready = [&](float ratio) { return colours.colourForReadyScore(ratio); };
    const std::array<platform::Colour, 9> bands = gauge::starBandColours(
        ready(0), ready(1.6f), {ready(0.6f), ready(0.75f), ready(0.9f), ready(1.1f), ready(1.3f), ready(1.6f)});

    return drawLater(platform_, layers_, size, [=, widget = widgetMode, disc = gaugeBkg(), hub = needleBkg(),
                                                tint = colours.tintColour()](PictureTools& tools) {
        GaugeFrame gauge(size, widget, tools);
        // The dial, the hub and the icon are the same for every reading.
        gauge.keep([&] {
            gauge.drawDisc(disc);
            gauge.drawTrack(disc);
            gauge.drawScaleBands(gauge::kStarBands, bands);
            gauge.drawHub(hub);
            if (legend == 1)
                gauge.drawIcon("FuelIcon", 18, 28, 40);
            else if (legend > 1)
                gauge.drawIcon("Readiperson");
        });
        if (label) gauge.drawText(*label, gauge::valueTextPlacement(widget), tint);
        gauge.drawNeedle(fraction);
        return gauge.finish();
    });
}

}  // namespace velmorant::snippet_ui
