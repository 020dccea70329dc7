#pragma once

#include "platform/core/Colour.h"
#include "platform/graphics/Font.h"
#include "platform/core/Geometry.h"
#include "platform/graphics/TextStyle.h"
#include "platform/core/Value.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace velmorant::platform {

class FontSystem;
class Image;

enum class LineCap { Butt, Round, Square };

// A shadow: how far it falls and how soft it is (points), and its colour.
struct Shadow {
    Size offset;
    double blur = 0;
    Colour colour = Colour::blackColor().colorWithAlphaComponent(1.0 / 3);

    // Straight under the shape, in the platform's default colour (black at alpha 1/3).
    static Shadow soft(double blur) { return {{0, 0}, blur}; }
};

// An arc round `centre`, swept from `startAngle` to `endAngle` as `Canvas::addArc` sweeps it.
struct Arc {
    Point centre;
    double radius = 0;
    double startAngle = 0;
    double endAngle = 0;
};

// How an arc is stroked: width, cap, colour, and the shadow under it (none: no shadow).
struct ArcStroke {
    double width = 1;
    LineCap cap = LineCap::Butt;
    Colour colour = Colour::blackColor();
    std::optional<Shadow> shadow;
};

// What text is drawn with: the system font of a size and weight, and its colours.
struct TextAttributes {
    Font font;
    Colour foreground = Colour::blackColor();
    Colour background = Colour::clearColor();
};

// The phone's bitmap image context and its drawing calls, on Cairo: S x S
// points at a scale (pixels per point), transparent, origin top left, y down,
// angles in radians from +x towards +y. Line width, line cap, stroke and fill
// colours and the shadow form the graphics state; a shadow, while set, falls
// under every stroke, fill, image and text. One canvas serves one thread.
class Canvas {
public:
    // Restores the graphics state saved by `saveGState`, clip included, when it goes out of scope.
    class [[nodiscard]] SavedState {
    public:
        ~SavedState();
        SavedState(const SavedState&) = delete;
        SavedState& operator=(const SavedState&) = delete;

    private:
        // Only `saveGState` makes one, so every guard restores a state it saved.
        friend class Canvas;
        explicit SavedState(Canvas& canvas) : canvas_(&canvas) {}
        Canvas* canvas_;
    };

    // A transparent context of `points` at `scale`. A size that is not finite, not
    // positive, or with a side over kMaxPixels pixels gives an empty image.
    Canvas(Size points, double scale, const FontSystem& fonts);
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    // The longest side of a canvas, in pixels.
    static constexpr int kMaxPixels = 8192;

    // The size in points; empty when the size asked for cannot be drawn.
    Size size() const;
    // Pixels per point.
    double scale() const;

    // Saves the graphics state (line, colours, shadow and clip) until the returned guard is destroyed.
    SavedState saveGState();

    void setLineWidth(double width);
    void setLineCap(LineCap cap);
    void setStrokeColour(const Colour& colour);
    void setFillColour(const Colour& colour);

    // A shadow of the platform's default colour, black at alpha 1/3.
    void setShadow(Size offset, double blur);
    void setShadowWithColour(Size offset, double blur, const Colour& colour);
    // The shadow given; none: no shadow.
    void setShadow(const std::optional<Shadow>& shadow);
    // No shadow (offset 0, blur 0).
    void setNoShadow();

    // Adds an arc swept from `start` to `end` through increasing angles.
    void addArc(Point centre, double radius, double startAngle, double endAngle);
    void moveTo(Point point);
    void addLineTo(Point point);
    void closePath();
    // Strokes one arc, as `addArc` adds it, with the width, cap, colour and shadow
    // of `stroke`; they stay in force afterwards, as if set one by one.
    void strokeArc(Point centre, double radius, double startAngle, double endAngle, const ArcStroke& stroke);
    // Paints only the shadow that `stroke` casts under `arcs`, blurred together:
    // shapes that share a shadow are blurred once. The arcs are left to be
    // stroked afterwards without a shadow; the stroke stays in force. When
    // `opaqueArcsFollow`, each arc will be stroked over it in an opaque colour,
    // so no shadow is painted where that stroke replaces every pixel.
    void strokeArcShadows(std::span<const Arc> arcs, const ArcStroke& stroke, bool opaqueArcsFollow = false);
    // Strokes, then clears, the current path.
    void strokePath();
    // Fills (non-zero winding), then clears, the current path.
    void fillPath();

    // Draws `layer`, a picture of this canvas's size and scale, pixel for pixel
    // where it lies within `within` (points), without shadow.
    void drawLayer(const Image& layer, Rect within);
    // A box (points) that holds every pixel drawn on so far, shadows included; empty when none is.
    Rect drawnBounds() const;
    // Draws an image scaled into `rect`; none draws nothing.
    void drawImage(const ImagePtr& image, Rect rect);

    // The size of a one-line run: its laid-out width and the font's line height.
    Size sizeWithAttributes(std::string_view text, const TextAttributes& attributes) const;
    // Draws a one-line run with its top left corner at `point`.
    void drawAtPoint(std::string_view text, Point point, const TextAttributes& attributes);

    // A canvas's bitmap as rows of premultiplied pixels, for a reader that fills it whole.
    struct PixelRows {
        unsigned char* data;
        int stride, width, height;
    };
    // On a canvas nothing has been drawn on: `read` fills every pixel and says which box (points) holds
    // the drawing, as `drawLayer` would have copied it in, without a second bitmap. False, with the
    // canvas as before, when something has been drawn already or `read` gives none.
    bool drawLayerFrom(const std::function<std::optional<Rect>(PixelRows)>& read);
    // Ends the context: the bitmap drawn so far. The canvas is left empty.
    ImagePtr makeImage();
    // The picture a canvas of `points` at `scale` would end with, of that size and scale now, its pixels drawn
    // by `draw` the first time anything reads them, on whichever thread does. So that the picture is the one
    // asked for, `draw` holds copies of what it draws from, never what may change in the meantime.
    static ImagePtr drawLater(Size points, double scale, std::function<ImagePtr()> draw);

    // A text block laid out once: measured, then drawn as it is on any canvas of
    // the same scale and fonts (every band of a card), never laid out again.
    class TextBlock {
    public:
        Size size;               // as laid out, in points
        bool truncated = false;  // cut short with an ellipsis
        int lines = 0;

    private:
        friend class Canvas;
        struct Layout;
        std::shared_ptr<const Layout> layout_;
    };

    // Adds a rectangle with corners rounded to `radius` (held to half the shorter side).
    void addRoundedRect(Rect rect, double radius);
    // Intersects the clip with the current path, then clears the path. The clip
    // is part of the graphics state: the guard of an earlier `saveGState` ends it.
    void clipToPath();
    // Paints the clip with a linear gradient of evenly spaced colours from `start` to `end`.
    void drawLinearGradient(const std::vector<Colour>& colours, Point start, Point end);
    // A text wrapped to `width` in at most `lines` lines (0: any number), cut with an ellipsis beyond,
    // each line aligned across the width.
    TextBlock layOutTextBlock(std::string_view text, double width, int lines, TextAlignment alignment,
                              const TextAttributes& attributes) const;
    // Draws such a block in `rect` (as wide as it was laid out): from its left edge, centred down it.
    void drawTextBlock(const TextBlock& block, Rect rect);

private:
    friend class SavedState;
    void restoreGState();

    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace velmorant::platform
