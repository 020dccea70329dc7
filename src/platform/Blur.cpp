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

// A box of `left + 1 + right` pixels along each row.
void boxRows(const float* in, float* out, int width, int height, int left, int right) {
    float scale = 1.f / static_cast<float>(left + 1 + right);
    for (int y = 0; y < height; ++y) {
        const float* src = in + static_cast<size_t>(y) * width;
        float* dst = out + static_cast<size_t>(y) * width;
        float sum = 0;
        for (int x = 0; x < std::min(right, width); ++x) sum += src[x];
        for (int x = 0; x < width; ++x) {
            if (x + right < width) sum += src[x + right];
            dst[x] = sum * scale;
            if (x - left >= 0) sum -= src[x - left];
        }
    }
}

// A box of `above + 1 + below` pixels down each column, a whole row at a time.
void boxColumns(const float* in, float* out, int width, int height, int above, int below) {
    float scale = 1.f / static_cast<float>(above + 1 + below);
    std::vector<float> sum(width, 0.f);
    auto row = [&](int y) { return in + static_cast<size_t>(y) * width; };
    for (int y = 0; y < std::min(below, height); ++y)
        for (int x = 0; x < width; ++x) sum[x] += row(y)[x];
    for (int y = 0; y < height; ++y) {
        float* dst = out + static_cast<size_t>(y) * width;
        if (y + below < height) {
            const float* add = row(y + below);
            for (int x = 0; x < width; ++x) sum[x] += add[x];
        }
        for (int x = 0; x < width; ++x) dst[x] = sum[x] * scale;
        if (y - above >= 0) {
            const float* sub = row(y - above);
            for (int x = 0; x < width; ++x) sum[x] -= sub[x];
        }
    }
}

std::vector<float> gaussianKernel(double sigma) {
    int radius = static_cast<int>(std::ceil(3 * sigma));
    std::vector<float> weights(2 * radius + 1);
    double total = 0;
    for (int i = -radius; i <= radius; ++i) total += std::exp(-(i * i) / (2 * sigma * sigma));
    for (int i = -radius; i <= radius; ++i)
        weights[i + radius] = static_cast<float>(std::exp(-(i * i) / (2 * sigma * sigma)) / total);
    return weights;
}

}  // namespace

void boxBlurAlpha(AlphaBitmap b, double sigma) {
    if (b.width <= 0 || b.height <= 0 || !(sigma > 0)) return;
    // Three boxes of width d approach a Gaussian of this sigma; an even d is
    // split into two boxes off centre by half a pixel each way and one of d + 1.
    int d = static_cast<int>(std::floor(sigma * 3 * std::sqrt(2 * M_PI) / 4 + 0.5));
    if (d <= 1) return;
    int lefts[3], rights[3];
    if (d % 2 == 1) {
        std::fill(lefts, lefts + 3, d / 2);
        std::fill(rights, rights + 3, d / 2);
    } else {
        lefts[0] = d / 2, rights[0] = d / 2 - 1;
        lefts[1] = d / 2 - 1, rights[1] = d / 2;
        lefts[2] = d / 2, rights[2] = d / 2;
    }
    std::vector<float> a = toFloats(b), t(a.size());
    for (int i = 0; i < 3; ++i) {
        boxRows(a.data(), t.data(), b.width, b.height, lefts[i], rights[i]);
        std::swap(a, t);
    }
    for (int i = 0; i < 3; ++i) {
        boxColumns(a.data(), t.data(), b.width, b.height, lefts[i], rights[i]);
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
