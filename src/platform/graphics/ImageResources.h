#pragma once

#include "platform/core/Diagnostics.h"
#include "platform/core/Value.h"

#include <filesystem>
#include <string_view>

namespace velmorant::platform {

// Renders the artwork of a named image ("LightsOn", "RechargeBkg.png", ...)
// from DIR/NAME.svg at its size in points and the given scale. None when there
// is no artwork; a file that cannot be rendered is reported.
ImagePtr loadNamedImage(const std::filesystem::path& imagesDir, std::string_view name, double scale,
                        Diagnostics& diagnostics);

}  // namespace velmorant::platform
