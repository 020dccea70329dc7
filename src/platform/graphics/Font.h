#pragma once

#include <string_view>

namespace velmorant::platform {

enum class FontWeight { UltraLight, Thin, Light, Regular, Medium, Semibold, Bold, Heavy, Black };

std::string_view fontWeightName(FontWeight weight);

// The system font of a size (points) and weight; the card renderer maps it to
// the project's pinned system font.
struct Font {
    double size = 17;
    FontWeight weight = FontWeight::Regular;

    static Font systemFontOfSize(double size) { return {size, FontWeight::Regular}; }
    static Font boldSystemFontOfSize(double size) { return {size, FontWeight::Bold}; }
    static Font systemFontOfSize(double size, FontWeight weight) { return {size, weight}; }

    bool operator==(const Font&) const = default;
};

}  // namespace velmorant::platform
