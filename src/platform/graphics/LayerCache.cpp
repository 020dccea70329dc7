#include "platform/graphics/LayerCache.h"

#include "platform/graphics/Image.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace velmorant::platform {
namespace {

// The bytes a layer of the canvas's size and scale takes.
std::size_t layerBytes(const Canvas& canvas) {
    const double pixels = std::ceil(canvas.size().width * canvas.scale()) * std::ceil(canvas.size().height * canvas.scale());
    return static_cast<std::size_t>(4 * pixels);
}

}  // namespace

LayerKey& LayerKey::add(double number) {
    char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    bytes_.append(bytes, sizeof bytes);
    return *this;
}

LayerKey& LayerKey::add(const Colour& colour) {
    const platform::Rgba rgba = colour.rgba();
    return add(rgba.r).add(rgba.g).add(rgba.b).add(rgba.a);
}

LayerKey& LayerKey::add(std::string_view text) {
    add(static_cast<double>(text.size()));
    bytes_.append(text);
    return *this;
}

void LayerCache::keepOnDisk(std::unique_ptr<LayerStore> store) { store_ = std::move(store); }

void LayerCache::keep(LayerKey sized, ImagePtr image, Rect drawn, std::size_t bytes) {
    while (!kept_.empty() && (kept_.size() >= maxLayers_ || keptBytes_ + bytes > maxBytes_)) {
        keptBytes_ -= kept_.back().bytes;
        kept_.pop_back();
    }
    keptBytes_ += bytes;
    kept_.push_front({std::move(sized), std::move(image), drawn, bytes});
}

void LayerCache::draw(Canvas& canvas, const LayerKey& key, const FontSystem& fonts,
                      const std::function<void(Canvas&)>& steps) {
    const Rect earlier = canvas.drawnBounds();
    if (earlier.width > 0 && earlier.height > 0) {
        steps(canvas);
        return;
    }
    LayerKey sized = key;
    sized.add(canvas.size().width).add(canvas.size().height).add(canvas.scale());
    auto found = std::find_if(kept_.begin(), kept_.end(), [&](const Layer& layer) { return layer.key == sized; });
    if (found != kept_.end()) {
        kept_.splice(kept_.begin(), kept_, found);
        canvas.drawLayer(*kept_.front().image, kept_.front().drawn);
        return;
    }
    const std::size_t bytes = layerBytes(canvas);
    const bool keepable = maxLayers_ > 0 && bytes <= maxBytes_;
    // A layer is kept from the second time it is asked for: a picture drawn
    // only once (one card, one gallery entry) pays neither time nor memory for
    // it, unless a store on disk keeps it for the next process.
    auto seen = std::find(seen_.begin(), seen_.end(), sized);
    if (keepable && store_) {
        // Read straight into the canvas, not kept in memory: a process that finds its
        // layers on disk mostly draws one picture, and pays for a bitmap only once.
        if (store_->drawInto(sized.bytes(), canvas, fonts)) {
            if (seen != seen_.end()) seen_.erase(seen);
            return;
        }
    } else if (seen == seen_.end() || !keepable) {
        if (seen == seen_.end()) {
            if (seen_.size() >= kSeenKeys) seen_.pop_back();
            seen_.push_front(std::move(sized));
        }
        steps(canvas);
        return;
    }
    if (seen != seen_.end()) seen_.erase(seen);
    Canvas fresh(canvas.size(), canvas.scale(), fonts);
    steps(fresh);
    const Rect drawn = fresh.drawnBounds();
    ImagePtr image = fresh.makeImage();
    // Without memory for a layer the steps are drawn where they belong.
    if (!image) {
        steps(canvas);
        return;
    }
    if (store_) store_->keep(sized.bytes(), {image, drawn}, fonts);
    canvas.drawLayer(*image, drawn);
    keep(std::move(sized), std::move(image), drawn, bytes);
}

}  // namespace velmorant::platform
