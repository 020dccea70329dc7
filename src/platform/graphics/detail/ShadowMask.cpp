#include "platform/graphics/detail/ShadowMask.h"

#include "platform/graphics/detail/Blur.h"
#include "platform/graphics/detail/UninitialisedSurface.h"
#include "platform/graphics/detail/WideLoops.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(VELMORANT_HAND_WIDE)
#include <immintrin.h>
#endif

#pragma GCC diagnostic ignored "-Wpsabi"

namespace velmorant::platform {
namespace {

// A wide blur is worked out on a coarser grid of `factor` x `factor` pixel
// cells (any factor, not only whole ones): Cairo's coverage gives each cell
// the shape's mean alpha, the blur there is a factor narrower (less the
// spread the cells and the bilinear scaling back add), and the cells are
// scaled back up. The cost falls with the square of the factor. Measured
// against the full-resolution blur (CanvasTest): with kMinCellSigma cells of
// blur left the mask stays within 7 of 255 levels (2 under the plain
// shadow's alpha of 1/3); at 1.25 it reaches 9, at 1.1 10, at 1.0 with whole
// factors 13. A ring's blur-2 shadow at scale 3 (sigma 3 pixels) so works on
// 2.2-pixel cells, a fifth of the pixels; under a factor of 1.5 the saving
// is not worth the scaling.
constexpr double kMinCellSigma = 1.35;
constexpr double kMaxCellFactor = 16;
constexpr double kMinCellFactor = 1.5;

// Eight pixels worked on together.
constexpr int kLaneCount = 8;

// One axis of the bilinear scaling: output pixel p (centre p + 0.5) lies
// between cells `first[p]` and `first[p] + 1`, `weight[p]` of the way.
struct Lerp {
    std::vector<int> first;
    std::vector<float> weight;

    Lerp(int pixelStart, int pixels, int cellStart, double factor) : first(pixels), weight(pixels) {
        for (int p = 0; p < pixels; ++p) {
            double at = (pixelStart + p + 0.5) / factor - 0.5 - cellStart;
            double below = std::floor(at);
            first[p] = static_cast<int>(below);
            weight[p] = static_cast<float>(at - below);
        }
    }
};

#if defined(VELMORANT_HAND_WIDE)
// `weighRows` sixteen pixels at a time; the pixels weighed.
__attribute__((target("avx2"))) int weighRowsSixteens(const float* top, const float* bottom, float w,
                                                      unsigned char* dst, int width) {
    const __m256 weight = _mm256_set1_ps(w), half = _mm256_set1_ps(0.5f);
    // The packs work within each half: pixels 0-3, 8-11, 4-7, 12-15 come out in that order.
    const __m256i inOrder = _mm256_setr_epi32(0, 4, 1, 5, 0, 0, 0, 0);
    int x = 0;
    for (; x + 16 <= width; x += 16) {
        __m256i halves[2];
        for (int h = 0; h < 2; ++h) {
            const __m256 t = _mm256_loadu_ps(top + x + 8 * h), b = _mm256_loadu_ps(bottom + x + 8 * h);
            halves[h] = _mm256_cvttps_epi32(_mm256_add_ps(_mm256_add_ps(t, _mm256_mul_ps(_mm256_sub_ps(b, t), weight)), half));
        }
        const __m256i words = _mm256_packs_epi32(halves[0], halves[1]);
        const __m256i bytes = _mm256_permutevar8x32_epi32(_mm256_packus_epi16(words, words), inOrder);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + x), _mm256_castsi256_si128(bytes));
    }
    return x;
}
#endif

// dst[x] = top[x] + (bottom[x] - top[x]) * w rounded, for `width` (a whole
// number of lanes) pixels. Between two bytes, so within 0...255 once rounded:
// SSE2's packing narrows eight at a time where plain code goes byte by byte.
void weighRows(const float* top, const float* bottom, float w, unsigned char* dst, int width) {
#if defined(__SSE2__)
    const __m128 weight = _mm_set1_ps(w), half = _mm_set1_ps(0.5f);
    int x = 0;
#if defined(VELMORANT_HAND_WIDE)
    if (kRunsAvx2) x = weighRowsSixteens(top, bottom, w, dst, width);
#endif
    for (; x < width; x += kLaneCount) {
        __m128i halves[2];
        for (int h = 0; h < 2; ++h) {
            __m128 t = _mm_loadu_ps(top + x + 4 * h), b = _mm_loadu_ps(bottom + x + 4 * h);
            halves[h] = _mm_cvttps_epi32(_mm_add_ps(_mm_add_ps(t, _mm_mul_ps(_mm_sub_ps(b, t), weight)), half));
        }
        __m128i words = _mm_packs_epi32(halves[0], halves[1]);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(dst + x), _mm_packus_epi16(words, words));
    }
#else
    for (int x = 0; x < width; ++x)
        dst[x] = static_cast<unsigned char>(static_cast<int>(top[x] + (bottom[x] - top[x]) * w + 0.5f));
