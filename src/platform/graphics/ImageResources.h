#pragma once

#include "platform/core/Diagnostics.h"
#include "platform/core/Value.h"

#include <filesystem>
#include <string_view>

namespace velmorant::platform {

// Renders the artwork of a named image ("LightsOn", "RechargeBkg.png", ...)
// from DIR/NAME.svg at its size in points and the given scale. None when there
// is no artwork; a file that cannot be rendered is reported. Pictures drawn
// before are read from the artwork cache in the user's cache folder.
ImagePtr loadNamedImage(const std::filesystem::path& imagesDir, std::string_view name, double scale,
                        Diagnostics& diagnostics);
// The same with the cache in `cacheDir` (none for no cache).
ImagePtr loadNamedImage(const std::filesystem::path& imagesDir, std::string_view name, double scale,
                        Diagnostics& diagnostics, const std::filesystem::path& cacheDir);

}  // namespace velmorant::platform
