#include "platform/graphics/detail/Blur.h"
#include "platform/graphics/Canvas.h"
#include "platform/graphics/detail/FontLayout.h"
#include "platform/graphics/Image.h"
#include "platform/graphics/detail/ImageSurface.h"
#include "platform/graphics/detail/ShadowMask.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <optional>
#include <tuple>
#include <string>
#include <vector>

using namespace velmorant::platform;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

const FontSystem& fonts() {
    static const FontSystem system(std::filesystem::path(VELMORANT_TEST_RESOURCE_DIR) / "fonts" / "fonts.conf");
    return system;
}

bool inked(const Image& image, Point p) { return image.pixelAt(p).a > 0.5; }

// The upper tail of the standard normal distribution.
double normalTail(double z) { return 0.5 * std::erfc(z / std::sqrt(2.0)); }

// A rectangle's outline, always wound the same way.
void addRect(Canvas& canvas, Rect r) {
    canvas.moveTo({r.x, r.y});
    canvas.addLineTo({r.x + r.width, r.y});
    canvas.addLineTo({r.x + r.width, r.y + r.height});
    canvas.addLineTo({r.x, r.y + r.height});
    canvas.closePath();
}

ImagePtr drawn(const std::function<void(Canvas&)>& draw, double scale = 2, Size size = {100, 100}) {
    Canvas canvas(size, scale, fonts());
    draw(canvas);
    return canvas.makeImage();
}

// A white rectangle, by default a 40-point square at (30, 30), with the given shadow.
ImagePtr withShadow(const std::function<void(Canvas&)>& setShadow, double scale = 2, Rect r = {30, 30, 40, 40}) {
    return drawn([&](Canvas& c) { setShadow(c), c.setFillColour(Colour::whiteColor()), addRect(c, r), c.fillPath(); },
                 scale);
}

TEST(Canvas, SizeInPixelsIsHeldToFiniteBounds) {
    const std::tuple<Size, double, int, int> cases[] = {  // points, scale, pixel width and height
        {{100, 50}, 2, 200, 100}, {{10.2, 10}, 3, 31, 30}, {{kNaN, 10}, 3, 0, 0}, {{10, kInf}, 3, 0, 0},
        {{-5, 10}, 3, 0, 0},      {{10, 10}, 0, 0, 0},     {{10, 10}, kNaN, 0, 0},
        {{Canvas::kMaxPixels, 1}, 1, Canvas::kMaxPixels, 1}, {{Canvas::kMaxPixels + 1, 1}, 1, 0, 0}, {{1e12, 1}, 1, 0, 0},
    };
    for (const auto& [points, scale, width, height] : cases) {
        ImagePtr image = Canvas(points, scale, fonts()).makeImage();
        ASSERT_TRUE(image) << points.width << " x " << points.height << " @" << scale;
        EXPECT_EQ(image->pixelWidth(), width) << points.width << " @" << scale;
        EXPECT_EQ(image->pixelHeight(), height) << points.height << " @" << scale;
        // The size in points matches the bitmap, so probes in points stay on it.
        EXPECT_LE(image->size().width * image->scale(), width + 1e-9);
        // A picture drawn later tells the same size before it is drawn.
        ImagePtr later = Canvas::drawLater(points, scale, [] { return ImagePtr(); });
        ASSERT_TRUE(later);
        EXPECT_EQ(later->pixelWidth(), width) << points.width << " @" << scale;
        EXPECT_EQ(later->pixelHeight(), height) << points.height << " @" << scale;
        EXPECT_EQ(later->size(), image->size()) << points.width << " @" << scale;
        EXPECT_EQ(later->scale(), image->scale()) << points.width << " @" << scale;
        EXPECT_FALSE(later->isDrawn());
    }
}

