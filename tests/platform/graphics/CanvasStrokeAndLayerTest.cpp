// The canvas's one-call arc stroke, shared shadows, the clip in the saved
// state, and layers laid over a canvas pixel for pixel.
#include "platform/graphics/Canvas.h"
#include "platform/graphics/FontSystem.h"
#include "platform/graphics/Image.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <functional>
#include <numbers>

using namespace velmorant::platform;

namespace {

constexpr double kPi = std::numbers::pi;

const FontSystem& fonts() {
    static const FontSystem system(std::filesystem::path(VELMORANT_TEST_RESOURCE_DIR) / "fonts" / "fonts.conf");
    return system;
}

ImagePtr drawn(const std::function<void(Canvas&)>& draw, double scale = 2) {
    Canvas canvas({100, 100}, scale, fonts());
    draw(canvas);
    return canvas.makeImage();
}

// The largest difference of any channel (0...1) over the whole picture.
double largestDifference(const Image& a, const Image& b) {
    double largest = 0;
    for (double y = 0.25; y < 100; y += 0.5)
        for (double x = 0.25; x < 100; x += 0.5) {
            Rgba p = a.pixelAt({x, y}), q = b.pixelAt({x, y});
            largest = std::max({largest, std::abs(p.r * p.a - q.r * q.a), std::abs(p.g * p.a - q.g * q.a),
                                std::abs(p.b * p.a - q.b * q.a), std::abs(p.a - q.a)});
        }
    return largest;
}

const ArcStroke kRedRing{10, LineCap::Round, Colour::systemRedColor(), Shadow{{0, 6}, 0}};

// One call draws what the separate calls draw, and leaves their state in force.
TEST(CanvasStroke, ArcInOneCallIsTheSeparateCallsAndStaysInForce) {
    auto separately = drawn([](Canvas& c) {
        c.setShadow({0, 6}, 0), c.setLineCap(LineCap::Round), c.setLineWidth(10);
        c.setStrokeColour(Colour::systemRedColor());
        c.addArc({50, 50}, 30, 0, kPi), c.strokePath();
        c.moveTo({10, 10}), c.addLineTo({40, 10}), c.strokePath();
    });
    auto inOneCall = drawn([](Canvas& c) {
        c.strokeArc({50, 50}, 30, 0, kPi, kRedRing);
        c.moveTo({10, 10}), c.addLineTo({40, 10}), c.strokePath();
    });
    EXPECT_EQ(largestDifference(*separately, *inOneCall), 0);
    // No shadow given is no shadow, whatever was set before.
    auto plain = drawn([](Canvas& c) {
        c.setShadow({0, 6}, 0);
        c.strokeArc({50, 50}, 30, 0, kPi, {10, LineCap::Butt, Colour::whiteColor()});
    });
    EXPECT_EQ(plain->pixelAt({50, 86}).a, 0) << "no shadow under the arc's lowest point";
    EXPECT_EQ(plain->pixelAt({50, 80}).a, 1);
}

// Shapes that share a shadow cast it once: where their shadows do not meet, just as each would alone.
TEST(CanvasStroke, ArcsSharingAShadowCastWhatEachCastsAlone) {
    const std::array<Arc, 2> arcs{{{{50, 50}, 40, -kPi, 0}, {{50, 50}, 15, 0, kPi}}};
    const ArcStroke stroke{6, LineCap::Round, Colour::whiteColor(), Shadow::soft(4)};
    auto each = drawn([&](Canvas& c) {
        for (const Arc& arc : arcs) c.strokeArc(arc.centre, arc.radius, arc.startAngle, arc.endAngle, stroke);
    });
    auto shared = drawn([&](Canvas& c) {
        c.strokeArcShadows(arcs, stroke);
        c.setNoShadow();
        for (const Arc& arc : arcs) c.addArc(arc.centre, arc.radius, arc.startAngle, arc.endAngle), c.strokePath();
    });
    // The shared mask lies on other cells of the coarse grid: within a few levels.
    EXPECT_LE(largestDifference(*each, *shared), 3.0 / 255);
    // No line joins the first arc's end (90, 50) to the next one's start (65, 50).
    EXPECT_EQ(shared->pixelAt({78, 50}).a, 0);
}

// A clip ends with the saved state around it, like the rest of the state.
TEST(CanvasStroke, SavedStateEndsAClip) {
    auto image = drawn([](Canvas& c) {
        c.setFillColour(Colour::whiteColor());
        {
            auto saved = c.saveGState();
            c.addRoundedRect({0, 0, 50, 100}, 0);
            c.clipToPath();
            c.addRoundedRect({0, 0, 100, 50}, 0), c.fillPath();
            {
                auto inner = c.saveGState();
                c.addRoundedRect({0, 0, 25, 100}, 0);
                c.clipToPath();
            }
            c.addRoundedRect({0, 50, 100, 50}, 0), c.fillPath();
        }
        c.addRoundedRect({75, 75, 25, 25}, 0), c.fillPath();
    });
    struct Row { Point at; double alpha; const char* why; };
    const Row rows[] = {{{25, 25}, 1, "inside the clip"},
                        {{75, 25}, 0, "outside the clip"},
                        {{40, 75}, 1, "the inner clip ended with its state"},
                        {{60, 75}, 0, "the outer clip still in force"},
                        {{90, 90}, 1, "no clip after the outer state"}};
    for (const Row& row : rows) EXPECT_EQ(image->pixelAt(row.at).a, row.alpha) << row.why;
}

// A layer laid over a canvas gives what drawing its steps there would, on a blank canvas and over a drawing.
TEST(CanvasLayer, LayerLaidOverIsTheStepsDrawnThere) {
    auto steps = [](Canvas& c) {
        c.strokeArc({50, 50}, 25, 0, 2 * kPi,
                    {8, LineCap::Round, Colour::systemGreenColor().colorWithAlphaComponent(0.6), Shadow::soft(3)});
    };
    auto below = [](Canvas& c) {
        c.strokeArc({30, 50}, 20, 0, 2 * kPi, {12, LineCap::Butt, Colour::systemRedColor()});
    };
    Canvas layerCanvas({100, 100}, 2, fonts());
    steps(layerCanvas);
    const Rect bounds = layerCanvas.drawnBounds();
    EXPECT_GT(bounds.width, 50) << "the ring and its shadow";
    EXPECT_LT(bounds.width, 80) << "not the whole canvas";
    ImagePtr layer = layerCanvas.makeImage();
    for (bool overADrawing : {false, true}) {
        auto direct = drawn([&](Canvas& c) {
            if (overADrawing) below(c);
            steps(c);
        });
        auto fromLayer = drawn([&](Canvas& c) {
            if (overADrawing) below(c);
            c.drawLayer(*layer, bounds);
        });
        EXPECT_LE(largestDifference(*direct, *fromLayer), 2.0 / 255) << overADrawing;
    }
    // A layer of another size is not laid at all.
    auto wrongSize = drawn([&](Canvas& c) { c.drawLayer(*layer, bounds); }, 3);
    EXPECT_EQ(wrongSize->pixelAt({50, 25}).a, 0);
}

}  // namespace

