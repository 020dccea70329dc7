#include "ViewRenderer.h"

#include "Image.h"

#include <algorithm>
#include <cmath>

namespace velmorant::platform {
namespace {

// A label that may take any number of lines still takes no more than its frame holds.
constexpr int kMostLines = 8;
// A block this much taller than its frame still fits: its line spacing is not ink.
constexpr double kHeightTolerance = 0.5;

// Halvings of the width range when balancing lines: to a fraction of a point.
constexpr int kBalancingSteps = 8;

// Labels without a colour of their own draw in the dark theme's label colour.
Colour defaultTextColour() { return Colour::whiteColor(); }

// A rect's edges moved to whole device pixels, so pictures are not resampled.
Rect onPixelGrid(Rect r, double scale) {
    double x0 = std::round(r.x * scale) / scale, y0 = std::round(r.y * scale) / scale;
    return {x0, y0, std::round(r.width * scale) / scale, std::round(r.height * scale) / scale};
}

// The narrowest part of `frame` that holds a wrapped text in as many lines as
// the whole width does, placed by the alignment: lines of even length read
// better than a long line over a lone last word.
Rect balanced(const Canvas& canvas, std::string_view text, Rect frame, int lines, TextAlignment alignment,
              const TextAttributes& attributes) {
    Canvas::TextBlockSize full = canvas.sizeOfTextBlock(text, frame.width, lines, attributes);
    double oneLine = canvas.sizeOfTextBlock(text, frame.width, 1, attributes).size.height;
    if (full.truncated || full.size.height < 1.5 * oneLine) return frame;
    double narrow = frame.width / 2, wide = frame.width;
    for (int step = 0; step < kBalancingSteps; ++step) {
        double middle = (narrow + wide) / 2;
        Canvas::TextBlockSize trial = canvas.sizeOfTextBlock(text, middle, lines, attributes);
        bool same = !trial.truncated && trial.size.height <= full.size.height + kHeightTolerance;
        (same ? wide : narrow) = middle;
    }
    double spare = frame.width - wide;
    double shift = alignment == TextAlignment::Centre ? spare / 2 : alignment == TextAlignment::Right ? spare : 0;
    return {frame.x + shift, frame.y, wide, frame.height};
}

}  // namespace

void ViewRenderer::draw(Canvas& canvas) const {
    for (const auto& view : views_.views()) {
        if (!views_.isShown(*view)) continue;
        Rect frame = layout_.frameOf(view->name());
        if (frame.width <= 0 || frame.height <= 0) continue;
        drawBackground(canvas, *view, frame);
        if (view->image()) drawImage(canvas, *view, frame);
        if (view->text() && !view->text()->empty()) drawText(canvas, *view, frame);
    }
}

void ViewRenderer::drawBackground(Canvas& canvas, const View& view, Rect frame) const {
    const auto& sublayers = view.layer().sublayers();
    bool hasGradient = std::any_of(sublayers.begin(), sublayers.end(), [](const auto& l) { return l->colors().size() > 1; });
    bool hasColour = view.backgroundColor() && view.backgroundColor()->alpha() > 0;
    if (!hasColour && !hasGradient) return;
    canvas.addRoundedRect(frame, view.layer().cornerRadius());
    auto clip = canvas.clipToPath();
    if (hasColour) {
        canvas.addRoundedRect(frame, 0);
        canvas.setFillColour(*view.backgroundColor());
        canvas.fillPath();
    }
    // Sublayers lie over the view's own colour, each filling the view top to bottom.
    for (const auto& layer : sublayers) {
        if (layer->colors().size() < 2) continue;
        canvas.drawLinearGradient(layer->colors(), {frame.x, frame.y}, {frame.x, frame.y + frame.height});
    }
}

void ViewRenderer::drawImage(Canvas& canvas, const View& view, Rect frame) const {
    const Image& image = *view.image();
    Size natural = image.size();
    if (!(natural.width > 0 && natural.height > 0)) return;
    // Fitted inside the frame, never enlarged, centred.
    double fit = std::min({1.0, frame.width / natural.width, frame.height / natural.height});
    double w = natural.width * fit, h = natural.height * fit;
    Rect r = onPixelGrid({frame.x + (frame.width - w) / 2, frame.y + (frame.height - h) / 2, w, h}, canvas.scale());
    canvas.addRoundedRect(frame, view.layer().cornerRadius());
    auto clip = canvas.clipToPath();
    canvas.drawImage(view.image(), r);
}

void ViewRenderer::drawText(Canvas& canvas, const View& view, Rect frame) const {
    const std::string& text = *view.text();
    const TextFitting& fitting = view.textFitting();
    TextAttributes attributes{view.font().value_or(Font::systemFontOfSize(17)),
                              view.textColor().value_or(defaultTextColour())};
    // The font as given, then one step smaller; whatever still does not fit is
    // cut with an ellipsis at the smaller size, in as many lines as the frame holds.
    Font given = attributes.font;
    int lines = 1;
    for (double factor : {1.0, fitting.minimumScaleFactor}) {
        attributes.font.size = given.size * factor;
        lines = fitting.numberOfLines == 0 ? kMostLines : fitting.numberOfLines;
        Canvas::TextBlockSize block = canvas.sizeOfTextBlock(text, frame.width, lines, attributes);
        while (lines > 1 && block.size.height > frame.height + kHeightTolerance) {
            --lines;
            block = canvas.sizeOfTextBlock(text, frame.width, lines, attributes);
        }
        if (!block.truncated) break;
    }
    Rect block = balanced(canvas, text, frame, lines, view.alignment(), attributes);
    canvas.addRoundedRect(frame, 0);
    auto clip = canvas.clipToPath();
    canvas.drawTextBlock(text, block, lines, view.alignment(), attributes);
}

ImagePtr renderCard(const ViewTree& views, Size size, double scale, const FontSystem& fonts) {
    Canvas canvas(size, scale, fonts);
    ViewLayout layout(views, size);
    ViewRenderer(views, layout).draw(canvas);
    return canvas.makeImage();
}

}  // namespace velmorant::platform
