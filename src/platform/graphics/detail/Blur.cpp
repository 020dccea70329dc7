#include "platform/graphics/detail/Blur.h"

#include "platform/graphics/detail/WideLoops.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#pragma GCC diagnostic ignored "-Wpsabi"

namespace velmorant::platform {
namespace {

// Eight floats worked on together (two SSE registers, or one AVX register).
using Lanes = float __attribute__((vector_size(32)));
constexpr int kLaneCount = sizeof(Lanes) / sizeof(float);

// Always inlined: a call would pass the vector differently in the AVX2 and
// the plain builds of the passes (GCC's ABI note, silenced for this file).
[[gnu::always_inline]] inline Lanes load(const float* p) {
    Lanes v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

[[gnu::always_inline]] inline void store(float* p, Lanes v) { std::memcpy(p, &v, sizeof v); }

// A float copy of the bitmap, so successive passes do not round each time.
// Passes only ever run down columns (a whole row at a time, which the
// compiler vectorises); to blur along rows the plane is transposed first.
struct Plane {
    // Rows are padded to whole lanes, so every row loop runs in whole vectors
    // (the padding columns are blurred too, and never read back).
    static constexpr int kLanes = kLaneCount;
    int width = 0, height = 0, stride = 0;
    std::unique_ptr<float[]> pixels;  // left unset: every pass writes all it reads

    Plane(int width, int height)
        : width(width), height(height), stride((width + kLanes - 1) / kLanes * kLanes),
          pixels(new float[static_cast<size_t>(stride) * height]) {}
    float* row(int y) { return pixels.get() + static_cast<size_t>(y) * stride; }
    const float* row(int y) const { return pixels.get() + static_cast<size_t>(y) * stride; }
    void clearPadding() {
        for (int y = 0; y < height; ++y) std::fill(row(y) + width, row(y) + stride, 0.f);
    }
};

// The bitmap as floats, transposed: plane row x is bitmap column x.
Plane transposedFloats(const AlphaBitmap& b) {
    Plane out(b.height, b.width);
    constexpr int kBlock = 32;
    for (int y0 = 0; y0 < b.height; y0 += kBlock) {
        for (int x0 = 0; x0 < b.width; x0 += kBlock) {
            for (int y = y0; y < std::min(y0 + kBlock, b.height); ++y) {
                const unsigned char* src = b.data + static_cast<size_t>(y) * b.stride;
                for (int x = x0; x < std::min(x0 + kBlock, b.width); ++x) out.row(x)[y] = src[x];
            }
        }
    }
    out.clearPadding();
    return out;
}

VELMORANT_WIDE_LOOPS
void transpose(const Plane& in, Plane& out) {
    out = Plane(in.height, in.width);
    constexpr int kBlock = 32;
    for (int y0 = 0; y0 < in.height; y0 += kBlock) {
        for (int x0 = 0; x0 < in.width; x0 += kBlock) {
            for (int y = y0; y < std::min(y0 + kBlock, in.height); ++y) {
                const float* src = in.row(y);
                for (int x = x0; x < std::min(x0 + kBlock, in.width); ++x) out.row(x)[y] = src[x];
            }
        }
    }
    out.clearPadding();
}

// A row rounded back to bytes; a whole lane at a time while it fits.
VELMORANT_WIDE_LOOPS
void rowToBytes(const float* src, unsigned char* dst, int width) {
    using IntLanes = int __attribute__((vector_size(32)));
    using ByteLanes = unsigned char __attribute__((vector_size(8)));
    const Lanes low = Lanes{} + 0.5f, high = Lanes{} + 255.5f;
    int x = 0;
    for (; x + kLaneCount <= width; x += kLaneCount) {
        Lanes v = load(src + x) + 0.5f;
        v = v < low ? low : v;
        v = v > high ? high : v;
        ByteLanes bytes = __builtin_convertvector(__builtin_convertvector(v, IntLanes), ByteLanes);
        std::memcpy(dst + x, &bytes, sizeof bytes);
    }
    for (; x < width; ++x) dst[x] = static_cast<unsigned char>(std::clamp(src[x] + 0.5f, 0.f, 255.f));
}

void toBytes(const Plane& in, AlphaBitmap b) {
    for (int y = 0; y < b.height; ++y) rowToBytes(in.row(y), b.data + static_cast<size_t>(y) * b.stride, b.width);
}

// One box pass: 2 * radius + 1 pixels at full weight and `edge` (0...1) on
// the next pixel out each side, so its variance can be any value, not only
// those of whole-pixel boxes.
struct Box {
    int radius = 0;
    float edge = 0;
    float scale = 1;

    explicit Box(double variance) {
        radius = static_cast<int>(std::floor((std::sqrt(1 + 12 * variance) - 1) / 2));
        double r = radius;
        edge = static_cast<float>((2 * r + 1) * (variance - r * (r + 1) / 3) / (2 * ((r + 1) * (r + 1) - variance)));
        scale = 1.f / (2 * radius + 1 + 2 * edge);
    }
};

// The box down each column: a running sum per column, updated a row at a time.
VELMORANT_WIDE_LOOPS
void boxColumns(const Plane& in, Plane& out, const Box& box) {
    const int stride = in.stride, height = in.height;
    std::vector<float> sums(stride, 0.f);
    const std::vector<float> zeros(stride, 0.f);
    auto row = [&](int y) { return y >= 0 && y < height ? in.row(y) : zeros.data(); };
    float* sum = sums.data();
    for (int y = -box.radius; y <= box.radius; ++y) {
        const float* add = row(y);
        for (int x = 0; x < stride; x += kLaneCount) store(sum + x, load(sum + x) + load(add + x));
    }
    const float edge = box.edge, scale = box.scale;
    for (int y = 0; y < height; ++y) {
        const float* above = row(y - box.radius - 1);
        const float* below = row(y + box.radius + 1);
        const float* leaving = row(y - box.radius);
        float* dst = out.row(y);
        for (int x = 0; x < stride; x += kLaneCount) {
            Lanes total = load(sum + x), next = load(below + x);
            store(dst + x, (total + edge * (load(above + x) + next)) * scale);
            store(sum + x, total + (next - load(leaving + x)));
        }
    }
}

// Row y of the sampled Gaussian down the columns of `in`: each lane's worth
// of columns weighs its rows, or is left transparent where `reached` says no
// row within the kernel holds alpha there (inside a ring, beside a thin line).
VELMORANT_WIDE_LOOPS
void gaussianDown(const Plane& in, int y, const std::vector<float>& weights, const int* reached, float* dst) {
    const int radius = static_cast<int>(weights.size() / 2);
    const int first = std::max(-radius, -y), last = std::min(radius, in.height - 1 - y);
    for (int x = 0, lane = 0; x < in.stride; x += kLaneCount, ++lane) {
        Lanes sum{};
        if (reached[lane])
            for (int k = first; k <= last; ++k) sum += weights[k + radius] * load(in.row(y + k) + x);
        store(dst + x, sum);
    }
}

// The sampled Gaussian along a row: dst pixel x weighs `padded` pixels x to
// x + 2 * radius, for `width` pixels rounded up to whole lanes. Only lanes
// `holds` marks (some alpha within reach) are weighed; the rest are left
// transparent.
VELMORANT_WIDE_LOOPS
void gaussianAlong(const float* padded, const unsigned char* holds, const std::vector<float>& weights, float* dst,
                   int width) {
    const int taps = static_cast<int>(weights.size());
    for (int x = 0, lane = 0; x < width; x += kLaneCount, ++lane) {
        Lanes sum{};
        if (holds[lane])
            for (int k = 0; k < taps; ++k) sum += weights[k] * load(padded + x + k);
        store(dst + x, sum);
    }
}

// Whether any of a lane's `count` (up to eight) bytes is not zero: a whole lane in one load.
bool anyAlpha(const unsigned char* src, int count) {
    static_assert(kLaneCount == sizeof(std::uint64_t));
    if (count == kLaneCount) {
        std::uint64_t lane;
        std::memcpy(&lane, src, sizeof lane);
        return lane != 0;
    }
    return std::any_of(src, src + count, [](unsigned char a) { return a != 0; });
}

// Marks in `holds` the lanes of a row of `width` bytes with some alpha within
// `radius` pixels: those whose own pixels, or those of the lanes `radius`
// reaches either side, are not all transparent.
void markHeld(const unsigned char* src, int width, int radius, unsigned char* holds, int lanes) {
    const int spread = (radius + kLaneCount - 1) / kLaneCount;
    std::fill(holds, holds + lanes, 0);
    for (int lane = 0; lane < lanes; ++lane) {
        const int x0 = lane * kLaneCount, x1 = std::min(x0 + kLaneCount, width);
        if (x1 <= x0 || !anyAlpha(src + x0, x1 - x0)) continue;
        std::fill(holds + std::max(0, lane - spread), holds + std::min(lanes, lane + spread + 1), 1);
    }
}

// `count` bytes as floats, sixteen at a time where SSE2 has them.
void bytesToFloats(const unsigned char* src, float* dst, int count) {
    int x = 0;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    for (; x + 16 <= count; x += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + x));
        const __m128i low = _mm_unpacklo_epi8(bytes, zero), high = _mm_unpackhi_epi8(bytes, zero);
        _mm_storeu_ps(dst + x, _mm_cvtepi32_ps(_mm_unpacklo_epi16(low, zero)));
        _mm_storeu_ps(dst + x + 4, _mm_cvtepi32_ps(_mm_unpackhi_epi16(low, zero)));
        _mm_storeu_ps(dst + x + 8, _mm_cvtepi32_ps(_mm_unpacklo_epi16(high, zero)));
        _mm_storeu_ps(dst + x + 12, _mm_cvtepi32_ps(_mm_unpackhi_epi16(high, zero)));
    }
#endif
    for (; x < count; ++x) dst[x] = src[x];
}

// Weights of the Gaussian integrated over each pixel, so small sigmas keep
// their spread rather than collapsing onto the centre sample.
std::vector<float> gaussianKernel(double sigma) {
    int radius = static_cast<int>(std::ceil(3 * sigma));
    auto below = [&](double x) { return 0.5 * std::erfc(-x / (sigma * std::sqrt(2.0))); };
    std::vector<float> weights(2 * radius + 1);
    double total = below(radius + 0.5) - below(-radius - 0.5);
    for (int i = -radius; i <= radius; ++i)
        weights[i + radius] = static_cast<float>((below(i + 0.5) - below(i - 0.5)) / total);
    return weights;
}

// Runs `columnPass` along the rows, then down the columns, of the bitmap.
template <typename ColumnPass>
void blurBothWays(AlphaBitmap b, const ColumnPass& columnPass) {
    // Scratch planes are let go before the next is made: never more than two at once.
    Plane a = transposedFloats(b), t(0, 0);
    columnPass(a, t);  // along the bitmap's rows
    t = Plane(0, 0);
    transpose(a, t);
    std::swap(a, t);
    t = Plane(0, 0);
    columnPass(a, t);  // down its columns
    toBytes(a, b);
}

}  // namespace

