#pragma once

#include "platform/graphics/Font.h"

#include <filesystem>
#include <memory>
#include <string>

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

    // The system font's line height (ascent + descent) at `font`'s size, in points.
    double lineHeight(const Font& font) const;

    // The font files the configuration accepts, one a line with their size and
    // modification time, sorted: a font package upgrade changes it.
    std::string fontFiles() const;

    // The font map and what was measured with it, which the platform's own
    // sources lay text out with (platform/graphics/detail/FontLayout.h).
    struct Impl;
    const Impl& impl() const { return *impl_; }

private:
    std::unique_ptr<Impl> impl_;
};

}  // namespace velmorant::platform
