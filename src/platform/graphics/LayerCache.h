#pragma once

#include "platform/graphics/Canvas.h"
#include "platform/graphics/LayerStore.h"
#include "platform/core/Colour.h"
#include "platform/core/Geometry.h"
#include "platform/core/Value.h"

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>

namespace velmorant::platform {

// What a layer was drawn from: which picture, and every colour, figure and
// name its steps use.
class LayerKey {
public:
    LayerKey& add(double number);
    LayerKey& add(const Colour& colour);
    LayerKey& add(std::string_view text);
    bool operator==(const LayerKey&) const = default;
    const std::string& bytes() const { return bytes_; }

private:
    std::string bytes_;
};

// The steps of a picture that do not depend on its data (tracks and their
// shadows, a dial's scale, a backdrop) drawn once per size, scale and key and
// kept for the next drawing. Only steps drawn first, on a canvas nothing has
// been drawn on yet, are kept: there the layer is copied and the picture is the
// same to the byte as one drawn without it (a layer laid over other drawing
// rounds differently, a level here and there). A layer is kept from the second time its key is asked for, and only the
// last few layers are, within a number and a size in bytes, so memory stays
// bounded; one cache serves one thread, as the object that owns it. With a
// store on disk, a layer is kept from the first time and looked for there
// before it is drawn, so that a new process finds it too; one found there
// is read straight into the canvas.
class LayerCache {
public:
    // Enough for the pictures of every card at scale 3 (a 280-point picture
    // takes 2.8 MB) without growing with the scale.
    static constexpr std::size_t kDefaultBytes = std::size_t{32} << 20;

    explicit LayerCache(std::size_t maxLayers = 3, std::size_t maxBytes = kDefaultBytes)
        : maxLayers_(maxLayers), maxBytes_(maxBytes) {}

    // Draws onto `canvas` what `steps` draw on a transparent canvas of the same
    // size and scale: from the layer kept under `key`, or drawn now and kept;
    // drawn in place when something has been drawn on `canvas` already.
    void draw(Canvas& canvas, const LayerKey& key, const FontSystem& fonts,
              const std::function<void(Canvas&)>& steps);

    // Keeps layers in `store` as well, and looks for them there; none: in memory only.
    void keepOnDisk(std::unique_ptr<LayerStore> store);

private:
    // Keeps `image` in memory, most recent first, within the number and bytes allowed.
    void keep(LayerKey sized, ImagePtr image, Rect drawn, std::size_t bytes);

    struct Layer {
        LayerKey key;
        ImagePtr image;
        Rect drawn;
        std::size_t bytes;
    };
    // Keys asked for once and not kept yet, most recent first.
    static constexpr std::size_t kSeenKeys = 8;
    std::size_t maxLayers_;
    std::size_t maxBytes_;
    std::size_t keptBytes_ = 0;
    // Most recently used first.
    std::list<Layer> kept_;
    std::list<LayerKey> seen_;
    std::unique_ptr<LayerStore> store_;
};

}  // namespace velmorant::platform
