#pragma once

#include <optional>
#include <string>

namespace velmorant::platform {

struct Rgba {
    double r = 0, g = 0, b = 0, a = 0;
    bool operator==(const Rgba&) const = default;
};

// A colour as the phone's colour type makes it from hue, saturation,
// brightness and alpha, hue as a fraction of a turn. Components are clamped
// to 0...1 on creation, as the phone does.
class Colour {
public:
    Colour() = default;
    static Colour colorWithHue(double hue, double saturation, double brightness, double alpha);

    // The named system colours.
    static Colour blackColor();
    static Colour whiteColor();
    static Colour clearColor();
    static Colour darkGrayColor();
    static Colour lightGrayColor();
    static Colour systemGreenColor();
    static Colour systemRedColor();

    double hue() const { return h_; }
    double saturation() const { return s_; }
    double brightness() const { return b_; }
    double alpha() const { return a_; }
    // Set for the named system colours only.
    const std::optional<std::string>& name() const { return name_; }

    Colour colorWithAlphaComponent(double alpha) const;
    Rgba rgba() const;

    bool operator==(const Colour&) const = default;

private:
    static Colour named(const char* name, double r, double g, double b, double a);
    double h_ = 0, s_ = 0, b_ = 0, a_ = 0;
    std::optional<std::string> name_;
};

}  // namespace velmorant::platform
