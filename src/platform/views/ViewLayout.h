#pragma once

#include "platform/core/Geometry.h"
#include "platform/views/ViewTree.h"

#include <map>
#include <string>
#include <string_view>

namespace velmorant::platform {

// A frame moved and resized for a new parent size: the change on each axis is
// shared equally among the parts the mask marks flexible; with none marked the
// view keeps its size and its distance from the top left corner.
Rect autoresizedFrame(Rect frame, const Autoresizing& mask, Size oldParent, Size newParent);

// Where every view of a tree sits on a card: a top-level view fills the card,
// every other view is autoresized within its parent. Frames are in card points.
class ViewLayout {
public:
    ViewLayout(const ViewTree& views, Size card);

    // The view's frame on the card; an empty rect for a name the tree lacks.
    Rect frameOf(std::string_view name) const;

private:
    std::map<std::string, Rect, std::less<>> frames_;
};

}  // namespace velmorant::platform