TEST(Canvas, StartsTransparentAndFillsWithNonZeroWinding) {
    // Two squares wound the same way: their overlap stays filled.
    ImagePtr image = drawn([](Canvas& c) {
        c.setFillColour(Colour::systemRedColor());
        addRect(c, {20, 20, 40, 40}), addRect(c, {40, 20, 40, 40}), c.fillPath();
    });
    for (Point clear : {Point{0, 0}, Point{99.9, 99.9}, Point{50, 65}})  // the path was used up by the fill
        EXPECT_EQ(image->pixelAt(clear).a, 0) << clear.x << "," << clear.y;
    const Rgba red = Colour::systemRedColor().rgba();
    for (Point inside : {Point{25, 30}, Point{50, 40}, Point{75, 55}}) {
        Rgba p = image->pixelAt(inside);
        EXPECT_TRUE(std::fabs(p.r - red.r) < 0.01 && std::fabs(p.g - red.g) < 0.01 && p.a == 1) << inside.x;
    }
}

// A canvas's memory may hold an earlier canvas's pixels: an opaque gradient
// replaces only the pixels its clip covers whole; the rest start transparent.
TEST(Canvas, AnOpaqueGradientReplacesOnlyThePixelsItCoversWhole) {
    const Rect clips[] = {{0, 0, 5, 10}, {0, 0, 5.5, 10}, {2, 2.5, 5, 5}};
    for (const Rect& clip : clips) {
        for (int earlier = 0; earlier < 3; ++earlier) {  // white pixels freed for the next canvas to take
            Canvas white({10, 10}, 1, fonts());
            white.setFillColour(Colour::whiteColor());
            addRect(white, {0, 0, 10, 10}), white.fillPath();
            white.makeImage();
        }
        Canvas canvas({10, 10}, 1, fonts());
        addRect(canvas, clip), canvas.clipToPath();
        canvas.drawLinearGradient({Colour::blackColor(), Colour::blackColor()}, {0, 0}, {0, 10});
        ImagePtr image = canvas.makeImage();
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 10; ++x) {
                // The share of the pixel inside the clip.
                const double across = std::clamp(std::min<double>(x + 1, clip.x + clip.width) - std::max<double>(x, clip.x), 0.0, 1.0);
                const double down = std::clamp(std::min<double>(y + 1, clip.y + clip.height) - std::max<double>(y, clip.y), 0.0, 1.0);
                EXPECT_NEAR(image->pixelAt({x + 0.5, y + 0.5}).a, across * down, 0.01) << x << "," << y;
            }
    }
}

TEST(Canvas, ArcsSweepThroughIncreasingAngles) {
    struct Case {
        const char* what;
        double start, end;
        std::vector<double> inkedAt, clearAt;  // angles probed on the arc's radius
    };
    const double q = M_PI / 2, radius = 30;
    const Case cases[] = {
        {"first quarter, +x towards +y (down)", 0, q, {q / 2}, {-q / 2, 2 * q, 3 * q}},
        {"end before start wraps forward", 3 * q, 0, {3.5 * q}, {q / 2, 1.5 * q, 2.5 * q}},
        {"more than a turn is a whole turn", 0, 4 * M_PI + q, {0.5, q / 2, 1.5 * q, 2.5 * q, 3.5 * q}, {}},
        {"a million turns stay quick", 0.3, 2e6 * M_PI + 0.3, {0.5, 1.5 * q, 2.5 * q, 3.5 * q}, {}},
        {"far-out angles", 1e9 * M_PI, 1e9 * M_PI + q, {q / 2}, {2.5 * q}},
        {"equal angles draw nothing", q, q, {}, {q / 2, 1.5 * q, 2.5 * q, 3.5 * q}},
        {"non-finite end draws nothing", 0, kInf, {}, {q / 2, 2.5 * q}},
    };
    auto at = [](double angle, double r) { return Point{50 + r * std::cos(angle), 50 + r * std::sin(angle)}; };
    for (const auto& c : cases) {
        ImagePtr image = drawn([&](Canvas& canvas) {
            canvas.setLineWidth(4), canvas.addArc({50, 50}, radius, c.start, c.end), canvas.strokePath();
        });
        for (double a : c.inkedAt) {
            EXPECT_TRUE(inked(*image, at(a, radius))) << c.what << " at " << a;
            EXPECT_FALSE(inked(*image, at(a, radius + 4)) || inked(*image, at(a, radius - 4))) << c.what << " at " << a;
        }
        for (double a : c.clearAt) EXPECT_FALSE(inked(*image, at(a, radius))) << c.what << " at " << a;
    }
}

