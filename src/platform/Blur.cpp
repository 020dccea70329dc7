#include "Blur.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace velmorant::platform {
namespace {

// Float copies of the alpha bytes, so three passes do not round three times.
std::vector<float> toFloats(const AlphaBitmap& b) {
    std::vector<float> out(static_cast<size_t>(b.width) * b.height);
    for (int y = 0; y < b.height; ++y) {
        const unsigned char* row = b.data + static_cast<size_t>(y) * b.stride;
        float* dst = out.data() + static_cast<size_t>(y) * b.width;
        for (int x = 0; x < b.width; ++x) dst[x] = row[x];
    }
    return out;
}

void toBytes(const std::vector<float>& in, AlphaBitmap b) {
    for (int y = 0; y < b.height; ++y) {
        const float* src = in.data() + static_cast<size_t>(y) * b.width;
        unsigned char* row = b.data + static_cast<size_t>(y) * b.stride;
        for (int x = 0; x < b.width; ++x) row[x] = static_cast<unsigned char>(std::clamp(src[x] + 0.5f, 0.f, 255.f));
    }
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

// The box along each row.
void boxRows(const float* in, float* out, int width, int height, const Box& box) {
    const int pad = box.radius + 1;
    std::vector<float> padded(width + 2 * pad, 0.f);
    for (int y = 0; y < height; ++y) {
        const float* src = in + static_cast<size_t>(y) * width;
        std::copy(src, src + width, padded.begin() + pad);
        const float* p = padded.data() + pad;  // p[-pad] ... p[width + pad - 1] are valid
        float* dst = out + static_cast<size_t>(y) * width;
        float sum = 0;
        for (int i = -box.radius; i <= box.radius; ++i) sum += p[i];
        for (int x = 0; x < width; ++x) {
            dst[x] = (sum + box.edge * (p[x - box.radius - 1] + p[x + box.radius + 1])) * box.scale;
            sum += p[x + box.radius + 1] - p[x - box.radius];
        }
    }
}

// The box down each column, a whole row at a time so the work runs along memory.
void boxColumns(const float* in, float* out, int width, int height, const Box& box) {
    std::vector<float> sum(width, 0.f);
    const std::vector<float> zeros(width, 0.f);
    auto row = [&](int y) { return y >= 0 && y < height ? in + static_cast<size_t>(y) * width : zeros.data(); };
    for (int y = -box.radius; y <= box.radius; ++y) {
        const float* add = row(y);
        for (int x = 0; x < width; ++x) sum[x] += add[x];
    }
    for (int y = 0; y < height; ++y) {
        const float* above = row(y - box.radius - 1);
        const float* below = row(y + box.radius + 1);
        const float* leaving = row(y - box.radius);
        float* dst = out + static_cast<size_t>(y) * width;
        for (int x = 0; x < width; ++x) {
            dst[x] = (sum[x] + box.edge * (above[x] + below[x])) * box.scale;
            sum[x] += below[x] - leaving[x];
        }
    }
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

}  // namespace

void boxBlurAlpha(AlphaBitmap b, double sigma) {
    if (b.width <= 0 || b.height <= 0 || !(sigma > 0)) return;
    // Three passes, each a third of the variance, come close to the Gaussian.
    const Box box(sigma * sigma / 3);
    std::vector<float> a = toFloats(b), t(a.size());
    for (int i = 0; i < 3; ++i) {
        boxRows(a.data(), t.data(), b.width, b.height, box);
        std::swap(a, t);
    }
    for (int i = 0; i < 3; ++i) {
        boxColumns(a.data(), t.data(), b.width, b.height, box);
        std::swap(a, t);
    }
    toBytes(a, b);
}

void gaussianBlurAlpha(AlphaBitmap b, double sigma) {
    if (b.width <= 0 || b.height <= 0 || !(sigma > 0)) return;
    std::vector<float> weights = gaussianKernel(sigma);
    int radius = static_cast<int>(weights.size() / 2);
    std::vector<float> a = toFloats(b), t(a.size(), 0.f);
    // Rows: each row padded with transparent pixels, then one weighted add per tap.
    std::vector<float> padded(b.width + 2 * radius, 0.f);
    for (int y = 0; y < b.height; ++y) {
        float* row = a.data() + static_cast<size_t>(y) * b.width;
        std::copy(row, row + b.width, padded.begin() + radius);
        float* dst = t.data() + static_cast<size_t>(y) * b.width;
        std::fill(dst, dst + b.width, 0.f);
        for (int k = 0; k <= 2 * radius; ++k) {
            float w = weights[k];
            const float* src = padded.data() + k;
            for (int x = 0; x < b.width; ++x) dst[x] += w * src[x];
        }
    }
    // Columns: whole rows at a time, so the inner loop runs along memory.
    for (int y = 0; y < b.height; ++y) {
        float* dst = a.data() + static_cast<size_t>(y) * b.width;
        std::fill(dst, dst + b.width, 0.f);
        for (int k = -radius; k <= radius; ++k) {
            if (y + k < 0 || y + k >= b.height) continue;
            float w = weights[k + radius];
            const float* src = t.data() + static_cast<size_t>(y + k) * b.width;
            for (int x = 0; x < b.width; ++x) dst[x] += w * src[x];
        }
    }
    toBytes(a, b);
}

void blurAlpha(AlphaBitmap bitmap, double sigma) {
    // Small kernels are cheap done exactly; three boxes need a width of 2 or more.
    if (sigma < 2) {
        gaussianBlurAlpha(bitmap, sigma);
    } else {
        boxBlurAlpha(bitmap, sigma);
    }
}

}  // namespace velmorant::platform
