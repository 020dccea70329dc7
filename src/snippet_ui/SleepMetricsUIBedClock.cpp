#include "snippet_ui/SleepMetricsUI.h"

#include <numbers>
#include <string>

// The bed clock: a 24-hour dial with the planned sleep span, a wedge from now
// round to bedtime, a bedtime hand and a hand for the current time.

namespace velmorant::snippet_ui {
using palette::Pallet;

using platform::Canvas;
using platform::Colour;
using platform::Font;
using platform::FontWeight;
using platform::LayerKey;
using platform::LineCap;
using platform::Point;
using Text = platform::TextAttributes;

namespace {

constexpr double kPi = std::numbers::pi;
// Tells this picture's layers from other pictures' in a shared cache.
constexpr double kFaceLayer = 4;
constexpr double kDialLayer = 5;

}  // namespace

platform::ImagePtr SleepMetricsUI::drawTheBedClockWithSize(float size, const std::optional<platform::Date>& bedtime,
                                                           const std::optional<platform::Date>& waketime) {
    return drawBedClock(size, bedtime, waketime, platform_.now());
}

platform::ImagePtr SleepMetricsUI::drawBedClock(float size, const std::optional<platform::Date>& bedtime,
                                                const std::optional<platform::Date>& waketime, platform::Date now) {
    Pallet& palette = pallet();
    const float S = size;
    const float c = S * 0.5f;
    const Point centre{c, c};

    // Midnight straight up, turning clockwise once a day.
    auto clock = [](long hour, long minute) {
        const float h = static_cast<float>(hour);
        const float m = static_cast<float>(minute);
        return static_cast<float>(radians(((m / 60 + h) / 24 - 0.25) * 360));
    };
    auto clockOf = [&](platform::Date date) {
        return clock(formatTools().currentHour(date), formatTools().currentMin(date));
    };
    const float nowAngle = clock(formatTools().currentHour(now), formatTools().currentMin(now));
    const bool span = bedtime && waketime;
    const float bedAngle = span ? clockOf(*bedtime) : 0;
    const float wakeAngle = span ? clockOf(*waketime) : 0;
    const Colour wedge = palette.lightRatingColour(80).colorWithAlphaComponent(1);
    const Colour planned = palette.lightRatingColour(110);
    const Colour bedHand = palette.lightRatingColour(40).colorWithAlphaComponent(1);
    const ClockColours colours{ringBkg(), gaugeBkg(), textColour(), subtleTextColour(), verySubtleTextColour(),
                               needleBkg()};

    return drawLater(platform_, size, [=, widget = widgetMode](PictureTools& tools) {
        Canvas canvas({S, S}, tools.resources.scale(), tools.resources.fonts());

        // Face (a line this wide round a tiny circle fills the dial), track and rim.
        const LayerKey face = LayerKey().add(kFaceLayer).add(colours.track).add(colours.rim);
        tools.layers.draw(canvas, face, tools.resources.fonts(), [&](Canvas& layer) {
            layer.strokeArc(centre, 2, -kPi / 2, 2 * kPi, {S - 5, LineCap::Round, Colour::blackColor()});
            layer.strokeArc(centre, c - 12, -kPi / 2, 2 * kPi, {16, LineCap::Round, colours.track});
            layer.strokeArc(centre, c - 1, -kPi / 2, 2 * kPi, {1, LineCap::Round, colours.rim});
        });

        if (span) {
            // Wedge from now round to bedtime, and the planned sleep span on the track.
            canvas.strokeArc(centre, widget ? 20 : 40, nowAngle, bedAngle,
                             {widget ? 40.0 : 70.0, LineCap::Butt, wedge});
            canvas.strokeArc(centre, (c - 12) + 1, bedAngle, wakeAngle, {12, LineCap::Round, planned});
        }

        // Ticks, numbers and hub, the same every day.
        const LayerKey dial = LayerKey()
                                  .add(kDialLayer)
                                  .add(colours.text)
                                  .add(colours.subtleText)
                                  .add(colours.verySubtleText)
                                  .add(colours.hub);
        tools.layers.draw(canvas, dial, tools.resources.fonts(),
                          [&](Canvas& layer) { drawClockHours(layer, c, colours); });

        canvas.setLineCap(LineCap::Round);
        canvas.setShadowWithColour({0, 0}, 5, Colour::blackColor());

        // A bedtime from midnight to six lies at an angle of 0 or less and has no hand.
        if (bedAngle > 0) {
            canvas.setLineWidth(2);
            canvas.setStrokeColour(bedHand);
            canvas.moveTo(centre);
            canvas.addLineTo(pointAt(c, (c - 36) - 55, bedAngle));
            canvas.strokePath();
        }

        // Current-time hand.
        canvas.setShadowWithColour({0, 0}, 15, Colour::blackColor());
        canvas.setLineWidth(6);
        canvas.setStrokeColour(Colour::whiteColor().colorWithAlphaComponent(1));
        canvas.moveTo(centre);
        canvas.addLineTo(pointAt(c, (c - 36) - 30, nowAngle));
        canvas.strokePath();

        return canvas.makeImage();
    });
}

void SleepMetricsUI::drawClockHours(Canvas& layer, float c, const ClockColours& colours) {
    const Point centre{c, c};
    // Hour ticks, with a finer tick on each half hour.
    layer.setLineCap(LineCap::Round);
    double theta = radians(-90);
    for (int hour = 0; hour < 24; ++hour) {
        const bool even = hour % 2 == 0;
        const float angle = static_cast<float>(theta);
        layer.setLineWidth(even ? 4 : 2);
        layer.setStrokeColour(even ? colours.text : colours.subtleText);
        layer.moveTo(pointAt(c, c - 26, angle));
        layer.addLineTo(pointAt(c, c - 22, angle));
        layer.strokePath();
        theta += radians(7.5);

        const float halfAngle = static_cast<float>(theta);
        layer.setLineWidth(1);
        layer.setStrokeColour(colours.verySubtleText);
        layer.moveTo(pointAt(c, c - 25, halfAngle));
        layer.addLineTo(pointAt(c, c - 22, halfAngle));
        layer.strokePath();
        theta += radians(7.5);
    }

    // Hour numbers; the quarters of the day stand out.
    theta = radians(-90);
    for (int hour = 0; hour < 24; ++hour) {
        const bool quarter = hour % 6 == 0;
        const Text attributes =
            quarter ? Text{Font::systemFontOfSize(12, FontWeight::Heavy), colours.text}
                    : Text{Font::boldSystemFontOfSize(10), colours.verySubtleText};
        drawTextCentredAt(layer, std::to_string(hour), pointAt(c, c - 36, theta), attributes);
        theta += radians(15);
    }

    // Hub.
    layer.setShadow({0, 0}, 2);
    layer.setFillColour(colours.hub);
    layer.addArc(centre, 8, 0, 2 * kPi);
    layer.addLineTo(centre);
    layer.closePath();
    layer.fillPath();
}

}  // namespace velmorant::snippet_ui