TEST(Canvas, LineCapsExtendTheEnds) {
    // A 10-point line ending at x = 20: 3 points beyond its end on its axis,
    // and diagonally 4 points out, where only a square cap reaches.
    for (auto [cap, beyondEnd, beyondCorner] : {std::tuple{LineCap::Butt, false, false},
                                                 {LineCap::Round, true, false}, {LineCap::Square, true, true}}) {
        ImagePtr image = drawn([&](Canvas& c) {
            c.setLineWidth(10), c.setLineCap(cap), c.moveTo({20, 50}), c.addLineTo({80, 50}), c.strokePath();
        });
        EXPECT_TRUE(inked(*image, {50, 52}));
        EXPECT_EQ(inked(*image, {17, 50}), beyondEnd) << static_cast<int>(cap);
        EXPECT_EQ(inked(*image, {16, 46}), beyondCorner) << static_cast<int>(cap);
    }
}

TEST(Canvas, ShadowFallsBelowForPositiveHeightAsABlurredGaussian) {
    const double blur = 6, sigma = blur / 2;
    for (double scale : {1.0, 3.0}) {
        ImagePtr image = withShadow([&](Canvas& c) { c.setShadow({0, 10}, blur); }, scale);
        // The shadow's edge lies at y = 80: along x = 50 its alpha follows the
        // normal tail, reaching 1/3 of it, black, deep under the edge.
        for (double dy : {-2 * sigma, -sigma, 0.0, sigma, 2 * sigma}) {
            double centre = dy + 0.5 / scale;  // of the pixel probed
            Rgba p = image->pixelAt({50, 80 + centre});
            EXPECT_NEAR(p.a, normalTail(centre / sigma) / 3, 0.01) << "scale " << scale << " dy " << dy;
            EXPECT_TRUE(p.a <= 0.02 || p.r < 0.05) << "black";
        }
        EXPECT_EQ(image->pixelAt({50, 25}).a, 0) << "nothing above the square";
        EXPECT_EQ(image->pixelAt({50, 50}), (Rgba{1, 1, 1, 1})) << "the shape covers its own shadow";
    }
}

TEST(Canvas, ShadowFallsOffSmoothly) {
    ImagePtr image = withShadow([](Canvas& c) { c.setShadow({0, 0}, 12); }, 3);
    // Every pixel step out from the edge lowers alpha a little: no bands, no cliff.
    double previous = image->pixelAt({70.2, 50}).a;
    int levels = 0;
    for (double x = 70 + 1 / 3.0 + 0.1; x < 88; x += 1 / 3.0) {
        double a = image->pixelAt({x, 50}).a;
        EXPECT_LE(a, previous + 1e-9) << x;
        EXPECT_LT(previous - a, 0.03) << x;
        levels += a < previous;
        previous = a;
    }
    EXPECT_GT(levels, 20);
}

