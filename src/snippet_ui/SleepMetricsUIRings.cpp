#include "snippet_ui/SleepMetricsUI.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>

// The sleep-rings picture: four progress rings with a glyph at each tip and,
// in the middle, the night's rating as a ring and a number.

namespace velmorant::snippet_ui {
using palette::Pallet;

using platform::ArcStroke;
using platform::Canvas;
using platform::Colour;
using platform::Font;
using platform::LayerKey;
using platform::LineCap;
using platform::Point;
using platform::Shadow;
using platform::Size;
using Text = platform::TextAttributes;

namespace {

constexpr double kPi = std::numbers::pi;
// Data rings start a hundredth of a turn past the top, so a ring's round
// start cap never hides its own tip.
constexpr double kRingStart = (0.01 - 0.25) * 2 * kPi;
// The accessory widget is monochrome and is recognised by its size alone.
constexpr float kMonochromeSide = 260;
constexpr double kRingWidth = 20;
// Tells this picture's layers from other pictures' in a shared cache.
constexpr double kLayerId = 2;

// One of the four data rings: how little it ever shows, where it lies, how long
// its shaded head is, and the glyph at its tip.
struct DataRing {
    float fraction;
    float radius;
    double headLength;
    float glyphRadius;
};

// A fraction at or below its floor still shows a short arc of the floor's length.
float floored(float fraction, double floor) {
    return fraction <= floor ? static_cast<float>(floor) : fraction;
}

}  // namespace

double SleepMetricsUI::tipAngle(double fraction) { return (fraction - 0.25) * 2 * kPi; }

Point SleepMetricsUI::pointAt(double c, double radius, double angle) {
    return {c + radius * std::cos(angle), c + radius * std::sin(angle)};
}

void SleepMetricsUI::drawTextCentredAt(Canvas& canvas, std::string_view text, Point centre,
                                       const Text& attributes) {
    const Size size = canvas.sizeWithAttributes(text, attributes);
    canvas.drawAtPoint(text, {centre.x - size.width / 2, centre.y - size.height / 2}, attributes);
}

Size SleepMetricsUI::getShadowForPercent(float percent) {
    // A ring past a full turn casts its head's shadow as on the first lap.
    const float q = percent > 1 ? percent - 1 : percent;
    if (q <= 0.25) return {2, 2};
    if (q <= 0.5) return {-1, 1};
    if (q <= 0.75) return {-1, -1};
    return {2, 0};
}

double SleepMetricsUI::radians(double degrees) { return degrees / 180 * 3.141592653589793; }

platform::ImagePtr SleepMetricsUI::drawSleepRingsWithSize(float size, float sleepPercent, float qualityPercent,
                                                         float deepPercent, float bpmPercent, float rating,
                                                         bool forStages) {
    Pallet& palette = pallet();
    const float S = size;
    const float c = S * 0.5f;
    const Point centre{c, c};
    const bool monochrome = S == kMonochromeSide;

    // 1. Floors.
    const DataRing sleep{floored(sleepPercent, 0.012), c - 19, 0.006, c - 19};
    const DataRing quality{floored(qualityPercent, 0.015), c - 41, 0.007, c - 41};
    const DataRing deep{floored(deepPercent, 0.02), c - 63, 0.008, c - 62};
    const DataRing bpm{floored(bpmPercent, 0.025), c - 85, 0.008, c - 85};
    auto colourOf = [&](const DataRing& ring) {
        return monochrome ? Colour::whiteColor() : palette.colourForBatteryChargePercent(ring.fraction);
    };
    // Inner to outer, as the rings are drawn.
    const std::array<Colour, 4> ringColours{colourOf(bpm), colourOf(deep), colourOf(quality), colourOf(sleep)};
    const Colour ratingColour = monochrome ? Colour::whiteColor() : palette.highTintColour();
    const Colour track = ringBkg().colorWithAlphaComponent(1.0);
    const bool disc = rating > 0 && !monochrome;
    const Colour discColour = palette.colourForClockFace(5, true);

    return drawLater(platform_, size, [=](PictureTools& tools) {
        Canvas canvas({S, S}, tools.resources.scale(), tools.resources.fonts());
        // 2. Background tracks, outer to inner, and 3a. the dark middle disc: the
        // same for every night, so drawn once per size and kept.
        const LayerKey key = LayerKey().add(kLayerId).add(track).add(disc).add(discColour);
        tools.layers.draw(canvas, key, tools.resources.fonts(), [&](Canvas& layer) {
            for (const DataRing* ring : {&sleep, &quality, &deep, &bpm})
                layer.strokeArc(centre, ring->radius, -kPi / 2, 2 * kPi,
                                {kRingWidth, LineCap::Round, track, Shadow::soft(2)});
            // A round-capped line this wide round a tiny circle fills a disc; the tracks' shadow is still in force.
            if (disc)
                layer.strokeArc(centre, 2, -kPi / 2, 2 * kPi,
                                {(c - 82) + 15, LineCap::Round, discColour, Shadow::soft(2)});
        });

        // 3b. The rating ring, as far as the rating.
        if (rating > 0)
            canvas.strokeArc(centre, (c - 82) - 20, -kPi / 2, tipAngle(rating),
                             {3, LineCap::Round, ratingColour, Shadow::soft(2)});

        // 4. Data rings, inner to outer; each head is drawn again with a darker shadow
        // so that a ring past a full turn shows its head lying over its start. The
        // rings' soft shadows are black, as the heads' are, so they fall in any
        // order: one blur serves all four.
        const DataRing* rings[] = {&bpm, &deep, &quality, &sleep};
        std::array<platform::Arc, 4> bodies;
        for (std::size_t i = 0; i < bodies.size(); ++i)
            bodies[i] = {centre, rings[i]->radius, kRingStart, tipAngle(rings[i]->fraction)};
        canvas.strokeArcShadows(bodies, {kRingWidth, LineCap::Round, Colour::blackColor(), Shadow::soft(2)},
                                std::all_of(ringColours.begin(), ringColours.end(),
                                            [](const Colour& colour) { return colour.rgba().a >= 1; }));
        for (std::size_t i = 0; i < bodies.size(); ++i) {
            const DataRing& ring = *rings[i];
            const Colour& colour = ringColours[i];
            const double tip = bodies[i].endAngle;
            canvas.strokeArc(centre, ring.radius, kRingStart, tip, {kRingWidth, LineCap::Round, colour});
            canvas.strokeArc(centre, ring.radius, tipAngle(ring.fraction - ring.headLength), tip,
                             {kRingWidth, LineCap::Round, colour,
                              Shadow{getShadowForPercent(ring.fraction), 5, Colour::blackColor()}});
        }

        // 5. Glyphs at the tips and 6. the rating number, under a soft shadow.
        auto saved = canvas.saveGState();
        canvas.setShadow(Shadow::soft(2));
        const Text glyph{Font::boldSystemFontOfSize(13)};
        const Text qualityGlyph{forStages ? Font::boldSystemFontOfSize(13) : Font::systemFontOfSize(12)};
        auto tipOf = [&](const DataRing& ring) {
            return pointAt(c, ring.glyphRadius, static_cast<float>(tipAngle(ring.fraction)));
        };
        drawTextCentredAt(canvas, forStages ? "R" : "★", tipOf(quality), qualityGlyph);
        drawTextCentredAt(canvas, "Z", tipOf(deep), glyph);
        drawTextCentredAt(canvas, "♥", tipOf(bpm), glyph);
        drawTextCentredAt(canvas, "☾", tipOf(sleep), glyph);
        if (rating > 0) {
            char number[16] = "100";
            if (rating < 1) std::snprintf(number, sizeof number, "%.0f", static_cast<double>(rating * 100.0f));
            drawTextCentredAt(canvas, number, centre,
                              {Font::systemFontOfSize(34, platform::FontWeight::Heavy), ratingColour});
        }
        return canvas.makeImage();
    });
}

}  // namespace velmorant::snippet_ui
