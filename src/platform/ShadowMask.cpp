#include "ShadowMask.h"

#include "Blur.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace velmorant::platform {
namespace {

// A wide blur is worked out on a coarser grid of `factor` x `factor` pixel
// cells: Cairo's coverage gives each cell the shape's mean alpha, the blur
// there is a factor narrower (less the spread the cells and the bilinear
// scaling back add), and the cells are scaled back up. The cost falls with
// the square of the factor; with at least kMinCellSigma cells of blur left
// the result stays within one level of alpha (out of 255) of the full blur.
constexpr double kMinCellSigma = 1.5;
constexpr int kMaxCellFactor = 16;

// Eight pixels worked on together.
using Lanes = float __attribute__((vector_size(32)));
using IntLanes = int __attribute__((vector_size(32)));
using ByteLanes = unsigned char __attribute__((vector_size(8)));
constexpr int kLaneCount = sizeof(Lanes) / sizeof(float);

// One axis of the bilinear scaling: output pixel p (centre p + 0.5) lies
// between cells `first[p]` and `first[p] + 1`, `weight[p]` of the way.
struct Lerp {
    std::vector<int> first;
    std::vector<float> weight;

    Lerp(int pixelStart, int pixels, int cellStart, int factor) : first(pixels), weight(pixels) {
        for (int p = 0; p < pixels; ++p) {
            double at = (pixelStart + p + 0.5) / factor - 0.5 - cellStart;
            double below = std::floor(at);
            first[p] = static_cast<int>(below);
            weight[p] = static_cast<float>(at - below);
        }
    }
};

// Scales the blurred cells up to the pixels of `bounds`, whose width is a
// whole number of lanes.
void scaleUp(const unsigned char* cells, int cellStride, int cellX, int cellY, int factor, const PixelBounds& bounds,
             unsigned char* out, int outStride) {
    const int width = bounds.width(), lanesWide = width;
    const Lerp across(bounds.x0, width, cellX, factor), down(bounds.y0, bounds.height(), cellY, factor);
    // Each cell row scaled across once, on demand; two are in use at a time.
    int firstRow = down.first.front(), rows = down.first.back() + 2 - firstRow;
    std::vector<float> scaled(static_cast<size_t>(rows) * lanesWide, 0.f);
    std::vector<bool> ready(rows, false);
    auto scaledRow = [&](int cellRow) {
        float* row = scaled.data() + static_cast<size_t>(cellRow - firstRow) * lanesWide;
        if (!ready[cellRow - firstRow]) {
            const unsigned char* src = cells + static_cast<size_t>(cellRow) * cellStride;
            for (int x = 0; x < width; ++x) {
                float a = src[across.first[x]], b = src[across.first[x] + 1];
                row[x] = a + (b - a) * across.weight[x];
            }
            ready[cellRow - firstRow] = true;
        }
        return row;
    };
    for (int y = 0; y < bounds.height(); ++y) {
        const float* top = scaledRow(down.first[y]);
        const float* bottom = scaledRow(down.first[y] + 1);
        const float w = down.weight[y];
        unsigned char* dst = out + static_cast<size_t>(y) * outStride;
        for (int x = 0; x < width; x += kLaneCount) {
            Lanes a, b;
            std::memcpy(&a, top + x, sizeof a);
            std::memcpy(&b, bottom + x, sizeof b);
            // Between two bytes, so within 0...255 once rounded.
            ByteLanes v = __builtin_convertvector(__builtin_convertvector(a + (b - a) * w + 0.5f, IntLanes), ByteLanes);
            std::memcpy(dst + x, &v, sizeof v);
        }
    }
}

}  // namespace

std::optional<ShadowMask> makeShadowMask(PixelBounds bounds, double sigma,
                                         const std::function<void(cairo_t*)>& paint) {
    if (bounds.empty()) return std::nullopt;
    // Whole lanes across: the extra pixels on the right are blurred like the rest.
    bounds.x1 = bounds.x0 + (bounds.width() + kLaneCount - 1) / kLaneCount * kLaneCount;
    const int factor = std::clamp(static_cast<int>(sigma / kMinCellSigma), 1, kMaxCellFactor);
    const double cellSigma = factor == 1 ? sigma : std::sqrt(sigma * sigma / (factor * factor) - 0.25);
    const double reach = std::ceil(3 * sigma);
    // The cells that feed `bounds`: 3 sigma more on each side, and one more for the scaling.
    const int cellX = static_cast<int>(std::floor((bounds.x0 - reach) / factor)) - 1;
    const int cellY = static_cast<int>(std::floor((bounds.y0 - reach) / factor)) - 1;
    const int cellsWide = static_cast<int>(std::ceil((bounds.x1 + reach) / factor)) + 1 - cellX;
    const int cellsHigh = static_cast<int>(std::ceil((bounds.y1 + reach) / factor)) + 1 - cellY;
    SurfacePtr cells(cairo_image_surface_create(CAIRO_FORMAT_A8, cellsWide, cellsHigh));
    if (cairo_surface_status(cells.get()) != CAIRO_STATUS_SUCCESS) return std::nullopt;
    {
        CairoPtr cr(cairo_create(cells.get()));
        cairo_scale(cr.get(), 1.0 / factor, 1.0 / factor);
        cairo_translate(cr.get(), -cellX * factor, -cellY * factor);
        paint(cr.get());
    }
    cairo_surface_flush(cells.get());
    unsigned char* cellData = cairo_image_surface_get_data(cells.get());
    const int cellStride = cairo_image_surface_get_stride(cells.get());
    blurAlpha({cellData, cellsWide, cellsHigh, cellStride}, cellSigma);

    if (factor == 1) return ShadowMask{std::move(cells), cellX, cellY};  // the cells are the pixels

    SurfacePtr alpha(cairo_image_surface_create(CAIRO_FORMAT_A8, bounds.width(), bounds.height()));
    if (cairo_surface_status(alpha.get()) != CAIRO_STATUS_SUCCESS) return std::nullopt;
    scaleUp(cellData, cellStride, cellX, cellY, factor, bounds, cairo_image_surface_get_data(alpha.get()),
            cairo_image_surface_get_stride(alpha.get()));
    cairo_surface_mark_dirty(alpha.get());
    return ShadowMask{std::move(alpha), bounds.x0, bounds.y0};
}

}  // namespace velmorant::platform