#endif
}

#if defined(VELMORANT_HAND_WIDE)
// Eight pixels at a time: one gather reads each pixel's two cells as the low
// bytes of a word, so no cell is turned to a float first. The same float
// operations in the same order as the plain loop: the same values.
__attribute__((target("avx2"))) int scaleCellsAcrossWide(const unsigned char* cells, const int* first,
                                                          const float* weight, int width, float* out) {
    const __m256i lowByte = _mm256_set1_epi32(0xff);
    int x = 0;
    for (; x + 8 <= width; x += 8) {
        const __m256i at = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(first + x));
        const __m256i pairs = _mm256_i32gather_epi32(reinterpret_cast<const int*>(cells), at, 1);
        const __m256 a = _mm256_cvtepi32_ps(_mm256_and_si256(pairs, lowByte));
        const __m256 b = _mm256_cvtepi32_ps(_mm256_and_si256(_mm256_srli_epi32(pairs, 8), lowByte));
        const __m256 w = _mm256_loadu_ps(weight + x);
        _mm256_storeu_ps(out + x, _mm256_add_ps(a, _mm256_mul_ps(_mm256_sub_ps(b, a), w)));
    }
    return x;
}
#endif

}  // namespace

void scaleCellsAcross(const unsigned char* cells, int cellCount, const int* first, const float* weight, int width,
                      float* out) {
    int x = 0;
#if defined(VELMORANT_HAND_WIDE)
    // Each gather reads four bytes from a pixel's first cell, two past its pair; the last pixel's lies furthest.
    if (kRunsAvx2 && width > 0 && first[width - 1] + 4 <= cellCount)
        x = scaleCellsAcrossWide(cells, first, weight, width, out);
#endif
    for (; x < width; ++x) {
        const float a = cells[first[x]], b = cells[first[x] + 1];
        out[x] = a + (b - a) * weight[x];
    }
}

namespace {

// `tile` of the mask from its cells: each cell row it needs scaled across
// once (as floats, so the weighing runs in lanes), then pairs of those rows
// weighed for every pixel row and rounded to bytes.
VELMORANT_WIDE_LOOPS
void scaleTile(const AlphaBitmap& cells, const PixelBounds& tile, int firstRow, int rows,
               const Lerp& across, const Lerp& down, float* __restrict scaled, unsigned char* out, int outStride) {
    const int width = tile.width();
    const int* first = across.first.data() + tile.x0;
    const float* weight = across.weight.data() + tile.x0;
    for (int r = 0; r < rows; ++r) {
        const unsigned char* src = cells.data + static_cast<size_t>(firstRow + r) * cells.stride;
        scaleCellsAcross(src, cells.width, first, weight, width, scaled + static_cast<size_t>(r) * width);
    }
    for (int y = tile.y0; y < tile.y1; ++y) {
        const float* top = scaled + static_cast<size_t>(down.first[y] - firstRow) * width;
        const float* bottom = top + width;
        const float w = down.weight[y];
        unsigned char* dst = out + static_cast<size_t>(y) * outStride + tile.x0;
        weighRows(top, bottom, w, dst, width);
    }
}

// Shadows are scaled up and painted in tiles of this many pixels a side;
// tiles the blurred shape does not reach (inside a ring, beside a thin
// stroke) are skipped.
constexpr int kTile = 32;

// The blurred cells scaled up to the pixels of the whole mask.
class ScaleUp {
public:
    ScaleUp(const AlphaBitmap& cells, int cellX, int cellY, double factor, const PixelBounds& bounds)
        : cells_(cells), bounds_(bounds), across_(bounds.x0, bounds.width(), cellX, factor),
          down_(bounds.y0, bounds.height(), cellY, factor) {}

    // Whether any cell that feeds `tile` (in mask pixels) holds alpha.
    bool reaches(const PixelBounds& tile) const {
        for (int cy = down_.first[tile.y0]; cy <= down_.first[tile.y1 - 1] + 1; ++cy) {
            const unsigned char* row = cells_.data + static_cast<size_t>(cy) * cells_.stride;
            for (int cx = across_.first[tile.x0]; cx <= across_.first[tile.x1 - 1] + 1; ++cx)
                if (row[cx]) return true;
        }
        return false;
    }

