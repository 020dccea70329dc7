#include "platform/core/Colour.h"

#include <algorithm>
#include <cmath>

namespace velmorant::platform {
namespace {
double unit(double v) { return std::isnan(v) ? 0.0 : std::clamp(v, 0.0, 1.0); }
}  // namespace

Colour Colour::colorWithHue(double hue, double saturation, double brightness, double alpha) {
    Colour c;
    c.h_ = unit(hue);
    c.s_ = unit(saturation);
    c.b_ = unit(brightness);
    c.a_ = unit(alpha);
    return c;
}

Colour Colour::named(const char* name, double r, double g, double b, double a) {
    // Store the HSB reading of the RGB value so that every colour prints alike.
    double mx = std::max({r, g, b}), mn = std::min({r, g, b}), d = mx - mn;
    double h = 0;
    if (d > 0) {
        if (mx == r) h = std::fmod((g - b) / d, 6.0);
        else if (mx == g) h = (b - r) / d + 2.0;
        else h = (r - g) / d + 4.0;
        h /= 6.0;
        if (h < 0) h += 1.0;
    }
    Colour c = colorWithHue(h, mx > 0 ? d / mx : 0.0, mx, a);
    c.name_ = name;
    return c;
}

Colour Colour::blackColor() { return named("black", 0, 0, 0, 1); }
Colour Colour::whiteColor() { return named("white", 1, 1, 1, 1); }
Colour Colour::clearColor() { return named("clear", 0, 0, 0, 0); }
Colour Colour::darkGrayColor() { return named("darkGray", 1.0 / 3.0, 1.0 / 3.0, 1.0 / 3.0, 1); }
Colour Colour::lightGrayColor() { return named("lightGray", 2.0 / 3.0, 2.0 / 3.0, 2.0 / 3.0, 1); }
// The light-appearance values of the phone's dynamic system colours.
Colour Colour::systemGreenColor() { return named("systemGreen", 52 / 255.0, 199 / 255.0, 89 / 255.0, 1); }
Colour Colour::systemRedColor() { return named("systemRed", 1, 59 / 255.0, 48 / 255.0, 1); }

Colour Colour::colorWithAlphaComponent(double alpha) const {
    Colour c = *this;
    c.a_ = unit(alpha);
    return c;
}

Rgba Colour::rgba() const {
    double h = h_ * 6.0;
    if (h >= 6.0) h = 0.0;
    int sector = static_cast<int>(std::floor(h));
    double f = h - sector;
    double p = b_ * (1 - s_), q = b_ * (1 - s_ * f), t = b_ * (1 - s_ * (1 - f));
    switch (sector) {
        case 0: return {b_, t, p, a_};
        case 1: return {q, b_, p, a_};
        case 2: return {p, b_, t, a_};
        case 3: return {p, q, b_, a_};
        case 4: return {t, p, b_, a_};
        default: return {b_, p, q, a_};
    }
}

}  // namespace velmorant::platform