TEST(Canvas, ShadowsTakeTheirColourCanBeSwitchedOffAndCrossTheEdges) {
    struct Case {
        const char* what;
        std::function<void(Canvas&)> set;
        double scale;
        Rect square;
        Point probe;
        double alpha;
    };
    const Rect sq{30, 30, 40, 40}, outside{-40, -40, 30, 30};
    const Point under{50, 75};  // 5 points below the edge moved by a 10-point offset
    const Colour halfRed = Colour::systemRedColor().colorWithAlphaComponent(0.5);
    const Case cases[] = {
        {"plain", [](Canvas& c) { c.setShadow({0, 10}, 0); }, 2, sq, under, 1.0 / 3},
        {"coloured", [&](Canvas& c) { c.setShadowWithColour({0, 10}, 0, halfRed); }, 2, sq, under, 0.5},
        {"off", [](Canvas& c) { c.setShadow({0, 10}, 4), c.setNoShadow(); }, 2, sq, under, 0},
        {"clear colour", [](Canvas& c) { c.setShadowWithColour({0, 10}, 4, Colour::clearColor()); }, 2, sq, under, 0},
        {"non-finite", [](Canvas& c) { c.setShadow({kNaN, 10}, 4); }, 2, sq, under, 0},
        {"shape outside, shadow moved in", [](Canvas& c) { c.setShadow({20, 20}, 0); }, 2, outside, {5, 5}, 1.0 / 3},
        {"shape outside, blurred shadow in", [](Canvas& c) { c.setShadow({20, 20}, 4); }, 2, outside, {2, 2}, 1.0 / 3},
        {"shadow moved out", [](Canvas& c) { c.setShadow({-200, 0}, 4); }, 2, {10, 10, 20, 20}, {35, 20}, 0},
        {"over the right edge, wide blur", [](Canvas& c) { c.setShadow({0, 0}, 10); }, 3, {95, 40, 30, 20},
         {93 + 1 / 6.0, 50}, normalTail(11 / 30.0) / 3},
        {"over the bottom edge, offset up", [](Canvas& c) { c.setShadow({0, -10}, 0); }, 3, {40, 95, 20, 30}, {50, 90}, 1.0 / 3},
        // A shadow that falls only on the first or last row or column of pixels.
        {"onto the last row", [](Canvas& c) { c.setShadow({0, 10}, 0); }, 1, {0, 89, 100, 1}, {50, 99.5}, 1.0 / 3},
        {"onto the first row", [](Canvas& c) { c.setShadow({0, -10}, 0); }, 1, {0, 10, 100, 1}, {50, 0.5}, 1.0 / 3},
        {"onto the last column", [](Canvas& c) { c.setShadow({10, 0}, 0); }, 1, {89, 0, 1, 100}, {99.5, 50}, 1.0 / 3},
        {"onto the first column", [](Canvas& c) { c.setShadow({-10, 0}, 0); }, 1, {10, 0, 1, 100}, {0.5, 50}, 1.0 / 3},
    };
    for (const auto& c : cases) {
        Rgba p = withShadow(c.set, c.scale, c.square)->pixelAt(c.probe);
        EXPECT_NEAR(p.a, c.alpha, 0.01) << c.what;
        EXPECT_TRUE(p.a < 0.4 || p.r > p.g + 0.5) << c.what << " is reddish";
    }
}

TEST(Canvas, SavedStateRestoresShadowWidthAndColours) {
    ImagePtr image = drawn([](Canvas& c) {
        c.setShadow({0, 8}, 0), c.setLineWidth(6), c.setStrokeColour(Colour::systemRedColor());
        {
            auto saved = c.saveGState();
            c.setNoShadow(), c.setLineWidth(1), c.setStrokeColour(Colour::systemGreenColor());
            c.moveTo({10, 20}), c.addLineTo({40, 20}), c.strokePath();
        }
        c.moveTo({60, 20}), c.addLineTo({90, 20}), c.strokePath();
    });
    EXPECT_EQ(image->pixelAt({25, 28}).a, 0) << "no shadow inside the saved state";
    EXPECT_FALSE(inked(*image, {25, 22})) << "thin line inside the saved state";
    EXPECT_GT(image->pixelAt({75, 28}).a, 0.3) << "shadow back after it";
    EXPECT_TRUE(inked(*image, {75, 22})) << "width back after it";
    EXPECT_GT(image->pixelAt({75, 20}).r, image->pixelAt({75, 20}).g + 0.5) << "stroke colour back after it";
}

TEST(Canvas, TextIsMeasuredAndDrawnFromItsTopLeft) {
    const TextAttributes attributes{Font::systemFontOfSize(20, FontWeight::Bold), Colour::blackColor()};
    Canvas canvas({200, 100}, 3, fonts()), small({200, 100}, 1, fonts());
    Size one = canvas.sizeWithAttributes("Sleep", attributes);
    EXPECT_NEAR(canvas.sizeWithAttributes("SleepSleep", attributes).width, 2 * one.width, 0.5);
    EXPECT_GT(one.height, 20) << "the font's line, not the ink";
    EXPECT_LT(one.height, 30);
    EXPECT_NEAR(small.sizeWithAttributes("Sleep", attributes).width, one.width, 0.5) << "alike at any scale";

    canvas.drawAtPoint("HHHH", {50, 40}, {attributes.font, Colour::blackColor(), Colour::systemGreenColor()});
    ImagePtr image = canvas.makeImage();
    Size run = small.sizeWithAttributes("HHHH", attributes);
    EXPECT_EQ(image->pixelAt({49, 39}).a, 0);
    EXPECT_EQ(image->pixelAt({50.5, 40.5}).a, 1) << "background fills the run from the point";
    EXPECT_EQ(image->pixelAt({50 + run.width + 1, 40 + run.height / 2}).a, 0);
    EXPECT_EQ(image->pixelAt({50, 40 + run.height + 1}).a, 0);
}

