#pragma once

#include "platform/graphics/detail/CHandles.h"
#include "platform/graphics/Font.h"

#include <pango/pangocairo.h>

#include <filesystem>
#include <map>
#include <memory>

namespace velmorant::platform {

// Text layout with the project's own pinned fonts (resources/fonts/fonts.conf),
// independent of the fonts and settings of the machine it runs on.
class FontSystem {
public:
    // Throws std::runtime_error when the font configuration cannot be loaded.
    explicit FontSystem(const std::filesystem::path& fontsConf);
    FontSystem(const FontSystem&) = delete;
    FontSystem& operator=(const FontSystem&) = delete;

    // A layout in device pixels: the system font at `font`'s size (points) x
    // `pixelsPerPoint` and its weight, for a context with an identity matrix.
    GObjectPtr<PangoLayout> layoutInPixels(const Font& font, double pixelsPerPoint) const;
    // The system font's line height (ascent + descent) at `font`'s size, in points.
    double lineHeight(const Font& font) const;

private:
    // Empties the font map's caches, which hold it in a cycle, then lets it go.
    struct FontMapRelease {
        void operator()(PangoFontMap* fontMap) const noexcept;
    };

    GObjectPtr<PangoContext> makeContext() const;
    std::unique_ptr<PangoFontMap, FontMapRelease> fontMap_;
    // Line heights already measured, by size and weight: measuring shapes sample text.
    mutable std::map<std::pair<double, FontWeight>, double> lineHeights_;
};

}  // namespace velmorant::platform
