#include "platform/graphics/Canvas.h"
#include "platform/graphics/FontSystem.h"
#include "platform/graphics/detail/CHandles.h"
#include "platform/graphics/detail/ImageSurface.h"
#include "platform/graphics/Image.h"

#include <gtest/gtest.h>

#include <cairo.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

using namespace velmorant::platform;

namespace {

const FontSystem& fonts() {
    static const FontSystem system(std::filesystem::path(VELMORANT_TEST_RESOURCE_DIR) / "fonts" / "fonts.conf");
    return system;
}

struct GradientCase {
    double scale;
    Size canvas;
    Rect clip;          // whole pixels at the scale
    Point start, end;   // top to bottom, possibly beyond the canvas as in a band of a card
    std::vector<Colour> colours;
};

// The gradient painted by Cairo over the clip on a cleared bitmap, as any paint is.
std::vector<std::uint32_t> paintedByCairo(const GradientCase& c, int width, int height) {
    SurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    CairoPtr cr(cairo_create(surface.get()));
    cairo_scale(cr.get(), c.scale, c.scale);
    cairo_rectangle(cr.get(), c.clip.x, c.clip.y, c.clip.width, c.clip.height);
    cairo_clip(cr.get());
    PatternPtr pattern(cairo_pattern_create_linear(c.start.x, c.start.y, c.end.x, c.end.y));
    for (std::size_t i = 0; i < c.colours.size(); ++i) {
        Rgba rgba = c.colours[i].rgba();
        cairo_pattern_add_color_stop_rgba(pattern.get(), double(i) / double(c.colours.size() - 1), rgba.r, rgba.g,
                                          rgba.b, rgba.a);
    }
    cairo_set_source(cr.get(), pattern.get());
    cairo_paint(cr.get());
    cairo_surface_flush(surface.get());
    std::vector<std::uint32_t> pixels;
    for (int y = 0; y < height; ++y) {
        auto* row = reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(surface.get()) +
                                                           y * cairo_image_surface_get_stride(surface.get()));
        pixels.insert(pixels.end(), row, row + width);
    }
    return pixels;
}

TEST(CanvasGradient, AnOpaqueGradientOverWholePixelsIsExactlyCairosPaint) {
    const Colour top = Colour::colorWithHue(0.536, 0.8, 0.15, 1), bottom = Colour::colorWithHue(0.536, 0.92, 0.06, 1);
    const GradientCase cases[] = {
        // A card's background, and the same in a band whose top is 128 pixels down.
        {3, {390, 43}, {0, 0, 390, 43}, {0, 0}, {0, 180}, {top, bottom}},
        {3, {390, 43}, {0, 0, 390, 43}, {0, -42.666666666666664}, {0, 137.33333333333334}, {top, bottom}},
        // Boxes inside the canvas, as wide as one pixel, two, or not a multiple of four.
        {2, {40, 30}, {5, 3.5, 0.5, 20}, {5, 0}, {5, 30}, {top, bottom}},
        {2, {40, 30}, {5, 3.5, 1, 20}, {5, 0}, {5, 30}, {top, bottom}},
        {1, {40, 30}, {3, 1, 5, 27}, {3, 1}, {3, 28}, {Colour::whiteColor(), Colour::systemRedColor(), top}},
        // Stops far above and below: most rows take the end colours.
        {1.5, {64, 64}, {0, 0, 64, 64}, {10, 30}, {10, 31}, {Colour::blackColor(), Colour::whiteColor()}},
    };
    for (const GradientCase& c : cases) {
        Canvas canvas(c.canvas, c.scale, fonts());
        canvas.addRoundedRect(c.clip, 0);
        canvas.clipToPath();
        canvas.drawLinearGradient(c.colours, c.start, c.end);
        ImagePtr image = canvas.makeImage();
        const int width = image->pixelWidth(), height = image->pixelHeight();
        std::vector<std::uint32_t> expected = paintedByCairo(c, width, height);
        cairo_surface_t* surface = cairoSurface(*image);
        int differing = 0;
        for (int y = 0; y < height; ++y) {
            auto* row = reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(surface) +
                                                               y * cairo_image_surface_get_stride(surface));
            for (int x = 0; x < width; ++x) differing += row[x] != expected[std::size_t(y) * width + x];
        }
        EXPECT_EQ(differing, 0) << "scale " << c.scale << ", clip at " << c.clip.x << "," << c.clip.y << " "
                                << c.clip.width << " wide";
    }
}

}  // namespace
