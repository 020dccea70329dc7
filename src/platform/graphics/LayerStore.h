#pragma once

#include "platform/core/Geometry.h"
#include "platform/core/Value.h"
#include "platform/graphics/Image.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace velmorant::platform {

class Canvas;
class FontSystem;

// Kept layers (see LayerCache) on disk, so that a new process draws a picture's
// data-independent steps from a file instead of from scratch. An entry is named
// by a digest of its layer's key and size and of everything else its pixels
// depend on: this program's build, the drawing libraries' versions, the font
// files and configuration, the artwork. A missing, foreign or damaged entry
// reads as none (the layer is drawn as without a store); a failed write is
// ignored. The folder is kept within a size: the oldest entries go first.
class LayerStore {
public:
    static constexpr std::size_t kDefaultBytes = std::size_t{64} << 20;

    // `resourceDir` holds the font configuration and the artwork the layers may draw.
    LayerStore(std::filesystem::path folder, std::filesystem::path resourceDir, std::size_t maxBytes = kDefaultBytes);

    // $VELMORANT_CACHE_DIR when set (empty: no store), else $XDG_CACHE_HOME/velmorant,
    // else ~/.cache/velmorant; none when there is no such place.
    static std::filesystem::path defaultFolder();

    const std::filesystem::path& folder() const { return folder_; }

    struct Layer {
        ImagePtr image;
        Rect drawn;
    };
    // The layer kept for `key` (its bytes, size and scale included) on a canvas of `points` at `scale`.
    std::optional<Layer> find(const std::string& key, Size points, double scale, const FontSystem& fonts);
    // Copies the layer kept for `key` straight into `canvas`, on which nothing has been drawn yet; false when
    // there is none (or the canvas has been drawn on), the canvas then as before.
    bool drawInto(const std::string& key, Canvas& canvas, const FontSystem& fonts);
    // Keeps `layer`, drawn over `drawn`, for `key`.
    void keep(const std::string& key, const Layer& layer, const FontSystem& fonts);

private:
    std::string entryName(const std::string& key, const FontSystem& fonts);
    // Removes the oldest entries while the folder holds more than its size.
    void trim() const;

    std::filesystem::path folder_;
    std::filesystem::path resourceDir_;
    std::size_t maxBytes_;
    // What every entry depends on besides its key, worked out on first use.
    std::optional<std::string> inputs_;
};

}  // namespace velmorant::platform
