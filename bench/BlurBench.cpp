// Cost of shadows: the two blur methods on the mask of a 280-point gauge ring
// at scale 3, and a whole shadowed stroke against a plain one. A gauge draws a
// handful of shadowed strokes and must stay under 4 ms.
#include "platform/graphics/detail/Blur.h"
#include "platform/graphics/Canvas.h"
#include "platform/services/Platform.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

using namespace velmorant::platform;

namespace {

constexpr double kScale = 3;
constexpr double kSide = 280;

// The A8 mask of an 18-point ring 110 points out, with room for 3 sigma around it.
std::vector<unsigned char> ringMask(int side) {
    std::vector<unsigned char> mask(static_cast<size_t>(side) * side);
    double centre = side / 2.0, outer = 119 * kScale, inner = 101 * kScale;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            double r = std::hypot(x + 0.5 - centre, y + 0.5 - centre);
            mask[static_cast<size_t>(y) * side + x] = (r < outer && r > inner) ? 255 : 0;
        }
    }
    return mask;
}

// Argument: the shadow's blur in points (sigma = blur / 2 points).
template <void (*Blur)(AlphaBitmap, double)>
void blurRing(benchmark::State& state) {
    double sigma = state.range(0) / 2.0 * kScale;
    int side = static_cast<int>(kSide * kScale + 6 * std::ceil(3 * sigma));
    const std::vector<unsigned char> ring = ringMask(side);
    std::vector<unsigned char> mask;
    for (auto _ : state) {
        state.PauseTiming();
        mask = ring;
        state.ResumeTiming();
        Blur({mask.data(), side, side, side}, sigma);
        benchmark::DoNotOptimize(mask.data());
    }
    state.counters["pixels"] = static_cast<double>(side) * side;
}

void BM_BlurBoxes(benchmark::State& state) { blurRing<&boxBlurAlpha>(state); }
void BM_BlurGaussian(benchmark::State& state) { blurRing<&gaussianBlurAlpha>(state); }
BENCHMARK(BM_BlurBoxes)->Arg(2)->Arg(4)->Arg(8)->Arg(16)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_BlurGaussian)->Arg(2)->Arg(4)->Arg(8)->Arg(16)->Unit(benchmark::kMicrosecond);

// Argument: the shadow's blur in points; -1 draws without a shadow.
void BM_GaugeArcStroke(benchmark::State& state) {
    static Platform platform{PlatformOptions{}};
    const FontSystem& fonts = platform.fonts();
    for (auto _ : state) {
        Canvas canvas({kSide, kSide}, kScale, fonts);
        if (state.range(0) >= 0) canvas.setShadow({0, 2}, static_cast<double>(state.range(0)));
        canvas.setLineWidth(18);
        canvas.setLineCap(LineCap::Round);
        canvas.addArc({kSide / 2, kSide / 2}, 110, 0.75 * M_PI, 2.25 * M_PI);
        canvas.strokePath();
        benchmark::DoNotOptimize(canvas.makeImage());
    }
}
BENCHMARK(BM_GaugeArcStroke)->Arg(-1)->Arg(0)->Arg(2)->Arg(5)->Arg(15)->Unit(benchmark::kMicrosecond);

}  // namespace
