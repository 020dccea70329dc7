// Shadows painted straight into the bitmap are Cairo's own painting through a
// mask, to the byte; and the pixels counted as under an opaque arc's inside
// lie wholly inside it.
#include "platform/graphics/detail/ArcInside.h"
#include "platform/graphics/detail/CHandles.h"
#include "platform/graphics/detail/ShadowPaint.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <random>
#include <vector>

using namespace velmorant::platform;

namespace {

constexpr double kPi = std::numbers::pi;

TEST(ShadowPaint, IsCairosPaintingThroughAMaskToTheByte) {
    const Rgba colours[] = {{0, 0, 0, 1.0 / 3}, {0, 0, 0, 1}, {0.9, 0.4, 0.1, 0.55}, {0.2, 0.7, 1, 1}, {1, 1, 1, 0.01}};
    std::mt19937 random(7);
    for (const Rgba& colour : colours) {
        // Every run length up to a few lanes and a long one, over made-up premultiplied pixels.
        for (int count : {0, 1, 2, 3, 4, 5, 7, 8, 9, 12, 16, 61}) {
            SurfacePtr target(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, count + 1, 1));
            SurfacePtr mask(cairo_image_surface_create(CAIRO_FORMAT_A8, count + 1, 1));
            auto* pixels = reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(target.get()));
            unsigned char* alpha = cairo_image_surface_get_data(mask.get());
            for (int x = 0; x < count; ++x) {
                const std::uint32_t a = random() % 256;
                auto channel = [&] { return a ? static_cast<std::uint32_t>(random() % (a + 1)) : 0u; };
                pixels[x] = a << 24 | channel() << 16 | channel() << 8 | channel();
                // Runs of empty and full mask as well as partial ones.
                const int kind = static_cast<int>(random() % 4);
                alpha[x] = static_cast<unsigned char>(kind == 0 ? 0 : kind == 1 ? 255 : random() % 256);
            }
            cairo_surface_mark_dirty(target.get());
            cairo_surface_mark_dirty(mask.get());
            std::vector<std::uint32_t> ours(pixels, pixels + count);
            paintThroughMask(premultipliedPixel(colour), alpha, ours.data(), count);
            {
                CairoPtr cr(cairo_create(target.get()));
                cairo_set_source_rgba(cr.get(), colour.r, colour.g, colour.b, colour.a);
                cairo_mask_surface(cr.get(), mask.get(), 0, 0);
            }
            cairo_surface_flush(target.get());
            for (int x = 0; x < count; ++x)
                ASSERT_EQ(ours[x], pixels[x]) << "colour alpha " << colour.a << ", " << count << " pixels, pixel " << x;
        }
    }
}

// An image over pixels, eight at a time where the processor allows: Cairo's
// own OVER to the byte, for runs with and without a tail, blocks wholly clear
// or opaque (painted by shortcuts) and mixed ones, alphas 1 and 254 among them.
TEST(ShadowPaint, PaintsAnImageOverPixelsAsCairoDoes) {
    std::mt19937 random(11);
    auto premultiplied = [&](std::uint32_t a) {
        auto channel = [&] { return a ? static_cast<std::uint32_t>(random() % (a + 1)) : 0u; };
        return a << 24 | channel() << 16 | channel() << 8 | channel();
    };
    for (int count : {0, 1, 3, 4, 7, 8, 9, 15, 16, 17, 61}) {
        SurfacePtr target(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, count + 1, 1));
        SurfacePtr image(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, count + 1, 1));
        auto* pixels = reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(target.get()));
        auto* source = reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(image.get()));
        int block = 0;
        for (int x = 0; x < count; ++x) {
            if (x % 8 == 0) block = static_cast<int>(random() % 3);  // clear, opaque or mixed
            const std::uint32_t alphas[] = {0, 1, 254, 255, static_cast<std::uint32_t>(random() % 256)};
            const std::uint32_t a = block == 0 ? 0 : block == 1 ? 255 : alphas[random() % 5];
            source[x] = premultiplied(a);
            pixels[x] = premultiplied(random() % 2 ? 255 : random() % 256);
        }
        cairo_surface_mark_dirty(target.get());
        cairo_surface_mark_dirty(image.get());
        std::vector<std::uint32_t> ours(pixels, pixels + count);
        paintOver(source, ours.data(), count);
        {
            CairoPtr cr(cairo_create(target.get()));
            cairo_rectangle(cr.get(), 0, 0, count, 1);
            cairo_clip(cr.get());
            cairo_set_source_surface(cr.get(), image.get(), 0, 0);
            cairo_paint(cr.get());
        }
        cairo_surface_flush(target.get());
        for (int x = 0; x < count; ++x) ASSERT_EQ(ours[x], pixels[x]) << count << " pixels, pixel " << x;
    }
}