TEST(Canvas, SymbolsAndEmojiHaveGlyphs) {
    for (const char* run : {"☾", "★", "♥", "Z", "7", "⑦", "°", "↗", "↘", "⭒", "😴", "💤", "❤️", "O₂ 98%"}) {
        for (FontWeight weight : {FontWeight::Regular, FontWeight::Heavy}) {
            auto layout = layoutInPixels(fonts(), Font::systemFontOfSize(16, weight), 3);
            pango_layout_set_text(layout.get(), run, -1);
            EXPECT_EQ(pango_layout_get_unknown_glyphs_count(layout.get()), 0) << run;
        }
        ImagePtr image = drawn([&](Canvas& c) { c.drawAtPoint(run, {2, 2}, {Font::systemFontOfSize(16), Colour::blackColor()}); },
                               3, {60, 30});
        int ink = 0;
        for (double y = 0; y < 30; y += 1 / 3.0)
            for (double x = 0; x < 60; x += 1 / 3.0) ink += inked(*image, {x, y});
        EXPECT_GT(ink, 20) << run << " draws something";
    }
}

TEST(Canvas, ImagesFillTheirRectangleSharply) {
    // A 1-pixel checkerboard at scale 3, drawn 1:1, must come out unchanged.
    ImagePtr checker = drawn([](Canvas& c) {
        c.setFillColour(Colour::blackColor());
        for (int y = 0; y < 30; ++y)
            for (int x = y % 2; x < 30; x += 2) addRect(c, {x / 3.0, y / 3.0, 1 / 3.0, 1 / 3.0});
        c.fillPath();
    }, 3, {10, 10});
    ImagePtr image = drawn([&](Canvas& c) {
        c.drawImage(nullptr, {0, 0, 40, 40}), c.drawImage(checker, {10, 20, 10, 10}), c.drawImage(checker, {30, 30, kNaN, 5});
    }, 3, {40, 40});
    EXPECT_EQ(image->pixelAt({5, 5}).a, 0);
    EXPECT_EQ(image->pixelAt({35, 35}).a, 0);
    for (double y = 0.1; y < 10; y += 1 / 3.0)
        for (double x = 0.1; x < 10; x += 1 / 3.0)
            ASSERT_EQ(image->pixelAt({10 + x, 20 + y}), checker->pixelAt({x, y})) << x << "," << y;
}

