#include "platform/graphics/detail/ShadowPaint.h"

#include "platform/graphics/detail/WideLoops.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(VELMORANT_HAND_WIDE)
#include <immintrin.h>
#pragma GCC diagnostic ignored "-Wpsabi"
#endif

namespace velmorant::platform {
namespace {

#if !defined(__SSE2__)
// a * b / 255, rounded as Cairo's pixel library rounds it.
inline unsigned times(unsigned a, unsigned b) {
    const unsigned t = a * b + 0x80;
    return ((t >> 8) + t) >> 8;
}

// One pixel: the colour through mask alpha `m`, over `dst`.
inline std::uint32_t over(std::uint32_t pixel, unsigned m, std::uint32_t dst) {
    const unsigned alpha = times(pixel >> 24, m);
    std::uint32_t out = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const unsigned c = times((pixel >> shift) & 0xff, m) + times((dst >> shift) & 0xff, 255 - alpha);
        out |= std::min(c, 255u) << shift;
    }
    return out;
}

#else
// a * b / 255 in each 16-bit lane, rounded as `times`.
inline __m128i times(__m128i a, __m128i b) {
    return _mm_mulhi_epu16(_mm_adds_epu16(_mm_mullo_epi16(a, b), _mm_set1_epi16(0x80)), _mm_set1_epi16(0x101));
}

// Two pixels, unpacked to 16-bit lanes: the colour through masks `m` (each alpha in its pixel's four lanes), over `dst`.
inline __m128i over(__m128i colour, __m128i m, __m128i dst) {
    const __m128i source = times(colour, m);
    const __m128i alpha = _mm_shufflehi_epi16(_mm_shufflelo_epi16(source, 0xff), 0xff);
    return _mm_adds_epu8(source, times(dst, _mm_xor_si128(alpha, _mm_set1_epi16(0xff))));
}

// Four mask alphas, each spread over its pixel's four 16-bit lanes: pixels 0 and 1, then 2 and 3.
inline void spread(std::uint32_t four, __m128i& low, __m128i& high) {
    __m128i m = _mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(four)), _mm_setzero_si128());
    m = _mm_unpacklo_epi16(m, m);
    low = _mm_unpacklo_epi32(m, m);
    high = _mm_unpackhi_epi32(m, m);
}

// Four pixels of black at alpha `alpha` (in every 16-bit lane) through mask alphas `four`, over `dst`:
// the colour adds nothing but its alpha, so each pixel is only darkened by what the mask lets through.
inline __m128i blackOver(__m128i alpha, std::uint32_t four, __m128i dst) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i through = times(_mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(four)), zero), alpha);
    const __m128i left = _mm_xor_si128(through, _mm_set1_epi16(0xff));
    const __m128i spread = _mm_unpacklo_epi16(left, left);
    const __m128i low = times(_mm_unpacklo_epi8(dst, zero), _mm_unpacklo_epi32(spread, spread));
    const __m128i high = times(_mm_unpackhi_epi8(dst, zero), _mm_unpackhi_epi32(spread, spread));
    const __m128i ownAlpha = _mm_slli_epi32(_mm_unpacklo_epi16(through, zero), 24);
    return _mm_adds_epu8(_mm_packus_epi16(low, high), ownAlpha);
}
#endif

#if defined(VELMORANT_HAND_WIDE)
// `times` in sixteen lanes.
__attribute__((target("avx2"), always_inline)) inline __m256i timesEight(__m256i a, __m256i b, __m256i half,
                                                                         __m256i spreadOut) {
    return _mm256_mulhi_epu16(_mm256_adds_epu16(_mm256_mullo_epi16(a, b), half), spreadOut);
}

// `blackOver` eight pixels at a time: each half of the registers holds four
// pixels, worked out as `blackOver` works them out. The pixels painted.
__attribute__((target("avx2"))) int blackOverEights(std::uint32_t pixel, const unsigned char* mask,
                                                    std::uint32_t* row, int count) {
    const __m256i alpha = _mm256_set1_epi16(static_cast<short>(pixel >> 24));
    const __m256i half = _mm256_set1_epi16(0x80), spreadOut = _mm256_set1_epi16(0x101), full = _mm256_set1_epi16(0xff);
    const __m256i zero = _mm256_setzero_si256();
    // Each pixel's word of what is left, in its four lanes: pixels 0, 1 (and 4, 5), then 2, 3 (and 6, 7).
    const __m256i firstTwo = _mm256_setr_epi8(0, 1, 0, 1, 0, 1, 0, 1, 4, 5, 4, 5, 4, 5, 4, 5,  //
                                              0, 1, 0, 1, 0, 1, 0, 1, 4, 5, 4, 5, 4, 5, 4, 5);
    const __m256i lastTwo = _mm256_setr_epi8(8, 9, 8, 9, 8, 9, 8, 9, 12, 13, 12, 13, 12, 13, 12, 13,  //
                                             8, 9, 8, 9, 8, 9, 8, 9, 12, 13, 12, 13, 12, 13, 12, 13);
    int x = 0;
    for (; x + 8 <= count; x += 8) {
        std::uint64_t m;
        std::memcpy(&m, mask + x, sizeof m);
        if (m == 0) continue;
        // One word a pixel (the word above it zero, and nothing through it).
        const __m256i through =
            timesEight(_mm256_cvtepu8_epi32(_mm_cvtsi64_si128(static_cast<long long>(m))), alpha, half, spreadOut);
        const __m256i left = _mm256_xor_si256(through, full);
        const __m256i dst = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(row + x));
        const __m256i low = timesEight(_mm256_unpacklo_epi8(dst, zero), _mm256_shuffle_epi8(left, firstTwo), half, spreadOut);
        const __m256i high = timesEight(_mm256_unpackhi_epi8(dst, zero), _mm256_shuffle_epi8(left, lastTwo), half, spreadOut);
        const __m256i painted = _mm256_adds_epu8(_mm256_packus_epi16(low, high), _mm256_slli_epi32(through, 24));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(row + x), painted);
    }
    return x;
}

