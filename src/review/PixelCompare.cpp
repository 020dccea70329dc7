#include "PixelCompare.h"

#include <algorithm>
#include <cstring>

namespace velmorant::review {
namespace {

struct Yiq {
    double y, i, q;
};

// Laid over white, so that a transparent pixel reads as the page it sits on.
Yiq yiq(const std::uint8_t* p) {
    double alpha = p[3] / 255.0;
    auto over = [&](std::uint8_t c) { return 255 + (c - 255) * alpha; };
    double r = over(p[0]), g = over(p[1]), b = over(p[2]);
    return {r * 0.29889531 + g * 0.58662247 + b * 0.11448223, r * 0.59597799 - g * 0.27417610 - b * 0.32180189,
            r * 0.21147017 - g * 0.52261711 + b * 0.31114694};
}

double brightness(const std::uint8_t* p) { return yiq(p).y; }

class Pixels {
public:
    explicit Pixels(const Picture& picture) : p_(picture) {}
    const std::uint8_t* at(std::int64_t x, std::int64_t y) const { return p_.rgba.data() + (y * p_.width + x) * 4; }
    bool inside(std::int64_t x, std::int64_t y) const { return x >= 0 && y >= 0 && x < p_.width && y < p_.height; }
    bool same(const std::uint8_t* a, const std::uint8_t* b) const { return std::memcmp(a, b, 4) == 0; }

    // At least three of its neighbours have exactly its colour: it sits in a flat area.
    bool inFlatArea(std::int64_t x, std::int64_t y) const {
        int equal = 0;
        for (std::int64_t dy = -1; dy <= 1; ++dy)
            for (std::int64_t dx = -1; dx <= 1; ++dx)
                if ((dx || dy) && inside(x + dx, y + dy) && same(at(x, y), at(x + dx, y + dy)) && ++equal >= 3)
                    return true;
        return false;
    }

private:
    const Picture& p_;
};

// Whether the pixel at (x, y) of `one` is an edge pixel that `other` may draw a shade differently.
bool antiAliased(const Pixels& one, const Pixels& other, std::int64_t x, std::int64_t y) {
    const double centre = brightness(one.at(x, y));
    int equal = 0;
    double darkest = 0, brightest = 0;
    std::int64_t darkX = 0, darkY = 0, brightX = 0, brightY = 0;
    for (std::int64_t dy = -1; dy <= 1; ++dy) {
        for (std::int64_t dx = -1; dx <= 1; ++dx) {
            if ((!dx && !dy) || !one.inside(x + dx, y + dy)) continue;
            const std::uint8_t* n = one.at(x + dx, y + dy);
            if (one.same(n, one.at(x, y)) && ++equal > 2) return false;
            double delta = brightness(n) - centre;
            if (delta < darkest) darkest = delta, darkX = x + dx, darkY = y + dy;
            if (delta > brightest) brightest = delta, brightX = x + dx, brightY = y + dy;
        }
    }
    if (darkest == 0 || brightest == 0) return false;
    return (one.inFlatArea(darkX, darkY) && other.inFlatArea(darkX, darkY)) ||
           (one.inFlatArea(brightX, brightY) && other.inFlatArea(brightX, brightY));
}

}  // namespace

double yiqDistance(const std::uint8_t* a, const std::uint8_t* b) {
    Yiq p = yiq(a), q = yiq(b);
    double y = p.y - q.y, i = p.i - q.i, qq = p.q - q.q;
    return 0.5053 * y * y + 0.299 * i * i + 0.1957 * qq * qq;
}

PictureDifference comparePictures(const Picture& before, const Picture& after, double threshold) {
    PictureDifference difference;
    if (before.width != after.width || before.height != after.height) {
        difference.sizeDiffers = true;
        return difference;
    }
    const double limit = kMaxYiqDistance * threshold * threshold;
    const Pixels a(before), b(after);
    const std::uint32_t width = before.width, height = before.height;
    std::uint32_t aaLeft = width, aaTop = height, aaRight = 0, aaBottom = 0;
    std::uint32_t left = width, top = height, right = 0, bottom = 0;
    const std::size_t words = std::size_t(width) * height;
    const std::uint8_t* pa = before.rgba.data();
    const std::uint8_t* pb = after.rgba.data();
    for (std::size_t k = 0; k < words; ++k) {
        if (std::memcmp(pa + 4 * k, pb + 4 * k, 4) == 0) continue;  // most pixels: exactly equal
        if (yiqDistance(pa + 4 * k, pb + 4 * k) <= limit) continue;
        if (difference.marks.empty()) difference.marks.assign(words, PixelMark::Same);
        const std::uint32_t x = std::uint32_t(k % width), y = std::uint32_t(k / width);
        bool aa = antiAliased(a, b, x, y) || antiAliased(b, a, x, y);
        difference.marks[k] = aa ? PixelMark::AntiAliased : PixelMark::Changed;
        if (aa) {
            ++difference.antiAliasedPixels;
            aaLeft = std::min(aaLeft, x), aaTop = std::min(aaTop, y);
            aaRight = std::max(aaRight, x + 1), aaBottom = std::max(aaBottom, y + 1);
        } else {
            ++difference.changedPixels;
            left = std::min(left, x), top = std::min(top, y), right = std::max(right, x + 1), bottom = std::max(bottom, y + 1);
        }
    }
    if (difference.changedPixels)
        difference.left = left, difference.top = top, difference.right = right, difference.bottom = bottom;
    else if (difference.antiAliasedPixels)
        difference.left = aaLeft, difference.top = aaTop, difference.right = aaRight, difference.bottom = aaBottom;
    return difference;
}

Picture differencePicture(const Picture& after, const PictureDifference& difference) {
    Picture out{after.width, after.height, std::vector<std::uint8_t>(after.rgba.size())};
    for (std::size_t k = 0; k < std::size_t(after.width) * after.height; ++k) {
        std::uint8_t* o = out.rgba.data() + 4 * k;
        PixelMark mark = difference.marks.empty() ? PixelMark::Same : difference.marks[k];
        if (mark == PixelMark::Changed) {
            o[0] = 255, o[1] = 40, o[2] = 80, o[3] = 255;
        } else if (mark == PixelMark::AntiAliased) {
            o[0] = 255, o[1] = 200, o[2] = 0, o[3] = 255;
        } else {
            // Over black, as the cards are shown: a quarter of the brightness, no colour.
            const std::uint8_t* p = after.rgba.data() + 4 * k;
            double shade = (0.299 * p[0] + 0.587 * p[1] + 0.114 * p[2]) * (p[3] / 255.0) * 0.25 + 18;
            o[0] = o[1] = o[2] = static_cast<std::uint8_t>(shade);
            o[3] = 255;
        }
    }
    return out;
}

}  // namespace velmorant::review