// Whether (x, y) lies between the radii and within the sweep, by its polar coordinates.
bool inBand(double x, double y, double cx, double cy, double inner, double outer, double start, double sweep) {
    const double r = std::hypot(x - cx, y - cy);
    if (r < inner - 1e-9 || r > outer + 1e-9) return false;
    if (sweep >= 2 * kPi) return true;
    double a = std::fmod(std::atan2(y - cy, x - cx) - start, 2 * kPi);
    if (a < 0) a += 2 * kPi;
    return a <= sweep + 1e-9;
}

TEST(ArcInside, RunsHoldOnlyPixelsWhollyInsideAndMostOfThem) {
    struct Row {
        const char* arc;
        double cx, cy, inner, outer, start, sweep;
        // Of the pixels whose every point lies 2.5 pixels clear of the edges, the share the runs must hold.
        double atLeast;
    };
    const Row rows[] = {
        {"a whole ring", 60.5, 60, 30, 50, -kPi / 2, 2 * kPi, 1},
        {"more than a turn", 60, 60.3, 30, 50, 1, 2 * kPi + 1, 1},
        {"a quarter across angle 0", 60, 60, 20, 55, -kPi / 4, kPi / 2, 0.95},
        {"half a turn less a little", 60, 60, 25, 50, 1, kPi - 0.05, 0.95},
        {"half a turn and a little", 60, 60, 25, 50, 1, kPi + 0.05, 0.95},
        {"all but a tenth of a degree", 60, 60, 25, 50, -kPi / 2, 2 * kPi - kPi / 1800, 0.95},
        {"no sweep", 60, 60, 25, 50, 0.5, 0, 0},
        {"a sliver", 60, 60, 25, 50, 0.5, 0.001, 0},
        {"a band thinner than a pixel", 60, 60, 40, 40.6, 0, 2 * kPi, 0},
        {"off the canvas's centre", 10, 100, 30, 70, 5.5, 1.2, 0.95},
    };
    for (const Row& row : rows) {
        const ArcInside arc(row.cx, row.cy, row.inner, row.outer, row.start, row.sweep);
        const double margin = 2 / row.inner;
        int clear = 0, held = 0;
        std::vector<PixelRun> runs;
        for (int y = -5; y < 180; ++y) {
            runs.clear();
            arc.addRunsInside(y, runs);
            std::vector<bool> inside(200, false);
            for (const PixelRun& run : runs)
                for (int x = run.x0; x < run.x1; ++x) {
                    ASSERT_TRUE(x >= -20 && x < 180) << row.arc << ": row " << y << " pixel " << x;
                    inside[x + 20] = true;
                    // Every corner and the middle of the pixel.
                    for (double dx : {0.0, 0.5, 1.0})
                        for (double dy : {0.0, 0.5, 1.0})
                            ASSERT_TRUE(inBand(x + dx, y + dy, row.cx, row.cy, row.inner, row.outer, row.start,
                                               row.sweep))
                                << row.arc << ": row " << y << " pixel " << x;
                }
            for (int x = -20; x < 180; ++x) {
                const double far = 2.5;
                bool wellInside = true;
                for (double dx : {0.0, 1.0})
                    for (double dy : {0.0, 1.0})
                        wellInside = wellInside && inBand(x + dx, y + dy, row.cx, row.cy, row.inner + far,
                                                          row.outer - far, row.start + margin + 0.05,
                                                          row.sweep - 2 * margin - 0.1);
                if (!wellInside || row.sweep - 2 * margin - 0.1 <= 0) continue;
                ++clear;
                held += inside[x + 20];
            }
        }
        if (row.atLeast > 0) {
            ASSERT_GT(clear, 0) << row.arc;
            EXPECT_GE(static_cast<double>(held) / clear, row.atLeast) << row.arc;
        }
    }
}

TEST(ArcInside, RowsOutsideLeaveOutEveryArcsInside) {
    // Two rings that overlap on the row through their centres, and a third far away.
    const std::vector<ArcInside> arcs{{50, 50, 10, 30, 0, 2 * kPi}, {70, 50, 10, 30, 0, 2 * kPi},
                                      {500, 500, 10, 30, 0, 2 * kPi}};
    std::vector<PixelRun> out, scratch;
    runsOutside(arcs, 50, {0, 120}, out, scratch);
    // The row's pixels reach 1 below the centres: the first ring holds 21-40 and 60-79, the
    // second 41-60 and 80-99; the pixels touching the inner edges at 40 and 80 are left out.
    ASSERT_EQ(out, (std::vector<PixelRun>{{0, 21}, {40, 41}, {79, 80}, {99, 120}}));
    runsOutside(arcs, 50, {22, 39}, out, scratch);
    EXPECT_TRUE(out.empty());
    runsOutside({}, 50, {3, 9}, out, scratch);
    EXPECT_EQ(out, (std::vector<PixelRun>{{3, 9}}));
    runsOutside(arcs, 0, {0, 120}, out, scratch);
    EXPECT_EQ(out, (std::vector<PixelRun>{{0, 120}}));
}

}  // namespace
