#include "platform/views/View.h"

#include <algorithm>

namespace velmorant::platform {

Layer::Layer(const Layer& other)
    : name_(other.name_), frame_(other.frame_), cornerRadius_(other.cornerRadius_), colors_(other.colors_) {
    sublayers_.reserve(other.sublayers_.size());
    for (const auto& layer : other.sublayers_) sublayers_.push_back(std::make_shared<Layer>(*layer));
}

Layer& Layer::operator=(const Layer& other) {
    if (this != &other) *this = Layer(other);
    return *this;
}

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
