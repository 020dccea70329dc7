#include "platform/views/ViewLayout.h"

#include <algorithm>

namespace velmorant::platform {
namespace {

// One axis: the leading margin, the length and the trailing margin share the
// parent's change equally among those marked flexible.
void resizeAxis(double& origin, double& length, double oldParent, double newParent, bool leading, bool flexible,
                bool trailing) {
    int parts = int(leading) + int(flexible) + int(trailing);
    if (parts == 0) return;
    double share = (newParent - oldParent) / parts;
    if (leading) origin += share;
    if (flexible) length = std::max(0.0, length + share);
}

}  // namespace

Rect autoresizedFrame(Rect frame, const Autoresizing& mask, Size oldParent, Size newParent) {
    resizeAxis(frame.x, frame.width, oldParent.width, newParent.width, mask.flexibleLeftMargin, mask.flexibleWidth,
               mask.flexibleRightMargin);
    resizeAxis(frame.y, frame.height, oldParent.height, newParent.height, mask.flexibleTopMargin,
               mask.flexibleHeight, mask.flexibleBottomMargin);
    return frame;
}

ViewLayout::ViewLayout(const ViewTree& views, Size card) {
    std::map<std::string, Rect, std::less<>> local;  // each view's frame inside its laid-out parent
    for (const auto& view : views.views()) {
        Rect frame;
        Rect origin;
        if (view->parent().empty()) {
            frame = {0, 0, card.width, card.height};
        } else {
            const View& parent = *views.view(view->parent());
            Rect parentFrame = local.at(parent.name());
            frame = autoresizedFrame(view->frame(), view->autoresizing(), parent.frame().size(), parentFrame.size());
            origin = frames_.at(parent.name());
        }
        local[view->name()] = frame;
        frames_[view->name()] = {origin.x + frame.x, origin.y + frame.y, frame.width, frame.height};
    }
}

Rect ViewLayout::frameOf(std::string_view name) const {
    auto it = frames_.find(name);
    return it == frames_.end() ? Rect{} : it->second;
}

}  // namespace velmorant::platform
