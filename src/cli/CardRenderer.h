#pragma once

#include "platform/FontSystem.h"
#include "platform/Geometry.h"
#include "platform/ViewTree.h"

#include <filesystem>
#include <string>

namespace velmorant::cli {

// Draws the visible views of a snippet as a card of the reported size and
// writes it as PNG. The views are laid out for a 390-point card and centred
// when the host is wider or narrower.
bool renderCard(const platform::ViewTree& views, platform::Size size, double scale,
                const platform::FontSystem& fonts, const std::filesystem::path& file, std::string* error);

}  // namespace velmorant::cli
