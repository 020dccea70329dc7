#pragma once

#include "platform/graphics/Canvas.h"
#include "platform/core/Colour.h"
#include "platform/core/Geometry.h"
#include "platform/core/Value.h"

#include <cstddef>
#include <functional>
#include <list>
#include <string>
#include <string_view>

namespace velmorant::snippet_ui {

// What a layer was drawn from: which picture, and every colour, figure and
// name its steps use.
class LayerKey {
public:
    LayerKey& add(double number);
    LayerKey& add(const platform::Colour& colour);
    LayerKey& add(std::string_view text);
    bool operator==(const LayerKey&) const = default;

private:
    std::string bytes_;
};

// The steps of a picture that do not depend on its data (tracks and their
// shadows, a dial's scale, a backdrop) drawn once per size, scale and key and
// kept for the next drawing. Drawing over is associative, so a kept layer
// laid over the canvas gives what the steps themselves would have drawn there.
// A layer is kept from the second time its key is asked for, and only the
// last few layers are, so memory stays bounded; one cache serves one thread,
// as the object that owns it.
class LayerCache {
public:
    explicit LayerCache(std::size_t maxLayers = 3) : maxLayers_(maxLayers) {}

    // Draws onto `canvas` what `steps` draw on a transparent canvas of the same
    // size and scale: from the layer kept under `key`, or drawn now and kept.
    void draw(platform::Canvas& canvas, const LayerKey& key, const platform::FontSystem& fonts,
              const std::function<void(platform::Canvas&)>& steps);

private:
    struct Layer {
        LayerKey key;
        platform::ImagePtr image;
        platform::Rect drawn;
    };
    // Keys asked for once and not kept yet, most recent first.
    static constexpr std::size_t kSeenKeys = 8;
    std::size_t maxLayers_;
    // Most recently used first.
    std::list<Layer> kept_;
    std::list<LayerKey> seen_;
};

}  // namespace velmorant::snippet_ui