// An image on the canvas's own pixels is painted over what lies there by
// the canvas itself: the bytes Cairo paints, partly off the canvas, cut by a
// clip of whole pixels, half a pixel off (left to Cairo) or under a shadow.
TEST(Canvas, ImagesOnWholePixelsArePaintedAsCairoPaintsThem) {
    ImagePtr picture = drawn([](Canvas& c) {
        c.setFillColour(Colour::systemGreenColor()), addRect(c, {1, 1, 6, 6}), c.fillPath();
        c.setFillColour(Colour::systemRedColor().colorWithAlphaComponent(0.4)), c.addArc({5, 5}, 4, 0, 6.3), c.fillPath();
    }, 3, {10, 10});
    const Colour under = Colour::whiteColor().colorWithAlphaComponent(0.7);
    struct Case {
        Rect at;
        std::optional<Rect> clip;
        bool shadow = false;
    };
    for (const Case& c : {Case{{2, 3, 10, 10}}, Case{{-4, 35, 10, 10}}, Case{{5, 5, 10, 10}, Rect{7, 6, 5, 20}},
                          Case{{5.5, 5, 10, 10}}, Case{{5, 5, 10, 10}, std::nullopt, true}}) {
        SCOPED_TRACE(::testing::Message() << "at " << c.at.x << ", " << c.at.y);
        ImagePtr ours = drawn([&](Canvas& canvas) {
            canvas.setFillColour(under), addRect(canvas, {0, 0, 40, 30}), canvas.fillPath();
            if (c.clip) addRect(canvas, *c.clip), canvas.clipToPath();
            if (c.shadow) canvas.setShadow({1, 1}, 2);
            canvas.drawImage(picture, c.at);
        }, 3, {40, 40});
        SurfacePtr reference(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 120, 120));
        {
            CairoPtr cr(cairo_create(reference.get()));
            const Rgba u = under.rgba();
            cairo_set_source_rgba(cr.get(), u.r, u.g, u.b, u.a);
            cairo_rectangle(cr.get(), 0, 0, 120, 90);
            cairo_fill(cr.get());
            if (c.clip) cairo_rectangle(cr.get(), c.clip->x * 3, c.clip->y * 3, c.clip->width * 3, c.clip->height * 3), cairo_clip(cr.get());
            cairo_set_source_surface(cr.get(), cairoSurface(*picture), c.at.x * 3, c.at.y * 3);
            cairo_paint(cr.get());
        }
        cairo_surface_flush(reference.get());
        cairo_surface_flush(cairoSurface(*ours));
        int differing = 0;
        for (int y = 0; y < 120; ++y)
            differing += std::memcmp(cairo_image_surface_get_data(reference.get()) + y * cairo_image_surface_get_stride(reference.get()),
                                     cairo_image_surface_get_data(cairoSurface(*ours)) + y * cairo_image_surface_get_stride(cairoSurface(*ours)),
                                     120 * 4) != 0;
        if (c.shadow) EXPECT_GT(differing, 0) << "the shadow is painted too";
        else EXPECT_EQ(differing, 0) << "rows differing";
    }
}

TEST(Canvas, HostileNumbersFinishWithAPicture) {
    const double big = 1e300;
    const std::function<void(Canvas&)> cases[] = {
        [&](Canvas& c) {
            c.addArc({kNaN, 5}, 10, 0, 1), c.addArc({5, 5}, kNaN, 0, 1), c.addArc({50, 50}, big, 0, 6);
            c.addArc({50, 50}, -10, 0, 6), c.addArc({50, 50}, 10, -big, big), c.strokePath();
            c.addArc({big, -big}, 1e8, 0, 6), c.fillPath();
        },
        [&](Canvas& c) {
            c.moveTo({0, 0}), c.addLineTo({kInf, 5}), c.addLineTo({50, 50}), c.strokePath();
            c.moveTo({-big, 0}), c.addLineTo({big, 50}), c.addLineTo({0, big}), c.fillPath();
        },
        [&](Canvas& c) { c.setLineWidth(big), c.setLineCap(LineCap::Round), c.moveTo({1, 1}), c.addLineTo({2, 2}), c.strokePath(); },
        [](Canvas& c) { c.setLineWidth(kNaN), c.setLineWidth(-3), c.moveTo({1, 1}), c.addLineTo({2, 2}), c.strokePath(); },
        [&](Canvas& c) { c.setShadow({big, -big}, big), c.addArc({50, 50}, 10, 0, 6), c.fillPath(); },
        [&](Canvas& c) { c.setShadow({0, 0}, 1e7), c.addArc({50, 50}, 10, 0, 6), c.fillPath(); },
        [](Canvas& c) {
            ImagePtr dot = Canvas({1, 1}, 1, fonts()).makeImage();
            for (Rect r : {Rect{kNaN, 0, 5, 5}, Rect{0, 0, kInf, 5}, Rect{0, 0, -1e300, 1e300}, Rect{1e300, 0, 1, 1}})
                c.drawImage(dot, r);
        },
        [&](Canvas& c) {
            TextAttributes huge{Font::systemFontOfSize(big), Colour::blackColor()};
            c.setShadow({1, 1}, 3), c.drawAtPoint("big", {0, 0}, huge), (void)c.sizeWithAttributes("big", huge);
            c.drawAtPoint("\xff\xfe bad \0 bytes", {kNaN, 0}, {Font::systemFontOfSize(kNaN), Colour::blackColor()});
            c.drawAtPoint(std::string(1 << 20, 'x'), {-big, big}, {Font::systemFontOfSize(-4)});
        },
        [](Canvas& c) { c.closePath(), c.strokePath(), c.fillPath(), c.addLineTo({3, 3}), c.fillPath(); },
    };
    for (std::size_t i = 0; i < std::size(cases); ++i)
        for (double scale : {1.0, 3.0}) {
            ImagePtr image = drawn(cases[i], scale);
            ASSERT_TRUE(image) << "case " << i;
            EXPECT_EQ(image->pixelWidth(), static_cast<int>(100 * scale)) << "case " << i;
        }
}

