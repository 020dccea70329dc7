#pragma once

#include "GalleryHtml.h"
#include "SnippetCard.h"
#include "platform/core/Geometry.h"
#include "platform/services/Platform.h"
#include "review/Manifest.h"

#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

namespace velmorant::cli {

// The file that marks a folder as a gallery this program made, so that only
// such a folder is ever replaced.
inline constexpr std::string_view kGalleryMarker = review::kGalleryMarker;

struct GalleryOptions {
    // The gallery folder; replaced as a whole once the new gallery is complete.
    std::filesystem::path dir;
    // The host's maximum snippet width in points.
    double width = 390;
    // Where the stores came from, as the page names it.
    std::string source = "the built-in demo data";
    // How many threads draw the items; 0 takes as many as the machine runs at once.
    std::size_t threads = 0;
};

// Throws UsageError unless `dir` can take a gallery: it is missing, empty or a
// gallery this program made, it is not a symbolic link, and the folder it
// goes into can be written.
void checkGalleryFolder(const std::filesystem::path& dir);

// Draws every snippet, the same snippets with an empty shared store, every
// widget image and what the widget mirrors write, from the stores of
// `platform` (in memory: the mirrors write to it and the empty state clears
// its shared store), with an index.html showing them side by side. Everything
// is written into a fresh folder beside `options.dir` that takes its place
// only when complete. One line per section goes to `progress`. Returns the
// path of index.html; throws UsageError or std::runtime_error, leaving
// `options.dir` as it was.
std::filesystem::path writeGallery(platform::Platform& platform, const GalleryOptions& options,
                                   std::ostream& progress);

// Replaces what the stores of `to` hold with what the stores of `from` hold.
void copyStores(platform::Platform& from, platform::Platform& to);

}  // namespace velmorant::cli
