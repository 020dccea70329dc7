#pragma once

#include "platform/graphics/Canvas.h"
#include "platform/graphics/FontSystem.h"
#include "platform/core/Geometry.h"
#include "platform/views/ViewLayout.h"
#include "platform/views/ViewTree.h"

#include <filesystem>
#include <functional>
#include <string>
#include <unordered_map>

namespace velmorant::platform {

// Draws the shown views of a tree as the phone's view system does: each view
// over its parent in description order, backgrounds and gradient layers inside
// the rounded corners, pictures fitted to their frames, label texts fitted to
// their frames (a step smaller, then cut with an ellipsis).
class ViewRenderer {
public:
    ViewRenderer(const ViewTree& views, const ViewLayout& layout) : views_(views), layout_(layout) {}

    // Draws every shown view onto a canvas whose top left corner is `origin`
    // on the card (a band of it, or all of it at the origin), in card points.
    void draw(Canvas& canvas, Point origin = {}) const;
    // Lays out every shown label's text for the card ahead of drawing it.
    void layOutTexts(const Canvas& canvas) const;
    // True when the shown views paint every point of the card opaquely.
    bool coversCard() const;

private:
    // A label's text as drawn: its block (placed relative to the view's frame)
    // and the text laid out for it, which depend only on the frame's size.
    struct FittedText {
        Rect rect;
        Canvas::TextBlock block;
    };
    const FittedText& fitted(const Canvas& canvas, const View& view, Rect frame) const;
    void drawView(Canvas& canvas, const View& view, Rect frame) const;
    void drawBackground(Canvas& canvas, const View& view, Rect frame) const;
    void drawImage(Canvas& canvas, const View& view, const ImagePtr& image, Rect frame) const;
    void drawText(Canvas& canvas, const View& view, Rect frame) const;

    const ViewTree& views_;
    const ViewLayout& layout_;
    mutable std::unordered_map<const View*, FittedText> fittedTexts_;
};

// The snippet card: the tree laid out for `size` points and drawn at `scale`.
ImagePtr renderCard(const ViewTree& views, Size size, double scale, const FontSystem& fonts);

// The same card written as PNG, drawn and encoded a band of rows at a time so
// the whole bitmap is never held; `description` goes into the file with it.
// On failure returns false, says why and leaves no file.
bool writeCardPng(const ViewTree& views, Size size, double scale, const FontSystem& fonts,
                  const std::filesystem::path& path, const std::string& description, std::string* error = nullptr);
// One band of a card drawn and encoded: how far the card has got and what
// the band cost, so a caller can tell drawing time from encoding time.
struct CardBand {
    int rowsDone = 0;
    int rows = 0;
    double drawingSeconds = 0;
    double encodingSeconds = 0;
};
// Told of every band as it is done; returning false stops the card there.
using CardProgress = std::function<bool(const CardBand&)>;

// The same card encoded into memory; empty on failure, or when `progress` stopped it.
std::string encodeCardPng(const ViewTree& views, Size size, double scale, const FontSystem& fonts,
                          const std::string& description, std::string* error = nullptr,
                          const CardProgress& progress = {});

}  // namespace velmorant::platform
