#include "snippet_ui/SleepMetricsUI.h"

#include <cmath>
#include <numbers>

// The recharge rings: last night's sleep (outer) and the sleep bank (inner),
// each a fraction of the sleep goal, over a track divided into the goal's hours.

namespace velmorant {

using platform::Canvas;
using platform::Colour;
using platform::Font;
using platform::LineCap;
using platform::Point;
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

}  // namespace

platform::ImagePtr SleepMetricsUI::drawTheRechargeWithSize(float size, float sleepPercent, float bankPercent) {
    Pallet& palette = pallet();
    palette.setDarkTheme(true);

    const float sleep = sleepPercent <= 0.012 ? 0.012f : sleepPercent;
    const float bank = bankPercent <= 0.015 ? 0.015f : bankPercent;

    const float S = size;
    const float c = S * 0.5f;
    const Point centre{c, c};
    const float w = S <= 100 ? 5 : 25;
    const float ro = (c - w) + 1;
    const float ri = (c - 2 * w) - 1;
    const bool accessory = S == kAccessorySide;
    const Colour sleepColour = accessory ? Colour::whiteColor() : palette.colourForBatteryChargePercent(sleep);
    const Colour bankColour =
        accessory ? Colour::whiteColor() : palette.colourForBatteryChargePercent(bank).colorWithAlphaComponent(1);

    // The sleep goal in hours; a missing or implausibly small goal means eight.
    float goal = getVelmorantConfigValueForKey("requiredHours");
    if (goal < 4) goal = 8;
    const double wholeHours = std::trunc(goal);

    Canvas canvas({S, S}, platform_.screenScale(), platform_.fonts());
    if (S > 100 && !accessory) canvas.drawImage(platform_.imageNamed("RechargeBkg.png"), {0, 0, S, S});

    // Outer track.
    canvas.setShadow({0, 0}, 2);
    canvas.setLineCap(LineCap::Round);
    canvas.setLineWidth(w);
    canvas.setStrokeColour(palette.innerShadeForType(2));
    canvas.addArc(centre, ro, -kPi / 2, 2 * kPi);
    canvas.strokePath();

    // Every other hour of the goal, shaded apart from its neighbours; a
    // fractional last hour is never marked.
    const double markPixels = 2 * kPi * ro * canvas.scale() / goal;
    if (markPixels >= kMinMarkPixels && wholeHours <= kMaxMarkedHours) {
        for (long i = 0; i < wholeHours; i += 2) {
            const float from = static_cast<float>(i) / goal - 0.25f;
            const float to = static_cast<float>(i + 1) / goal - 0.25f;
            canvas.setShadow({0, 0}, 2);
            canvas.setLineCap(LineCap::Butt);
            canvas.setLineWidth(w);
            canvas.setStrokeColour(palette.innerShadeForType(0));
            canvas.addArc(centre, ro, from * 2 * kPi, to * 2 * kPi);
            canvas.strokePath();
        }
    } else if (markPixels > 0) {
        // Too many hours to draw one by one: half of the track is marked, in
        // slivers finer than a pixel, which looks like the mark colour at half strength.
        canvas.setShadow({0, 0}, 2);
        canvas.setLineCap(LineCap::Butt);
        canvas.setLineWidth(w);
        canvas.setStrokeColour(palette.innerShadeForType(0).colorWithAlphaComponent(0.5));
        canvas.addArc(centre, ro, -kPi / 2, 1.5 * kPi);
        canvas.strokePath();
    }

    // Inner track.
    canvas.setShadow({0, 0}, 2);
    canvas.setLineCap(LineCap::Round);
    canvas.setLineWidth(w);
    canvas.setStrokeColour(palette.innerShadeForType(2).colorWithAlphaComponent(1));
    canvas.addArc(centre, ri, -kPi / 2, 2 * kPi);
    canvas.strokePath();

    // Bank ring and its head, redrawn with a darker shadow over the ring's start.
    canvas.setShadow({-2, -2}, 3);
    canvas.setLineCap(LineCap::Round);
    canvas.setLineWidth(w);
    canvas.setStrokeColour(bankColour);
    canvas.addArc(centre, ri, kRingStart, tipAngle(bank));
    canvas.strokePath();

    canvas.setShadowWithColour(getShadowForPercent(bank), 5, Colour::blackColor());
    canvas.setLineCap(LineCap::Round);
    canvas.setLineWidth(w);
    canvas.setStrokeColour(bankColour);
    canvas.addArc(centre, ri, tipAngle(bank - 0.007), tipAngle(bank));
    canvas.strokePath();

    // Sleep ring and its head.
    canvas.setShadow({0, 0}, 3);
    canvas.setLineCap(LineCap::Round);
    canvas.setLineWidth(w);
    canvas.setStrokeColour(sleepColour);
    canvas.addArc(centre, ro, kRingStart, tipAngle(sleep));
    canvas.strokePath();

    canvas.setShadowWithColour(getShadowForPercent(sleep), 5, Colour::blackColor());
    canvas.setLineCap(LineCap::Round);
    canvas.setLineWidth(w);
    canvas.setStrokeColour(sleepColour);
    canvas.addArc(centre, ro, tipAngle(sleep - 0.006), tipAngle(sleep));
    canvas.strokePath();

    // Glyphs on the heads; too small to read on the smallest rings.
    if (S > 100) {
        auto saved = canvas.saveGState();
        canvas.setShadow({0, 0}, 5);
        drawTextCentredAt(canvas, "☾", pointAt(c, ro, static_cast<float>(tipAngle(sleep))),
                          {Font::systemFontOfSize(12)});
        drawTextCentredAt(canvas, "7", pointAt(c, ri, static_cast<float>(tipAngle(bank))),
                          {Font::boldSystemFontOfSize(12)});
        if (accessory) drawTextCentredAt(canvas, "☾", centre, {Font::boldSystemFontOfSize(40), Colour::whiteColor()});
    }
    return canvas.makeImage();
}

}  // namespace velmorant