// A canvas's pixels are cleared when it is first drawn on, or around the first
// layer copied in: whatever a canvas of the same size left in memory before
// must not show through, whichever call comes first.
TEST(CanvasLayer, WhatAnEarlierCanvasLeftNeverShowsThrough) {
    const ImagePtr layer = drawn([](Canvas& c) {
        c.setFillColour(Colour::whiteColor());
        c.addRoundedRect({40, 40, 20, 20}, 0), c.fillPath();
    });
    struct Row {
        const char* first;
        std::function<void(Canvas&)> draw;
    };
    const Row rows[] = {
        {"a layer over part of it", [&](Canvas& c) { c.drawLayer(*layer, {40, 40, 20, 20}); }},
        {"only a shadow", [](Canvas& c) {
             c.strokeArcShadows(std::array<Arc, 1>{{{{50, 50}, 10, 0, kPi}}}, {4, LineCap::Round,
                                                                             Colour::whiteColor(), Shadow::soft(2)});
         }},
        {"nothing", [](Canvas&) {}},
    };
    for (const Row& row : rows) {
        // An opaque picture let go just before, so its memory is likely to be reused.
        drawn([](Canvas& c) {
            c.setFillColour(Colour::whiteColor());
            c.addRoundedRect({0, 0, 100, 100}, 0), c.fillPath();
        });
        const ImagePtr image = drawn(row.draw);
        EXPECT_EQ(image->pixelAt({5, 5}).a, 0) << row.first;
        EXPECT_EQ(image->pixelAt({95, 50}).a, 0) << row.first;
    }
}

// An opaque arc stroked over its own shadow, or over a shared one it was
// promised to, looks the same as over the whole shadow: what is left out
// lies only under its inside, never at its ends or edges.
TEST(CanvasStroke, ShadowLeftOutOnlyUnderAnOpaqueArcsInside) {
    struct Row {
        const char* arc;
        Arc geometry;
        LineCap cap;
    };
    const Row rows[] = {
        {"a butt-capped half ring", {{50, 50}, 30, -kPi, 0}, LineCap::Butt},
        {"a round-capped arc across angle 0", {{50, 50}, 30, -1, 1}, LineCap::Round},
        {"a whole ring and more", {{50, 50}, 30, -kPi / 2, 2 * kPi}, LineCap::Round},
        {"an arc sweeping backwards round most of a turn", {{50, 50}, 35, 0.5, 0.2}, LineCap::Butt},
        {"an off-centre arc", {{30, 70}, 20, 0.3, 2.8}, LineCap::Butt},
        {"no sweep", {{50, 50}, 30, 1, 1}, LineCap::Round},
        {"a tiny sweep", {{50, 50}, 30, 1, 1.001}, LineCap::Round},
        {"just under half a turn", {{50, 50}, 30, 2, 2 + kPi - 0.05}, LineCap::Butt},
        {"just over half a turn", {{50, 50}, 30, 2, 2 + kPi + 0.05}, LineCap::Butt},
        {"all but a tenth of a degree", {{50, 50}, 30, -kPi / 2, 1.5 * kPi - kPi / 1800}, LineCap::Butt},
        {"a turn and a half", {{50, 50}, 30, 0.3, 0.3 + 3 * kPi}, LineCap::Round},
    };
    for (const Row& row : rows) {
        const Arc& a = row.geometry;
        const ArcStroke opaque{36, row.cap, Colour::whiteColor(), Shadow{{1, 2}, 3}};
        ArcStroke bare = opaque;
        bare.shadow.reset();
        const ImagePtr whole = drawn([&](Canvas& c) {
            c.strokeArcShadows(std::array<Arc, 1>{a}, opaque);
            c.strokeArc(a.centre, a.radius, a.startAngle, a.endAngle, bare);
        });
        const ImagePtr ownShadow =
            drawn([&](Canvas& c) { c.strokeArc(a.centre, a.radius, a.startAngle, a.endAngle, opaque); });
        const ImagePtr promised = drawn([&](Canvas& c) {
            c.strokeArcShadows(std::array<Arc, 1>{a}, opaque, true);
            c.strokeArc(a.centre, a.radius, a.startAngle, a.endAngle, bare);
        });
        EXPECT_EQ(largestDifference(*whole, *ownShadow), 0) << row.arc;
        EXPECT_EQ(largestDifference(*whole, *promised), 0) << row.arc;
    }
}