// Eight pixels at a time; the pixels painted. Pixels of no colour at all
// leave what lies under them, opaque ones replace it.
__attribute__((target("avx2"))) int paintOverEights(const std::uint32_t* source, std::uint32_t* row, int count) {
    const __m256i half = _mm256_set1_epi16(0x80), spreadOut = _mm256_set1_epi16(0x101), full = _mm256_set1_epi16(0xff);
    const __m256i zero = _mm256_setzero_si256(), alphas = _mm256_set1_epi32(static_cast<int>(0xff000000u));
    // Each pixel's alpha in its four lanes.
    const __m256i spreadAlpha = _mm256_setr_epi8(6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15,  //
                                                 6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15);
    int x = 0;
    for (; x + 8 <= count; x += 8) {
        const __m256i src = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(source + x));
        if (_mm256_testz_si256(src, src)) continue;
        if (_mm256_testc_si256(src, alphas)) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(row + x), src);
            continue;
        }
        const __m256i dst = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(row + x));
        __m256i halves[2];
        for (int h = 0; h < 2; ++h) {
            const __m256i s = h ? _mm256_unpackhi_epi8(src, zero) : _mm256_unpacklo_epi8(src, zero);
            const __m256i d = h ? _mm256_unpackhi_epi8(dst, zero) : _mm256_unpacklo_epi8(dst, zero);
            const __m256i left = _mm256_xor_si256(_mm256_shuffle_epi8(s, spreadAlpha), full);
            halves[h] = _mm256_adds_epu8(s, timesEight(d, left, half, spreadOut));
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(row + x), _mm256_packus_epi16(halves[0], halves[1]));
    }
    return x;
}
#endif

}  // namespace

void paintOver(const std::uint32_t* source, std::uint32_t* row, int count) {
    int x = 0;
#if defined(VELMORANT_HAND_WIDE)
    if (kRunsAvx2) x = paintOverEights(source, row, count);
#endif
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128(), opaque = _mm_set1_epi16(0xff);
    for (; x < count; ++x) {
        const std::uint32_t pixel = source[x];
        if (pixel == 0) continue;
        if (pixel >> 24 == 0xff) {
            row[x] = pixel;
            continue;
        }
        const __m128i dst = _mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(row[x])), zero);
        const __m128i one = over(_mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(pixel)), zero), opaque, dst);
        row[x] = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(one, zero)));
    }
#else
    for (; x < count; ++x)
        if (source[x]) row[x] = over(source[x], 255, row[x]);
#endif
}

std::uint32_t premultipliedPixel(const Rgba& colour) {
    // Cairo keeps a colour in 16 bits a channel, premultiplied, and paints the top 8.
    auto channel = [](double v) {
        return static_cast<std::uint32_t>(std::clamp(v, 0.0, 1.0) * 65535.0 + 0.5) >> 8;
    };
    const double a = std::clamp(colour.a, 0.0, 1.0);
    return channel(a) << 24 | channel(colour.r * a) << 16 | channel(colour.g * a) << 8 | channel(colour.b * a);
}

void paintThroughMask(std::uint32_t pixel, const unsigned char* mask, std::uint32_t* row, int count) {
    int x = 0;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    const __m128i colour = _mm_unpacklo_epi8(_mm_set1_epi32(static_cast<int>(pixel)), zero);
    if ((pixel & 0xffffffu) == 0) {
        // Black, as shadows mostly are.
        const __m128i alpha = _mm_set1_epi16(static_cast<short>(pixel >> 24));
#if defined(VELMORANT_HAND_WIDE)
        if (kRunsAvx2) x = blackOverEights(pixel, mask, row, count);
#endif
        for (; x + 4 <= count; x += 4) {
            std::uint32_t m;
            std::memcpy(&m, mask + x, sizeof m);
            if (m == 0) continue;
            const __m128i dst = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + x));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(row + x), blackOver(alpha, m, dst));
        }
    }
    for (; x + 4 <= count; x += 4) {
        std::uint32_t m;
        std::memcpy(&m, mask + x, sizeof m);
        if (m == 0) continue;
        if (m == 0xffffffffu && pixel >> 24 == 0xff) {
            const __m128i four = _mm_set1_epi32(static_cast<int>(pixel));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(row + x), four);
            continue;
        }
        __m128i ml, mh;
        spread(m, ml, mh);
        const __m128i dst = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + x));
        const __m128i low = over(colour, ml, _mm_unpacklo_epi8(dst, zero));
        const __m128i high = over(colour, mh, _mm_unpackhi_epi8(dst, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(row + x), _mm_packus_epi16(low, high));
    }
    for (; x < count; ++x) {
        if (!mask[x]) continue;
        const __m128i dst = _mm_unpacklo_epi8(_mm_cvtsi32_si128(static_cast<int>(row[x])), zero);
        const __m128i one = over(colour, _mm_set1_epi16(static_cast<short>(mask[x])), dst);
        row[x] = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(one, zero)));
    }
#else
    for (; x < count; ++x)
        if (mask[x]) row[x] = over(pixel, mask[x], row[x]);
#endif
}

}  // namespace velmorant::platform