void boxBlurAlpha(AlphaBitmap b, double sigma) {
    if (b.width <= 0 || b.height <= 0 || !(sigma > 0)) return;
    // Three passes, each a third of the variance, come within 1.5% of the Gaussian.
    const Box box(sigma * sigma / 3);
    blurBothWays(b, [&](Plane& a, Plane& t) {
        t = Plane(a.width, a.height);
        for (int i = 0; i < 3; ++i) {
            boxColumns(a, t, box);
            std::swap(a, t);
        }
    });
}

void gaussianBlurAlpha(AlphaBitmap b, double sigma) {
    if (b.width <= 0 || b.height <= 0 || !(sigma > 0)) return;
    const std::vector<float> weights = gaussianKernel(sigma);
    // A few taps each way: rows are weighed where they lie, with no
    // transposing, through one float plane and two rows of scratch.
    const int radius = static_cast<int>(weights.size() / 2);
    Plane acrossRows(b.width, b.height);
    // The row being weighed, with `radius` transparent pixels before it and
    // `radius` plus a lane's worth after it, so every tap loads whole lanes.
    std::vector<float> padded(static_cast<size_t>(acrossRows.stride) + 2 * radius + kLaneCount, 0.f);
    const int lanes = acrossRows.stride / kLaneCount;
    std::vector<unsigned char> holds(static_cast<size_t>(lanes) * b.height);
    for (int y = 0; y < b.height; ++y) {
        const unsigned char* src = b.data + static_cast<size_t>(y) * b.stride;
        unsigned char* held = holds.data() + static_cast<size_t>(y) * lanes;
        markHeld(src, b.width, radius, held, lanes);
        if (std::none_of(held, held + lanes, [](unsigned char h) { return h != 0; })) {
            std::fill(acrossRows.row(y), acrossRows.row(y) + acrossRows.stride, 0.f);
            continue;
        }
        bytesToFloats(src, padded.data() + radius, b.width);
        gaussianAlong(padded.data(), held, weights, acrossRows.row(y), acrossRows.stride);
    }
    // For each lane of columns, how many rows within the kernel of row y hold alpha.
    std::vector<int> reached(lanes, 0);
    auto count = [&](int row, int by) {
        if (row < 0 || row >= b.height) return;
        const unsigned char* h = holds.data() + static_cast<size_t>(row) * lanes;
        for (int lane = 0; lane < lanes; ++lane) reached[lane] += by * h[lane];
    };
    for (int row = 0; row < radius; ++row) count(row, 1);
    std::vector<float> down(acrossRows.stride);
    for (int y = 0; y < b.height; ++y) {
        count(y + radius, 1);
        count(y - radius - 1, -1);
        gaussianDown(acrossRows, y, weights, reached.data(), down.data());
        // Lanes nothing reached were transparent and stay so: only runs of reached ones are written back.
        unsigned char* dst = b.data + static_cast<size_t>(y) * b.stride;
        for (int lane = 0; lane < lanes;) {
            if (!reached[lane]) {
                ++lane;
                continue;
            }
            int end = lane;
            while (end < lanes && reached[end]) ++end;
            const int x0 = lane * kLaneCount, x1 = std::min(end * kLaneCount, b.width);
            if (x1 > x0) rowToBytes(down.data() + x0, dst + x0, x1 - x0);
            lane = end;
        }
    }
}

// Chosen by measurement (bench/BlurBench.cpp, the mask of a 280-point ring at
// scale 3, about 0.8 to 1.6 million pixels, median CPU time on a busy 2-core
// machine): three boxes take 7.3, 8.7, 11.3 and 19.6 ms at sigma 3, 6, 12 and
// 24 pixels, the Gaussian 8.1, 12.0, 26.6 and 58 ms, growing with its taps.
// Below sigma 2 the Gaussian's few taps are cheap and exact, where three
// narrow boxes are off by up to 7% of full alpha. (Shadows mostly blur on
// coarser cells, where sigma is 1.25 to 2 cells; see ShadowMask.cpp.) There
// the Gaussian weighs only lanes with alpha in reach: a ring's mask is mostly
// its empty middle, and skipping it took the 280-point sleep rings at scale 3
// from 12.5 to about 11 ms (CPU median, busy machine), with the cells'
// scaling back up in SSE2 and coarser cells (ShadowMask.cpp) to about 10.
void blurAlpha(AlphaBitmap bitmap, double sigma) {
    if (sigma < 2) {
        gaussianBlurAlpha(bitmap, sigma);
    } else {
        boxBlurAlpha(bitmap, sigma);
    }
}

}  // namespace velmorant::platform
