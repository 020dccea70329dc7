#include "snippet_ui/LayerCache.h"

#include <algorithm>
#include <cstring>

namespace velmorant::snippet_ui {

LayerKey& LayerKey::add(double number) {
    char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    bytes_.append(bytes, sizeof bytes);
    return *this;
}

LayerKey& LayerKey::add(const platform::Colour& colour) {
    const platform::Rgba rgba = colour.rgba();
    return add(rgba.r).add(rgba.g).add(rgba.b).add(rgba.a);
}

LayerKey& LayerKey::add(std::string_view text) {
    add(static_cast<double>(text.size()));
    bytes_.append(text);
    return *this;
}

void LayerCache::draw(platform::Canvas& canvas, const LayerKey& key, const platform::FontSystem& fonts,
                      const std::function<void(platform::Canvas&)>& steps) {
    LayerKey sized = key;
    sized.add(canvas.size().width).add(canvas.size().height).add(canvas.scale());
    auto found = std::find_if(kept_.begin(), kept_.end(), [&](const Layer& layer) { return layer.key == sized; });
    if (found != kept_.end()) {
        kept_.splice(kept_.begin(), kept_, found);
        canvas.drawLayer(*kept_.front().image, kept_.front().drawn);
        return;
    }
    // A layer is kept from the second time it is asked for: a picture drawn
    // only once (one card, one gallery entry) pays neither time nor memory for it.
    auto seen = std::find(seen_.begin(), seen_.end(), sized);
    if (seen == seen_.end() || maxLayers_ == 0) {
        if (seen == seen_.end()) {
            if (seen_.size() >= kSeenKeys) seen_.pop_back();
            seen_.push_front(std::move(sized));
        }
        steps(canvas);
        return;
    }
    seen_.erase(seen);
    platform::Canvas fresh(canvas.size(), canvas.scale(), fonts);
    steps(fresh);
    const platform::Rect drawn = fresh.drawnBounds();
    platform::ImagePtr image = fresh.makeImage();
    // Without memory for a layer the steps are drawn where they belong.
    if (!image) {
        steps(canvas);
        return;
    }
    if (kept_.size() >= maxLayers_) kept_.pop_back();
    kept_.push_front({std::move(sized), std::move(image), drawn});
    canvas.drawLayer(*kept_.front().image, drawn);
}

}  // namespace velmorant::snippet_ui
