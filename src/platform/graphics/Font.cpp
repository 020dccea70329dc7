#include "platform/graphics/Font.h"

namespace velmorant::platform {

std::string_view fontWeightName(FontWeight weight) {
    switch (weight) {
        case FontWeight::UltraLight: return "ultralight";
        case FontWeight::Thin: return "thin";
        case FontWeight::Light: return "light";
        case FontWeight::Regular: return "regular";
        case FontWeight::Medium: return "medium";
        case FontWeight::Semibold: return "semibold";
        case FontWeight::Bold: return "bold";
        case FontWeight::Heavy: return "heavy";
        case FontWeight::Black: return "black";
    }
    return "regular";
}

}  // namespace velmorant::platform