    // Writes `tile`'s pixels (its width a whole number of lanes) into `out`.
    void fill(const PixelBounds& tile, unsigned char* out, int outStride) {
        const int firstRow = down_.first[tile.y0], rows = down_.first[tile.y1 - 1] + 2 - firstRow;
        scaled_.resize(static_cast<size_t>(rows) * tile.width());
        scaleTile(cells_, tile, firstRow, rows, across_, down_, scaled_.data(), out, outStride);
    }

private:
    AlphaBitmap cells_;
    PixelBounds bounds_;
    Lerp across_, down_;
    std::vector<float> scaled_;
};

// Whether any pixel of `tile` holds alpha.
bool holdsAlpha(const AlphaBitmap& pixels, const PixelBounds& tile) {
    for (int y = tile.y0; y < tile.y1; ++y) {
        const unsigned char* row = pixels.data + static_cast<size_t>(y) * pixels.stride;
        if (std::any_of(row + tile.x0, row + tile.x1, [](unsigned char a) { return a != 0; })) return true;
    }
    return false;
}

// The smallest box around the pixels that hold alpha; none when none do.
std::optional<PixelBounds> paintedBounds(const AlphaBitmap& pixels) {
    PixelBounds box{pixels.width, pixels.height, 0, 0};
    for (int y = 0; y < pixels.height; ++y) {
        const unsigned char* row = pixels.data + static_cast<size_t>(y) * pixels.stride;
        const unsigned char* first = std::find_if(row, row + pixels.width, [](unsigned char a) { return a != 0; });
        if (first == row + pixels.width) continue;
        const unsigned char* last = std::find_if(std::make_reverse_iterator(row + pixels.width),
                                                 std::make_reverse_iterator(row), [](unsigned char a) { return a != 0; })
                                        .base();
        box = {std::min(box.x0, static_cast<int>(first - row)), std::min(box.y0, y),
               std::max(box.x1, static_cast<int>(last - row)), y + 1};
    }
    if (box.empty()) return std::nullopt;
    return box;
}

// The tiles of a mask `width` x `height`, clipped to it.
std::vector<PixelBounds> tiles(int width, int height) {
    std::vector<PixelBounds> out;
    for (int y = 0; y < height; y += kTile)
        for (int x = 0; x < width; x += kTile)
            out.push_back({x, y, std::min(x + kTile, width), std::min(y + kTile, height)});
    return out;
}

PixelBounds moved(const PixelBounds& b, int dx, int dy) { return {b.x0 + dx, b.y0 + dy, b.x1 + dx, b.y1 + dy}; }

}  // namespace

std::optional<ShadowMask> makeShadowMask(PixelBounds bounds, double sigma,
                                         const std::function<void(cairo_t*)>& paint, MaskGrid grid,
                                         const std::function<bool(const PixelBounds&)>& hidden) {
    if (bounds.empty()) return std::nullopt;
    // Whole lanes across: the extra pixels on the right are blurred like the rest.
    bounds.x1 = bounds.x0 + (bounds.width() + kLaneCount - 1) / kLaneCount * kLaneCount;
    const double wanted = std::min(sigma / kMinCellSigma, kMaxCellFactor);
    const double factor = wanted < kMinCellFactor || grid == MaskGrid::Pixels ? 1 : wanted;
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
    const AlphaBitmap cellBitmap{cellData, cellsWide, cellsHigh, cellStride};
    // Only the cells the shape reached, and the blur's reach around them, are
    // blurred: a shape's extents can be far larger than what it paints.
    std::optional<PixelBounds> painted = paintedBounds(cellBitmap);
    if (!painted) return std::nullopt;
    const int blurReach = static_cast<int>(std::ceil(3 * cellSigma)) + 3;  // three boxes reach a little further
    const PixelBounds blurred{std::max(0, painted->x0 - blurReach), std::max(0, painted->y0 - blurReach),
                              std::min(cellsWide, painted->x1 + blurReach), std::min(cellsHigh, painted->y1 + blurReach)};
    blurAlpha({cellData + static_cast<size_t>(blurred.y0) * cellStride + blurred.x0, blurred.width(), blurred.height(),
               cellStride},
              cellSigma);

    ShadowMask mask;
    if (factor == 1) {
        // The cells are the pixels.
        for (const PixelBounds& tile : tiles(cellsWide, cellsHigh)) {
            const PixelBounds onCanvas = moved(tile, cellX, cellY);
            if ((!hidden || !hidden(onCanvas)) && holdsAlpha(cellBitmap, tile)) mask.parts.push_back(onCanvas);
        }
        mask.alpha = std::move(cells);
        mask.x = cellX;
        mask.y = cellY;
        return mask;
    }
    // Only the parts are ever read, and each is written whole: the rest is never cleared.
    mask.alpha = uninitialisedSurface(CAIRO_FORMAT_A8, bounds.width(), bounds.height());
    if (!mask.alpha) return std::nullopt;
    ScaleUp scaleUp(cellBitmap, cellX, cellY, factor, bounds);
    for (const PixelBounds& tile : tiles(bounds.width(), bounds.height())) {
        if (!scaleUp.reaches(tile) || (hidden && hidden(moved(tile, bounds.x0, bounds.y0)))) continue;
        scaleUp.fill(tile, cairo_image_surface_get_data(mask.alpha.get()), cairo_image_surface_get_stride(mask.alpha.get()));
        mask.parts.push_back(moved(tile, bounds.x0, bounds.y0));
    }
    cairo_surface_mark_dirty(mask.alpha.get());
    mask.x = bounds.x0;
    mask.y = bounds.y0;
    return mask;
}

}  // namespace velmorant::platform
