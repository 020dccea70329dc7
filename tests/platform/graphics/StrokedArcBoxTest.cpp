// The box worked out for a stroked arc holds every pixel Cairo paints for it,
// and is not much larger than what Cairo measures.
#include "platform/graphics/detail/CHandles.h"
#include "platform/graphics/detail/StrokedArcBox.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace velmorant::platform;

namespace {

constexpr double kPi = std::numbers::pi;
constexpr int kSide = 600;

struct ArcCase {
    const char* name;
    double cx, cy, radius, start, sweep, halfWidth;
};

// Arcs round (300, 300) unless said otherwise; sweeps are at least 0, as the canvas passes them.
const ArcCase kArcs[] = {
    {"quarter inside one quadrant", 300, 300, 120, 0.2, 1.0, 8},
    {"crosses the right axis", 300, 300, 120, -0.4, 0.8, 8},
    {"crosses the bottom axis", 300, 300, 120, kPi / 2 - 0.3, 0.6, 8},
    {"crosses the left axis", 300, 300, 120, kPi - 0.3, 0.6, 8},
    {"crosses the top axis", 300, 300, 120, -kPi / 2 - 0.3, 0.6, 8},
    {"starts far below zero", 300, 300, 120, -7 * kPi - 0.2, 0.5, 8},
    {"almost a full turn", 300, 300, 150, -kPi / 2, 2 * kPi - 0.05, 20},
    {"full circle", 300, 300, 150, 1.1, 2 * kPi, 20},
    {"a turn and a bit", 300, 300, 150, 0.3, 2 * kPi + 0.7, 12},
    {"no sweep", 300, 300, 100, 0.7, 0, 15},
    {"hairline", 300.3, 299.6, 90.4, 0.1, 2.5, 0.05},
    {"sub-pixel radius", 300, 300, 0.4, 0.5, 3, 6},
    {"zero radius", 300, 300, 0, 0.5, 1, 6},
    {"wider than the circle", 300, 300, 40, 0.3, 0.8, 120},
    {"barely narrower than the circle", 300, 300, 40, 2.6, 1.4, 39.5},
    {"huge width", 300, 300, 150, 2.0, 1.5, 140},
    {"off-pixel centre", 300.37, 299.81, 77.7, 3.5, 1.9, 6.3},
    {"runs off the picture", 50, 80, 400, 0.9, 1.2, 30},
};

const cairo_line_cap_t kCaps[] = {CAIRO_LINE_CAP_BUTT, CAIRO_LINE_CAP_ROUND, CAIRO_LINE_CAP_SQUARE};

void strokeArc(cairo_t* cr, const ArcCase& arc, cairo_line_cap_t cap) {
    cairo_set_line_width(cr, 2 * arc.halfWidth);
    cairo_set_line_cap(cr, cap);
    cairo_arc(cr, arc.cx, arc.cy, arc.radius, arc.start, arc.start + arc.sweep);
}

TEST(StrokedArcBox, HoldsEveryPaintedPixelAndLittleMore) {
    for (const ArcCase& arc : kArcs)
        for (cairo_line_cap_t cap : kCaps) {
            SCOPED_TRACE(std::string(arc.name) + ", cap " + std::to_string(cap));
            const ArcBox box = strokedArcBox(arc.cx, arc.cy, arc.radius, arc.start, arc.sweep, arc.halfWidth, cap);

            SurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_A8, kSide, kSide));
            CairoPtr cr(cairo_create(surface.get()));
            strokeArc(cr.get(), arc, cap);
            double x0, y0, x1, y1;
            cairo_stroke_extents(cr.get(), &x0, &y0, &x1, &y1);
            cairo_stroke(cr.get());
            cairo_surface_flush(surface.get());

            const unsigned char* data = cairo_image_surface_get_data(surface.get());
            const int stride = cairo_image_surface_get_stride(surface.get());
            int outside = 0;
            for (int y = 0; y < kSide; ++y)
                for (int x = 0; x < kSide; ++x)
                    if (data[y * stride + x] != 0 &&
                        (x < std::floor(box.x0) || x + 1 > std::ceil(box.x1) || y < std::floor(box.y0) ||
                         y + 1 > std::ceil(box.y1)))
                        ++outside;
            EXPECT_EQ(outside, 0) << "box " << box.x0 << "," << box.y0 << " - " << box.x1 << "," << box.y1;

            // Cairo measures nothing for a stroke it leaves out (a butt-capped
            // point); a stroke wider than its circle gets a whole disc's box.
            if (x1 <= x0 || arc.radius < arc.halfWidth) continue;
            constexpr double kLoose = 1;
            EXPECT_LE(box.x0, x0);
            EXPECT_LE(box.y0, y0);
            EXPECT_GE(box.x1, x1);
            EXPECT_GE(box.y1, y1);
            EXPECT_GT(box.x0, x0 - kLoose);
            EXPECT_GT(box.y0, y0 - kLoose);
            EXPECT_LT(box.x1, x1 + kLoose);
            EXPECT_LT(box.y1, y1 + kLoose);
        }
}

}  // namespace
