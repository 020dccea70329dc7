#pragma once

#include "Canvas.h"
#include "FontSystem.h"
#include "Geometry.h"
#include "ViewLayout.h"
#include "ViewTree.h"

namespace velmorant::platform {

// Draws the shown views of a tree as the phone's view system does: each view
// over its parent in description order, backgrounds and gradient layers inside
// the rounded corners, pictures fitted to their frames, label texts fitted to
// their frames (a step smaller, then cut with an ellipsis).
class ViewRenderer {
public:
    ViewRenderer(const ViewTree& views, const ViewLayout& layout) : views_(views), layout_(layout) {}

    // Draws every shown view onto the canvas, in card points.
    void draw(Canvas& canvas) const;

private:
    void drawBackground(Canvas& canvas, const View& view, Rect frame) const;
    void drawImage(Canvas& canvas, const View& view, Rect frame) const;
    void drawText(Canvas& canvas, const View& view, Rect frame) const;

    const ViewTree& views_;
    const ViewLayout& layout_;
};

// The snippet card: the tree laid out for `size` points and drawn at `scale`.
ImagePtr renderCard(const ViewTree& views, Size size, double scale, const FontSystem& fonts);

}  // namespace velmorant::platform