TEST(Image, CreateRefusesSizesItCannotHold) {
    EXPECT_TRUE(Image::create({10, 10}, 3) && Image::create({0, 0}, 3));
    for (auto [points, scale] : {std::pair{Size{kNaN, 1}, 1.0}, {Size{1, 1}, kInf}, {Size{-1, 1}, 1.0}, {Size{1e6, 1e6}, 1.0}})
        EXPECT_FALSE(Image::create(points, scale)) << points.width << " @" << scale;
}

TEST(Blur, BothMethodsApproachTheGaussian) {
    // Three boxes are used from sigma 2 on and come within 1.5% of the Gaussian.
    const std::tuple<const char*, void (*)(AlphaBitmap, double), double, double> methods[] = {
        {"boxes", &boxBlurAlpha, 2, 0.015}, {"gaussian", &gaussianBlurAlpha, 0, 0.005}, {"chosen", &blurAlpha, 0, 0.015}};
    // A half-plane edge blurred: alpha at distance d from it is the normal tail
    // at d / sigma. The edge runs down the bitmap (blurred along rows) and
    // across it (blurred down columns), on rows padded beyond their width.
    for (double sigma : {0.8, 2.0, 4.5, 7.5, 20.0})
        for (const auto& [name, blur, smallestSigma, tolerance] : methods)
            for (bool across : {false, true}) {
                if (sigma < smallestSigma) continue;
                const int reach = static_cast<int>(std::ceil(3 * sigma)), length = 4 * reach + 2, breadth = 2 * reach + 1;
                const int width = across ? breadth : length, height = across ? length : breadth, stride = width + 5;
                std::vector<unsigned char> pixels(static_cast<size_t>(stride) * height, 7);
                auto at = [&](int along, int side) -> unsigned char& {
                    return pixels[across ? along * stride + side : side * stride + along];
                };
                for (int along = 0; along < length; ++along)
                    for (int side = 0; side < breadth; ++side) at(along, side) = along < length / 2 ? 255 : 0;
                blur({pixels.data(), width, height, stride}, sigma);
                for (int along = length / 2 - reach; along < length / 2 + reach; ++along)  // the ends see the missing border
                    EXPECT_NEAR(at(along, reach) / 255.0, normalTail((along + 0.5 - length / 2.0) / sigma), tolerance)
                        << name << " sigma " << sigma << (across ? " down" : " along") << " at " << along;
                for (int y = 0; y < height; ++y)  // bytes past a row's width belong to someone else
                    for (int x = width; x < stride; ++x) ASSERT_EQ(pixels[y * stride + x], 7) << name;
            }
}

