#include "platform/views/View.h"

#include <algorithm>

namespace velmorant::platform {

void Layer::insertSublayer(std::shared_ptr<Layer> layer, std::size_t index) {
    index = std::min(index, sublayers_.size());
    sublayers_.insert(sublayers_.begin() + static_cast<std::ptrdiff_t>(index), std::move(layer));
}

void Layer::replaceSublayer(const Layer& old, std::shared_ptr<Layer> replacement) {
    auto it = std::find_if(sublayers_.begin(), sublayers_.end(), [&](const auto& l) { return l.get() == &old; });
    if (it != sublayers_.end()) *it = std::move(replacement);
}

void View::setFrame(Rect frame) {
    frame_ = frame;
    layer_.setFrame(bounds());
}

}  // namespace velmorant::platform
