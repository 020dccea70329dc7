#pragma once

#include "platform/graphics/Image.h"

#include <filesystem>
#include <string_view>

namespace velmorant::platform {

// Rendered artwork kept on disk between runs, so a run that finds its pictures
// there never loads the SVG renderer (and the dozen libraries it brings).
// An entry is named by a digest of everything its pixels depend on and holds
// them exactly as drawn; a missing, foreign or damaged entry reads as none.
class ArtworkCache {
public:
    // No folder: nothing is kept.
    explicit ArtworkCache(std::filesystem::path folder) : folder_(std::move(folder)) {}

    // $XDG_CACHE_HOME/velmorant-artwork, else ~/.cache/velmorant-artwork, else none.
    static std::filesystem::path defaultFolder();

    // The entry's name for `svg` drawn as `stem` at `scale`.
    static std::string entryName(std::string_view stem, std::string_view svg, double scale);

    // The picture of that name, drawn at `scale`; none when it is not kept.
    std::shared_ptr<Image> find(const std::string& entry, double scale) const;
    // Keeps the picture under that name: written beside and renamed into
    // place, so readers see a whole entry or none. Failures are ignored: the
    // picture is then drawn again next time.
    void keep(const std::string& entry, const Image& image) const;

private:
    std::filesystem::path folder_;
};

}  // namespace velmorant::platform
