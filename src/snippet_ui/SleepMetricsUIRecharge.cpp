#include "snippet_ui/SleepMetricsUI.h"

#include "metrics/RecordKeys.h"

#include <cmath>
#include <numbers>

// The recharge rings: last night's sleep (outer) and the sleep bank (inner),
// each a fraction of the sleep goal, over a track divided into the goal's hours.

namespace velmorant::snippet_ui {
using palette::Pallet;
namespace keys = metrics::keys;

using platform::Canvas;
using platform::Colour;
using platform::Font;
using platform::LayerKey;
using platform::LineCap;
using platform::Point;
using platform::Shadow;
using Text = platform::TextAttributes;

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kRingStart = (0.01 - 0.25) * 2 * kPi;
// The accessory widget: white rings, a large moon, no backdrop.
constexpr float kAccessorySide = 200;
// A mark shorter than a device pixel along the ring can no longer be told
// from its neighbours, and no canvas (at most 8192 pixels a side) has room
// round a ring for more hours than this; past either limit the alternating
// marks read as an even half-tone.
constexpr double kMinMarkPixels = 1;
constexpr double kMaxMarkedHours = 32768;
// Tells this picture's layers from other pictures' in a shared cache.
constexpr double kLayerId = 3;

}  // namespace

platform::ImagePtr SleepMetricsUI::drawTheRechargeWithSize(float size, float sleepPercent, float bankPercent) {
    // 1. The recharge rings are always dark.
    Pallet& palette = pallet();
    palette.setDarkTheme(true);
    return drawRechargeRings(palette, size, sleepPercent, bankPercent,
                             getVelmorantConfigValueForKey(keys::kRequiredHours));
}

platform::ImagePtr SleepMetricsUI::drawRechargeRings(Pallet& palette, float size, float sleepPercent, float bankPercent,
                                                     float goalHours) {
    // 2. Floors.
    const float sleep = sleepPercent <= 0.012 ? 0.012f : sleepPercent;
    const float bank = bankPercent <= 0.015 ? 0.015f : bankPercent;

    const float S = size;
    const float c = S * 0.5f;
    const Point centre{c, c};
    const float w = S <= 100 ? 5 : 25;
    const float ro = (c - w) + 1;
    const float ri = (c - 2 * w) - 1;
    const bool accessory = S == kAccessorySide;
    const bool backdrop = S > 100 && !accessory;
    const Colour sleepColour = accessory ? Colour::whiteColor() : palette.colourForBatteryChargePercent(sleep);
    const Colour bankColour =
        accessory ? Colour::whiteColor() : palette.colourForBatteryChargePercent(bank).colorWithAlphaComponent(1);
    const Colour outerTrack = palette.innerShadeForType(2);
    const Colour innerTrack = palette.innerShadeForType(2).colorWithAlphaComponent(1);
    const Colour mark = palette.innerShadeForType(0);
    // A missing or implausibly small goal means eight hours.
    const float goal = goalHours < 4 ? 8 : goalHours;

    return drawLater(platform_, size, [=](PictureTools& tools) {
        // 3. to 6. Backdrop, tracks and hour marks: the same for every night at
        // one goal, so drawn once per size and kept.
        Canvas canvas({S, S}, tools.resources.scale(), tools.resources.fonts());
        const LayerKey key =
            LayerKey().add(kLayerId).add(goal).add(backdrop).add(outerTrack).add(innerTrack).add(mark);
        tools.layers.draw(canvas, key, tools.resources.fonts(), [&](Canvas& layer) {
            if (backdrop) layer.drawImage(tools.resources.imageNamed("RechargeBkg.png"), {0, 0, S, S});
            layer.strokeArc(centre, ro, -kPi / 2, 2 * kPi, {w, LineCap::Round, outerTrack, Shadow::soft(2)});
            drawHourMarks(layer, centre, ro, w, goal, mark);
            layer.strokeArc(centre, ri, -kPi / 2, 2 * kPi, {w, LineCap::Round, innerTrack, Shadow::soft(2)});
        });

        // 7. to 10. Bank ring, then sleep ring, each with its head redrawn under a
        // darker shadow over the ring's start.
        canvas.strokeArc(centre, ri, kRingStart, tipAngle(bank), {w, LineCap::Round, bankColour, Shadow{{-2, -2}, 3}});
        canvas.strokeArc(centre, ri, tipAngle(bank - 0.007), tipAngle(bank),
                         {w, LineCap::Round, bankColour, Shadow{getShadowForPercent(bank), 5, Colour::blackColor()}});
        canvas.strokeArc(centre, ro, kRingStart, tipAngle(sleep), {w, LineCap::Round, sleepColour, Shadow::soft(3)});
        canvas.strokeArc(
            centre, ro, tipAngle(sleep - 0.006), tipAngle(sleep),
            {w, LineCap::Round, sleepColour, Shadow{getShadowForPercent(sleep), 5, Colour::blackColor()}});

        // 11. Glyphs on the heads; too small to read on the smallest rings.
        if (S > 100) {
            canvas.setShadow(Shadow::soft(5));
            drawTextCentredAt(canvas, "☾", pointAt(c, ro, static_cast<float>(tipAngle(sleep))),
                              {Font::systemFontOfSize(12)});
            drawTextCentredAt(canvas, "7", pointAt(c, ri, static_cast<float>(tipAngle(bank))),
                              {Font::boldSystemFontOfSize(12)});
            if (accessory)
                drawTextCentredAt(canvas, "☾", centre, {Font::boldSystemFontOfSize(40), Colour::whiteColor()});
        }
        return canvas.makeImage();
    });
}

void SleepMetricsUI::drawHourMarks(Canvas& canvas, Point centre, float radius, float width, float goal,
                                   const Colour& colour) {
    // Every other hour of the goal, shaded apart from its neighbours; a
    // fractional last hour is never marked.
    const double wholeHours = std::trunc(goal);
    const double markPixels = 2 * kPi * radius * canvas.scale() / goal;
    if (markPixels >= kMinMarkPixels && wholeHours <= kMaxMarkedHours) {
        for (long i = 0; i < wholeHours; i += 2) {
            const float from = static_cast<float>(i) / goal - 0.25f;
            const float to = static_cast<float>(i + 1) / goal - 0.25f;
            canvas.strokeArc(centre, radius, from * 2 * kPi, to * 2 * kPi,
                             {width, LineCap::Butt, colour, Shadow::soft(2)});
        }
    } else if (markPixels > 0) {
        // Too many hours to draw one by one: half of the track is marked, in
        // slivers finer than a pixel, which looks like the mark colour at half strength.
        canvas.strokeArc(centre, radius, -kPi / 2, 1.5 * kPi,
                         {width, LineCap::Butt, colour.colorWithAlphaComponent(0.5), Shadow::soft(2)});
    }
}

}  // namespace velmorant::snippet_ui
