#pragma once

#include "Font.h"

#include <pango/pangocairo.h>

#include <filesystem>
#include <memory>

namespace velmorant::platform {

// Text layout with the project's own pinned fonts (resources/fonts/fonts.conf),
// independent of the fonts and settings of the machine it runs on.
class FontSystem {
public:
    // Throws std::runtime_error when the font configuration cannot be loaded.
    explicit FontSystem(const std::filesystem::path& fontsConf);
    ~FontSystem();
    FontSystem(const FontSystem&) = delete;
    FontSystem& operator=(const FontSystem&) = delete;

    // A layout for `cr` with the system font at `font`'s size (points) and weight.
    PangoLayout* createLayout(cairo_t* cr, const Font& font) const;

private:
    PangoFontMap* fontMap_ = nullptr;
};

}  // namespace velmorant::platform