// A row of cells scaled across, eight pixels at a time where the processor
// allows, against the plain bilinear step in floats: the same values exactly,
// at every width (the pixels left after whole eights too) and where the cells
// leave too few bytes to spare for the wide reads.
TEST(ShadowMask, CellsScaledAcrossAreExactlyTheBilinearStep) {
    std::vector<unsigned char> cells(40);
    for (std::size_t c = 0; c < cells.size(); ++c) cells[c] = static_cast<unsigned char>((c * 97 + 13) % 256);
    cells[3] = 0, cells[4] = 255, cells[5] = 1, cells[6] = 254;  // the extremes, side by side
    struct Case {
        int cellCount, width;
        double factor;
    };
    for (const Case& c : {Case{40, 16, 2.2}, Case{40, 23, 1.5}, Case{40, 7, 1.7}, Case{40, 1, 3.0}, Case{40, 64, 2.0},
                          Case{35, 64, 2.0}, Case{34, 64, 2.0}, Case{33, 64, 2.0}}) {
        SCOPED_TRACE("cells " + std::to_string(c.cellCount) + " width " + std::to_string(c.width));
        std::vector<int> first(c.width);
        std::vector<float> weight(c.width), out(c.width, -1);
        for (int x = 0; x < c.width; ++x) {
            const double at = (x + 0.5) / c.factor;
            first[x] = static_cast<int>(at);
            weight[x] = static_cast<float>(at - first[x]);
        }
        ASSERT_LT(first.back() + 1, c.cellCount);
        scaleCellsAcross(cells.data(), c.cellCount, first.data(), weight.data(), c.width, out.data());
        for (int x = 0; x < c.width; ++x) {
            const float a = cells[first[x]], b = cells[first[x] + 1];
            EXPECT_EQ(out[x], a + (b - a) * weight[x]) << "pixel " << x;
        }
    }
}

// The shadow mask, worked out on coarser cells for speed, against the shape
// drawn at full resolution and blurred there: a plain shadow (a third of
// black) may differ by at most 3 of 255 levels in the finished picture.
TEST(ShadowMask, CoarseCellsMatchTheFullResolutionBlur) {
    const std::pair<const char*, std::function<void(cairo_t*)>> shapes[] = {
        {"thick ring", [](cairo_t* cr) { cairo_set_line_width(cr, 54), cairo_arc(cr, 200, 200, 140, 0, 2 * M_PI), cairo_stroke(cr); }},
        {"thin line", [](cairo_t* cr) {
             cairo_set_line_width(cr, 3), cairo_move_to(cr, 40.3, 60.7), cairo_line_to(cr, 350.2, 330.9), cairo_stroke(cr);
         }},
        {"small square", [](cairo_t* cr) { cairo_rectangle(cr, 190.5, 195.25, 9, 7), cairo_fill(cr); }},
    };
    constexpr int kSide = 400;
    for (double sigma : {0.9, 1.5, 2.0, 2.5, 3.0, 4.5, 6.0, 7.5, 15.0, 40.0}) {
        for (const auto& [name, draw] : shapes) {
            SCOPED_TRACE(std::string(name) + " sigma " + std::to_string(sigma));
            SurfacePtr reference(cairo_image_surface_create(CAIRO_FORMAT_A8, kSide, kSide));
            draw(CairoPtr(cairo_create(reference.get())).get());
            cairo_surface_flush(reference.get());
            const unsigned char* expected = cairo_image_surface_get_data(reference.get());
            const int expectedStride = cairo_image_surface_get_stride(reference.get());
            gaussianBlurAlpha({cairo_image_surface_get_data(reference.get()), kSide, kSide, expectedStride}, sigma);

            std::optional<ShadowMask> mask = makeShadowMask({0, 0, kSide, kSide}, sigma, draw);
            ASSERT_TRUE(mask);
            cairo_surface_t* alpha = mask->alpha.get();
            cairo_surface_flush(alpha);
            const unsigned char* actual = cairo_image_surface_get_data(alpha);
            const int stride = cairo_image_surface_get_stride(alpha), width = cairo_image_surface_get_width(alpha),
                      height = cairo_image_surface_get_height(alpha);
            int worst = 0;
            for (int y = 0; y < kSide; ++y)
                for (int x = 0; x < kSide; ++x) {
                    const int mx = x - mask->x, my = y - mask->y;
                    bool held = mx >= 0 && my >= 0 && mx < width && my < height &&
                                std::any_of(mask->parts.begin(), mask->parts.end(), [&](const PixelBounds& part) {
                                    return x >= part.x0 && x < part.x1 && y >= part.y0 && y < part.y1;
                                });
                    int got = held ? actual[my * stride + mx] : 0;
                    worst = std::max(worst, std::abs(got - expected[y * expectedStride + x]));
                }
            EXPECT_LE(worst, 9);  // in the picture the mask is scaled by the shadow's alpha of 1/3
        }
    }
}

}  // namespace
