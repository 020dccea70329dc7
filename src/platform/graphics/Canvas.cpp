#include "platform/graphics/Canvas.h"

#include "platform/graphics/DrawingTime.h"
#include "platform/graphics/detail/ArcInside.h"
#include "platform/graphics/detail/CHandles.h"
#include "platform/graphics/detail/FontLayout.h"
#include "platform/graphics/detail/ImageSurface.h"
#include "platform/graphics/detail/ShadowMask.h"
#include "platform/graphics/detail/ShadowPaint.h"
#include "platform/graphics/detail/StrokedArcBox.h"
#include "platform/graphics/detail/UninitialisedSurface.h"
#include "platform/graphics/detail/WideLoops.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <optional>
#include <vector>

namespace velmorant::platform {
namespace {

constexpr double kTurn = 2 * M_PI;
// Cairo keeps device coordinates in 24.8 fixed point (about +-8.4 million
// pixels). Points, radii and widths are held well inside that, so no sum of
// them wraps around and no arc is cut into unbounded numbers of pieces.
constexpr double kMaxCoordinatePixels = 1 << 21;
constexpr double kMaxLineWidthPixels = 1 << 20;
// A wider shadow is indistinguishable from a faint tint and would only cost time.
constexpr double kMaxShadowSigmaPixels = 128;


struct ShadowState {
    Size offset;
    double blur = 0;
    Rgba colour;
};

struct GState {
    double lineWidth = 1;
    LineCap lineCap = LineCap::Butt;
    Rgba strokeColour{0, 0, 0, 1};
    Rgba fillColour{0, 0, 0, 1};
    std::optional<ShadowState> shadow;
    // Whether a clip is in force: what is stroked may then not cover what it would.
    bool clipped = false;
};

// Where an arc goes, as `Canvas::addArc` sweeps it: from `start` through `sweep`
// (0 to a turn and a bit) radians.
struct Sweep {
    double start = 0, sweep = 0;
};

Sweep sweepOf(double startAngle, double endAngle) {
    // Sweep through increasing angles: a negative sweep wraps to less than a
    // turn, and more than one turn looks like one turn plus its remainder.
    double sweep = endAngle - startAngle;
    if (sweep < 0) {
        sweep = std::fmod(sweep, kTurn) + kTurn;
        if (sweep >= kTurn) sweep = 0;
    } else if (sweep > kTurn) {
        sweep = kTurn + std::fmod(sweep, kTurn);
    }
    return {std::fmod(startAngle, kTurn), sweep};
}

bool finite(double v) { return std::isfinite(v); }
bool finite(Point p) { return finite(p.x) && finite(p.y); }

// Whether `Canvas::addArc` adds the arc: everything about it finite, the radius not negative.
bool drawableArc(const Arc& arc) {
    return finite(arc.centre) && finite(arc.radius) && arc.radius >= 0 && finite(arc.startAngle) &&
           finite(arc.endAngle) && finite(arc.endAngle - arc.startAngle);
}

// A side too large to draw gives no pixels at all rather than a corner of a
// picture hundreds of megabytes large.
int pixelsAlong(double points, double scale) {
    double pixels = std::ceil(points * scale);
    if (!finite(pixels) || pixels <= 0 || pixels > Canvas::kMaxPixels) return 0;
    return static_cast<int>(pixels);
}

// What a canvas asked for `points` at `scale` is: nothing at all when either side cannot be drawn.
struct CanvasGeometry {
    Size size;
    double scale = 1;
    int pixelWidth = 0;
    int pixelHeight = 0;
};

CanvasGeometry canvasGeometry(Size points, double scale) {
    const bool usable = finite(points.width) && finite(points.height) && finite(scale) && scale > 0;
    if (!usable) return {};
    const int w = pixelsAlong(points.width, scale), h = pixelsAlong(points.height, scale);
    if (w == 0 || h == 0) return {{}, scale};
    return {points, scale, w, h};
}

cairo_line_cap_t cairoCap(LineCap cap) {
    switch (cap) {
        case LineCap::Butt: return CAIRO_LINE_CAP_BUTT;
        case LineCap::Round: return CAIRO_LINE_CAP_ROUND;
        case LineCap::Square: return CAIRO_LINE_CAP_SQUARE;
    }
    return CAIRO_LINE_CAP_BUTT;
}

// Longer runs are cut: a one-line run this long is far wider than any canvas.
constexpr size_t kMaxTextBytes = 1 << 16;

// The run as valid UTF-8 (bad bytes become U+FFFD), at most kMaxTextBytes long.
GCharPtr validText(std::string_view text) {
    return GCharPtr(g_utf8_make_valid(text.data(), static_cast<gssize>(std::min(text.size(), kMaxTextBytes))));
}

void setSource(cairo_t* cr, const Rgba& c) { cairo_set_source_rgba(cr, c.r, c.g, c.b, c.a); }

// Sets `count` pixels to `pixel`, eight at a time: one store with AVX2, two
// without (the compiler leaves a plain loop at one).
VELMORANT_WIDE_LOOPS void fillPixels(std::uint32_t* pixels, int count, std::uint32_t pixel) {
    using Eight = std::uint32_t __attribute__((vector_size(32)));
    const Eight eight = {pixel, pixel, pixel, pixel, pixel, pixel, pixel, pixel};
    int x = 0;
    for (; x + 8 <= count; x += 8) std::memcpy(pixels + x, &eight, sizeof eight);
    for (; x < count; ++x) pixels[x] = pixel;
}

// A box in device pixels.
struct PixelBox {
    double x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    bool empty() const { return !(x1 > x0 && y1 > y0); }
};

// Where a layout drawn at `p` (points) paints, in device pixels: its ink and
// its logical box together.
PixelBox layoutExtent(Point p, double scale, const PangoRectangle& ink, const PangoRectangle& logical) {
    return {p.x * scale + std::min(ink.x, logical.x), p.y * scale + std::min(ink.y, logical.y),
            p.x * scale + std::max(ink.x + ink.width, logical.x + logical.width),
            p.y * scale + std::max(ink.y + ink.height, logical.y + logical.height)};
}

}  // namespace

struct Canvas::Impl {
    // Everything drawn while a canvas lives counts as drawing time (the service times it apart).
    DrawingTimeScope timing;
    Impl(Size points, double scale, const FontSystem& fonts) : fonts(fonts) {
        const CanvasGeometry geometry = canvasGeometry(points, scale);
        this->scale = geometry.scale;
        const int w = geometry.pixelWidth, h = geometry.pixelHeight;
        size = geometry.size;
        // Left as it comes: a canvas is cleared when first drawn on, and where a
        // layer is copied in first, only around it.
        surface = uninitialisedSurface(CAIRO_FORMAT_ARGB32, w, h);
        cleared = !surface;
        if (!surface) surface.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h));
        cr.reset(cairo_create(surface.get()));
        cairo_scale(cr.get(), this->scale, this->scale);
        pixelWidth = w;
        pixelHeight = h;
    }

    // Clears the rows [y0, y1) between columns [x0, x1) of the bitmap.
    void clearPixels(int x0, int y0, int x1, int y1) {
        if (x1 <= x0) return;
        unsigned char* data = cairo_image_surface_get_data(surface.get());
        const int stride = cairo_image_surface_get_stride(surface.get());
        for (int y = y0; y < y1; ++y) std::memset(data + static_cast<size_t>(y) * stride + 4 * x0, 0, 4 * (x1 - x0));
    }

    // Clears the bitmap but for `keep` (whole pixels), which the caller fills.
    void clearAround(PixelBox keep) {
        if (cleared) return;
        cleared = true;
        cairo_surface_flush(surface.get());
        const int x0 = static_cast<int>(keep.x0), y0 = static_cast<int>(keep.y0);
        const int x1 = static_cast<int>(keep.x1), y1 = static_cast<int>(keep.y1);
        if (keep.empty()) {
            clearPixels(0, 0, pixelWidth, pixelHeight);
        } else {
            clearPixels(0, 0, pixelWidth, y0);
            clearPixels(0, y0, x0, y1);
            clearPixels(x1, y0, pixelWidth, y1);
            clearPixels(0, y1, pixelWidth, pixelHeight);
        }
        cairo_surface_mark_dirty(surface.get());
    }
    void clear() { clearAround({}); }

    // The clip as one box of whole canvas pixels; none when it is any other shape.
    std::optional<PixelBox> wholePixelClip() const {
        RectangleListPtr list(cairo_copy_clip_rectangle_list(cr.get()));
        if (list->status != CAIRO_STATUS_SUCCESS || list->num_rectangles != 1) return std::nullopt;
        const cairo_rectangle_t& r = list->rectangles[0];
        const PixelBox box = onCanvas(deviceBox(r.x, r.y, r.x + r.width, r.y + r.height));
        auto whole = [](double v) { return std::abs(v - std::round(v)) < 1e-6; };
        if (box.empty() || !whole(box.x0) || !whole(box.y0) || !whole(box.x1) || !whole(box.y1)) return std::nullopt;
        return PixelBox{std::round(box.x0), std::round(box.y0), std::round(box.x1), std::round(box.y1)};
    }

    // Paints `source`, the same along every row, over `box` (whole pixels,
    // inside the clip): only its first column is painted, then copied along
    // each row. Pixman gives every pixel of such a row the same colour, so this
    // is the paint, at a fraction of the cost for a card-wide gradient.
    void paintRowsAlike(PixelBox box, cairo_pattern_t* source) {
        cairo_t* context = cr.get();
        const int x0 = static_cast<int>(box.x0), y0 = static_cast<int>(box.y0);
        const int x1 = static_cast<int>(box.x1), y1 = static_cast<int>(box.y1);
        {
            CairoSaved saved(context);
            cairo_matrix_t matrix;
            cairo_get_matrix(context, &matrix);
            cairo_identity_matrix(context);
            cairo_rectangle(context, x0, y0, 1, y1 - y0);
            cairo_clip(context);
            cairo_set_matrix(context, &matrix);
            cairo_set_source(context, source);
            cairo_paint(context);
        }
        cairo_surface_flush(surface.get());
        unsigned char* data = cairo_image_surface_get_data(surface.get());
        const int stride = cairo_image_surface_get_stride(surface.get());
        for (int y = y0; y < y1; ++y) {
            auto* row = reinterpret_cast<std::uint32_t*>(data + static_cast<std::size_t>(y) * stride);
            fillPixels(row + x0 + 1, x1 - x0 - 1, row[x0]);
        }
        cairo_surface_mark_dirty(surface.get());
    }

    bool drawable() const {
        return pixelWidth > 0 && cr && cairo_status(cr.get()) == CAIRO_STATUS_SUCCESS;
    }

    double maxCoordinate() const { return kMaxCoordinatePixels / scale; }
    double clampCoordinate(double v) const { return std::clamp(v, -maxCoordinate(), maxCoordinate()); }
    Point clamped(Point p) const { return {clampCoordinate(p.x), clampCoordinate(p.y)}; }

    void applyStroke(cairo_t* target) const {
        cairo_set_line_width(target, state.lineWidth);
        cairo_set_line_cap(target, cairoCap(state.lineCap));
        setSource(target, state.strokeColour);
    }

    PixelBox deviceBox(double x0, double y0, double x1, double y1) const {
        return {x0 * scale, y0 * scale, x1 * scale, y1 * scale};
    }

    // A box held to the canvas.
    PixelBox onCanvas(PixelBox b) const {
        return {std::max(0.0, b.x0), std::max(0.0, b.y0), std::min<double>(pixelWidth, b.x1),
                std::min<double>(pixelHeight, b.y1)};
    }

    // Grows the box drawn on by `b` (canvas pixels).
    void markDrawn(PixelBox b) {
        b = onCanvas(b);
        if (b.empty()) return;
        drawn = drawn.empty() ? b
                              : PixelBox{std::min(drawn.x0, b.x0), std::min(drawn.y0, b.y0), std::max(drawn.x1, b.x1),
                                         std::max(drawn.y1, b.y1)};
    }

    // The pixels a shadow of a shape within `extent` can reach, on the canvas.
    PixelBox shadowBox(const ShadowState& shadow, PixelBox extent, double sigma) const {
        double reach = std::ceil(3 * sigma);
        double dx = shadow.offset.width * scale, dy = shadow.offset.height * scale;
        return onCanvas({std::floor(extent.x0 + dx - reach), std::floor(extent.y0 + dy - reach),
                         std::ceil(extent.x1 + dx + reach), std::ceil(extent.y1 + dy + reach)});
    }

    double shadowSigma(const ShadowState& shadow) const {
        return std::min(shadow.blur / 2 * scale, kMaxShadowSigmaPixels);
    }

    // Draws a shape, first its shadow when one is set. `paint` draws the
    // shape into any context whose matrix maps points to that context's
    // pixels; `extent` is where the shape can put paint, in canvas pixels.
    void draw(PixelBox extent, const std::function<void(cairo_t*)>& paint, MaskGrid grid = MaskGrid::Coarse) {
        clear();
        if (state.shadow) drawShadow(*state.shadow, extent, paint, grid);
        paint(cr.get());
        // Antialiasing reaches into the pixels the extent only touches.
        markDrawn({std::floor(extent.x0), std::floor(extent.y0), std::ceil(extent.x1), std::ceil(extent.y1)});
    }

    // Paints `image` at `r` (points) pixel for pixel, as `draw` with Cairo would,
    // when nothing resamples or clips it partly: no shadow, its pixels on the
    // canvas's own, the clip a box of whole pixels. False, with nothing drawn, otherwise.
    bool paintImageOnPixels(const Image& image, Rect r) {
        cairo_surface_t* source = cairoSurface(image);
        if (state.shadow || cairo_image_surface_get_format(source) != CAIRO_FORMAT_ARGB32) return false;
        cairo_matrix_t matrix;
        cairo_get_matrix(cr.get(), &matrix);
        if (matrix.xx != scale || matrix.yy != scale || matrix.xy != 0 || matrix.yx != 0 || matrix.x0 != 0 ||
            matrix.y0 != 0)
            return false;
        auto whole = [](double v) { return std::abs(v - std::round(v)) < 1e-6; };
        const double left = r.x * scale, top = r.y * scale;
        if (!whole(left) || !whole(top) || std::abs(r.width * scale - image.pixelWidth()) > 1e-6 ||
            std::abs(r.height * scale - image.pixelHeight()) > 1e-6)
            return false;
        std::optional<PixelBox> clip = state.clipped ? wholePixelClip() : PixelBox{0, 0, double(pixelWidth), double(pixelHeight)};
        if (!clip) return false;
        const PixelBox extent = deviceBox(r.x, r.y, r.x + r.width, r.y + r.height);
        clear();
        const int x0 = std::max(static_cast<int>(std::round(std::max(left, clip->x0))), 0);
        const int y0 = std::max(static_cast<int>(std::round(std::max(top, clip->y0))), 0);
        const int x1 = std::min(static_cast<int>(std::round(std::min(extent.x1, clip->x1))), pixelWidth);
        const int y1 = std::min(static_cast<int>(std::round(std::min(extent.y1, clip->y1))), pixelHeight);
        if (x0 < x1 && y0 < y1) {
            // Only this canvas's own bitmap is flushed: an image, finished when made, may be read by other threads.
            cairo_surface_flush(surface.get());
            const unsigned char* from = cairo_image_surface_get_data(source);
            const int fromStride = cairo_image_surface_get_stride(source);
            unsigned char* to = cairo_image_surface_get_data(surface.get());
            const int toStride = cairo_image_surface_get_stride(surface.get());
            const int sx = x0 - static_cast<int>(std::round(left)), sy = y0 - static_cast<int>(std::round(top));
            for (int y = y0; y < y1; ++y)
                paintOver(reinterpret_cast<const std::uint32_t*>(from + static_cast<std::size_t>(sy + y - y0) * fromStride) + sx,
                          reinterpret_cast<std::uint32_t*>(to + static_cast<std::size_t>(y) * toStride) + x0, x1 - x0);
            cairo_surface_mark_dirty(surface.get());
        }
        markDrawn({std::floor(extent.x0), std::floor(extent.y0), std::ceil(extent.x1), std::ceil(extent.y1)});
        return true;
    }

    // The shadow: the shape's alpha moved by the offset, blurred, painted in
    // the shadow's colour over the pixels it can reach.
    void drawShadow(const ShadowState& shadow, PixelBox extent, const std::function<void(cairo_t*)>& paint,
                    MaskGrid grid) {
        clear();
        double sigma = shadowSigma(shadow);
        double dx = shadow.offset.width * scale, dy = shadow.offset.height * scale;
        PixelBox touched = shadowBox(shadow, extent, sigma);
        if (touched.empty()) return;
        markDrawn(touched);
        PixelBounds bounds{static_cast<int>(touched.x0), static_cast<int>(touched.y0), static_cast<int>(touched.x1),
                           static_cast<int>(touched.y1)};
        std::optional<ShadowMask> mask = makeShadowMask(bounds, sigma, [&](cairo_t* target) {
            cairo_translate(target, dx, dy);
            cairo_scale(target, scale, scale);
            paint(target);
        }, grid, covering.empty() ? std::function<bool(const PixelBounds&)>() : [this](const PixelBounds& tile) {
            return covered(tile);
        });
        if (!mask || mask->parts.empty()) return;
        if (!state.clipped) {
            paintShadow(*mask, bounds, premultipliedPixel(shadow.colour));
            return;
        }
        CairoSaved saved(cr.get());
        cairo_identity_matrix(cr.get());
        cairo_rectangle(cr.get(), bounds.x0, bounds.y0, bounds.width(), bounds.height());
        cairo_clip(cr.get());
        for (const PixelBounds& part : mask->parts) cairo_rectangle(cr.get(), part.x0, part.y0, part.width(), part.height());
        cairo_clip(cr.get());
        setSource(cr.get(), shadow.colour);
        cairo_mask_surface(cr.get(), mask->alpha.get(), mask->x, mask->y);
    }

    // Paints `pixel` through the mask's parts within `bounds`, but for the pixels of
    // the arcs about to be stroked over it, straight into the bitmap.
    void paintShadow(const ShadowMask& mask, const PixelBounds& bounds, std::uint32_t pixel) {
        cairo_surface_flush(surface.get());
        unsigned char* data = cairo_image_surface_get_data(surface.get());
        const int stride = cairo_image_surface_get_stride(surface.get());
        const unsigned char* alpha = cairo_image_surface_get_data(mask.alpha.get());
        const int alphaStride = cairo_image_surface_get_stride(mask.alpha.get());
        // Parts come in bands of rows, left to right (as the mask makes them): side by side ones are painted as one.
        std::vector<PixelBounds> parts;
        for (const PixelBounds& part : mask.parts) {
            const PixelBounds p{std::max(part.x0, bounds.x0), std::max(part.y0, bounds.y0),
                                std::min(part.x1, bounds.x1), std::min(part.y1, bounds.y1)};
            if (p.empty()) continue;
            if (!parts.empty() && parts.back().y0 == p.y0 && parts.back().y1 == p.y1 && parts.back().x1 == p.x0)
                parts.back().x1 = p.x1;
            else
                parts.push_back(p);
        }
        std::vector<PixelRun> runs, inside;
        for (std::size_t band = 0, end = 0; band < parts.size(); band = end) {
            // A band's rows are worked out once across all its parts.
            end = band + 1;
            while (end < parts.size() && parts[end].y0 == parts[band].y0 && parts[end].y1 == parts[band].y1) ++end;
            for (int y = parts[band].y0; y < parts[band].y1; ++y) {
                auto* row = reinterpret_cast<std::uint32_t*>(data + static_cast<std::size_t>(y) * stride);
                const unsigned char* maskRow = alpha + static_cast<std::size_t>(y - mask.y) * alphaStride;
                const PixelRun across{parts[band].x0, parts[end - 1].x1};
                if (covering.empty())
                    runs.assign(1, across);
                else
                    runsOutside(covering, y, across, runs, inside);
                std::size_t r = 0;
                for (std::size_t i = band; i < end; ++i) {
                    while (r < runs.size() && runs[r].x1 <= parts[i].x0) ++r;
                    for (std::size_t k = r; k < runs.size() && runs[k].x0 < parts[i].x1; ++k) {
                        const int x0 = std::max(runs[k].x0, parts[i].x0), x1 = std::min(runs[k].x1, parts[i].x1);
                        paintThroughMask(pixel, maskRow + (x0 - mask.x), row + x0, x1 - x0);
                    }
                }
            }
        }
        cairo_surface_mark_dirty(surface.get());
    }

    // Strokes, then clears, the current path: the shape under its shadow, or
    // only the shadow. `known`, when given, is where the stroke can paint.
    void stroke(bool shape, std::optional<PixelBox> known = std::nullopt) {
        cairo_t* context = cr.get();
        if (!drawable() || state.lineWidth <= 0 || (!shape && !state.shadow)) {
            cairo_new_path(context);
            return;
        }
        applyStroke(context);
        if (!known) {
            double x0, y0, x1, y1;
            cairo_stroke_extents(context, &x0, &y0, &x1, &y1);
            known = deviceBox(x0, y0, x1, y1);
        }
        PathPtr path(cairo_copy_path(context));
        cairo_new_path(context);
        if (path->status != CAIRO_STATUS_SUCCESS || path->num_data == 0) return;
        auto paint = [&](cairo_t* target) {
            applyStroke(target);
            cairo_append_path(target, path.get());
            cairo_stroke(target);
        };
        const PixelBox extent = *known;
        if (shape)
            draw(extent, paint);
        else
            drawShadow(*state.shadow, extent, paint, MaskGrid::Coarse);
    }

    const FontSystem& fonts;
    Size size;
    double scale = 1;
    int pixelWidth = 0, pixelHeight = 0;
    SurfacePtr surface;
    CairoPtr cr;
    GState state;
    std::vector<GState> saved;
    // How many of `saved` the context `cr` holds a cairo_save for.
    int contextSaves = 0;
    // The box drawn on so far, in canvas pixels.
    PixelBox drawn;
    // Insides of the arcs about to be stroked opaque over the shadow being drawn.
    std::vector<ArcInside> covering;

    // Where `arcs`, as `Canvas::addArc` adds them, can paint when stroked, in canvas pixels.
    PixelBox strokedArcsBox(std::span<const Arc> arcs) const {
        PixelBox box{INFINITY, INFINITY, -INFINITY, -INFINITY};
        const double half = state.lineWidth / 2 * scale;
        for (const Arc& arc : arcs) {
            if (!drawableArc(arc)) continue;
            const Point c = clamped(arc.centre);
            const Sweep sweep = sweepOf(arc.startAngle, arc.endAngle);
            const ArcBox b = strokedArcBox(c.x * scale, c.y * scale, std::min(arc.radius, maxCoordinate()) * scale,
                                           sweep.start, sweep.sweep, half, cairoCap(state.lineCap));
            box = {std::min(box.x0, b.x0), std::min(box.y0, b.y0), std::max(box.x1, b.x1), std::max(box.y1, b.y1)};
        }
        return box;
    }

    void coverWith(std::span<const Arc> arcs) {
        if (state.clipped || state.lineWidth <= 0) return;
        for (const Arc& arc : arcs) {
            if (!drawableArc(arc)) continue;
            const Point c = clamped(arc.centre);
            const double r = std::min(arc.radius, maxCoordinate()) * scale, half = state.lineWidth / 2 * scale;
            // Two pixels in from each edge: well clear of its antialiasing.
            constexpr double kEdge = 2;
            if (r - half + kEdge >= r + half - kEdge) continue;
            const Sweep sweep = sweepOf(arc.startAngle, arc.endAngle);
            covering.emplace_back(c.x * scale, c.y * scale, r - half + kEdge, r + half - kEdge, sweep.start, sweep.sweep);
        }
    }

    // Whether `tile` lies wholly inside an arc about to be stroked over it.
    bool covered(const PixelBounds& tile) const {
        return std::any_of(covering.begin(), covering.end(), [&](const ArcInside& arc) { return arc.holds(tile); });
    }

    // Whether the bitmap's pixels have been cleared (it is made uninitialised).
    bool cleared = true;
};

Canvas::Canvas(Size points, double scale, const FontSystem& fonts)
    : impl_(std::make_unique<Impl>(points, scale, fonts)) {}


Canvas::~Canvas() = default;

Size Canvas::size() const { return impl_->size; }
double Canvas::scale() const { return impl_->scale; }

Canvas::SavedState::~SavedState() { canvas_->restoreGState(); }

Canvas::SavedState Canvas::saveGState() {
    impl_->saved.push_back(impl_->state);
    // Cairo keeps the clip: saved with the rest, so one guard ends both.
    cairo_save(impl_->cr.get());
    ++impl_->contextSaves;
    return SavedState(*this);
}

void Canvas::restoreGState() {
    if (impl_->saved.empty()) return;
    impl_->state = impl_->saved.back();
    impl_->saved.pop_back();
    // A canvas emptied by `makeImage` has a fresh context with nothing saved in it.
    if (impl_->contextSaves == 0) return;
    --impl_->contextSaves;
    cairo_restore(impl_->cr.get());
}

void Canvas::setLineWidth(double width) {
    if (!finite(width) || width < 0) return;
    impl_->state.lineWidth = std::min(width, kMaxLineWidthPixels / impl_->scale);
}

void Canvas::setLineCap(LineCap cap) { impl_->state.lineCap = cap; }
void Canvas::setStrokeColour(const Colour& colour) { impl_->state.strokeColour = colour.rgba(); }
void Canvas::setFillColour(const Colour& colour) { impl_->state.fillColour = colour.rgba(); }

void Canvas::setShadow(Size offset, double blur) {
    setShadowWithColour(offset, blur, Colour::blackColor().colorWithAlphaComponent(1.0 / 3));
}

void Canvas::setShadowWithColour(Size offset, double blur, const Colour& colour) {
    Rgba rgba = colour.rgba();
    if (!finite(offset.width) || !finite(offset.height) || !finite(blur) || rgba.a <= 0) {
        impl_->state.shadow.reset();
        return;
    }
    double limit = impl_->maxCoordinate();
    impl_->state.shadow = ShadowState{
        {std::clamp(offset.width, -limit, limit), std::clamp(offset.height, -limit, limit)}, std::max(0.0, blur), rgba};
}

void Canvas::setShadow(const std::optional<Shadow>& shadow) {
    if (shadow)
        setShadowWithColour(shadow->offset, shadow->blur, shadow->colour);
    else
        setNoShadow();
}

void Canvas::setNoShadow() { impl_->state.shadow.reset(); }

void Canvas::addArc(Point centre, double radius, double startAngle, double endAngle) {
    if (!drawableArc({centre, radius, startAngle, endAngle})) return;
    const Sweep arc = sweepOf(startAngle, endAngle);
    Point c = impl_->clamped(centre);
    double r = std::min(radius, impl_->maxCoordinate());
    cairo_arc(impl_->cr.get(), c.x, c.y, r, arc.start, arc.start + arc.sweep);
}

void Canvas::strokeArc(Point centre, double radius, double startAngle, double endAngle, const ArcStroke& stroke) {
    setShadow(stroke.shadow);
    setLineCap(stroke.cap);
    setLineWidth(stroke.width);
    setStrokeColour(stroke.colour);
    // With nothing else in the path, the arc alone says where the stroke paints.
    const bool alone = !cairo_has_current_point(impl_->cr.get());
    addArc(centre, radius, startAngle, endAngle);
    // Drawn straight over its own shadow: none is needed under an opaque stroke's inside.
    const Arc arc{centre, radius, startAngle, endAngle};
    if (impl_->state.strokeColour.a >= 1) impl_->coverWith({&arc, 1});
    if (alone)
        impl_->stroke(true, impl_->strokedArcsBox({&arc, 1}));
    else
        strokePath();
    impl_->covering.clear();
}

void Canvas::drawLayer(const Image& layer, Rect within) {
    Impl& impl = *impl_;
    if (!impl.drawable() || layer.pixelWidth() != impl.pixelWidth || layer.pixelHeight() != impl.pixelHeight) return;
    PixelBox box = impl.onCanvas(impl.deviceBox(within.x, within.y, within.x + within.width, within.y + within.height));
    box = {std::floor(box.x0), std::floor(box.y0), std::ceil(box.x1), std::ceil(box.y1)};
    if (box.empty()) return;
    cairo_t* cr = impl.cr.get();
    CairoSaved saved(cr);
    cairo_identity_matrix(cr);
    cairo_rectangle(cr, box.x0, box.y0, box.x1 - box.x0, box.y1 - box.y0);
    cairo_clip(cr);
    // On a canvas nothing has been drawn on yet, over is a copy: the cheapest.
    if (impl.drawn.empty()) cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    impl.clearAround(box);
    cairo_set_source_surface(cr, cairoSurface(layer), 0, 0);
    cairo_paint(cr);
    impl.markDrawn(box);
}

bool Canvas::drawLayerFrom(const std::function<std::optional<Rect>(PixelRows)>& read) {
    Impl& impl = *impl_;
    if (!impl.drawable() || !impl.drawn.empty()) return false;
    cairo_surface_t* surface = impl.surface.get();
    cairo_surface_flush(surface);
    unsigned char* data = cairo_image_surface_get_data(surface);
    if (!data) return false;
    std::optional<Rect> within = read({data, cairo_image_surface_get_stride(surface), impl.pixelWidth, impl.pixelHeight});
    cairo_surface_mark_dirty(surface);
    // A reader that gave up may have written part of the bitmap: the next drawing clears it all.
    impl.cleared = within.has_value();
    if (!within) return false;
    PixelBox box = impl.onCanvas(impl.deviceBox(within->x, within->y, within->x + within->width, within->y + within->height));
    impl.markDrawn({std::floor(box.x0), std::floor(box.y0), std::ceil(box.x1), std::ceil(box.y1)});
    return true;
}

Rect Canvas::drawnBounds() const {
    const PixelBox& d = impl_->drawn;
    if (d.empty()) return {};
    double s = impl_->scale;
    return {d.x0 / s, d.y0 / s, (d.x1 - d.x0) / s, (d.y1 - d.y0) / s};
}

void Canvas::moveTo(Point point) {
    if (!finite(point)) return;
    Point p = impl_->clamped(point);
    cairo_move_to(impl_->cr.get(), p.x, p.y);
}

void Canvas::addLineTo(Point point) {
    if (!finite(point)) return;
    Point p = impl_->clamped(point);
    cairo_line_to(impl_->cr.get(), p.x, p.y);
}

void Canvas::closePath() { cairo_close_path(impl_->cr.get()); }

void Canvas::strokePath() { impl_->stroke(true); }

void Canvas::strokeArcShadows(std::span<const Arc> arcs, const ArcStroke& stroke, bool opaqueArcsFollow) {
    setShadow(stroke.shadow);
    setLineCap(stroke.cap);
    setLineWidth(stroke.width);
    setStrokeColour(stroke.colour);
    cairo_t* cr = impl_->cr.get();
    cairo_new_path(cr);
    for (const Arc& arc : arcs) {
        // Each arc on its own: no line joins it to the one before.
        cairo_new_sub_path(cr);
        addArc(arc.centre, arc.radius, arc.startAngle, arc.endAngle);
    }
    if (opaqueArcsFollow) impl_->coverWith(arcs);
    impl_->stroke(false, impl_->strokedArcsBox(arcs));
    impl_->covering.clear();
}

void Canvas::fillPath() {
    cairo_t* cr = impl_->cr.get();
    if (!impl_->drawable()) {
        cairo_new_path(cr);
        return;
    }
    double x0, y0, x1, y1;
    cairo_fill_extents(cr, &x0, &y0, &x1, &y1);
    PathPtr path(cairo_copy_path(cr));
    cairo_new_path(cr);
    if (path->status != CAIRO_STATUS_SUCCESS || path->num_data == 0) return;
    impl_->draw(impl_->deviceBox(x0, y0, x1, y1), [&](cairo_t* target) {
        setSource(target, impl_->state.fillColour);
        cairo_set_fill_rule(target, CAIRO_FILL_RULE_WINDING);
        cairo_append_path(target, path.get());
        cairo_fill(target);
    });
}

void Canvas::drawImage(const ImagePtr& image, Rect rect) {
    if (!image || !impl_->drawable() || image->pixelWidth() == 0 || image->pixelHeight() == 0) return;
    if (!finite(rect.x) || !finite(rect.y) || !finite(rect.width) || !finite(rect.height)) return;
    // A rectangle of negative width or height is the same rectangle measured from its other corner.
    if (rect.width < 0) rect = {rect.x + rect.width, rect.y, -rect.width, rect.height};
    if (rect.height < 0) rect = {rect.x, rect.y + rect.height, rect.width, -rect.height};
    Point origin = impl_->clamped({rect.x, rect.y});
    double limit = impl_->maxCoordinate();
    Rect r{origin.x, origin.y, std::min(rect.width, limit), std::min(rect.height, limit)};
    if (r.width <= 0 || r.height <= 0) return;
    if (impl_->paintImageOnPixels(*image, r)) return;
    double sx = r.width / image->pixelWidth(), sy = r.height / image->pixelHeight();
    impl_->draw(impl_->deviceBox(r.x, r.y, r.x + r.width, r.y + r.height), [&](cairo_t* target) {
        CairoSaved saved(target);
        cairo_translate(target, r.x, r.y);
        cairo_scale(target, sx, sy);
        cairo_set_source_surface(target, cairoSurface(*image), 0, 0);
        cairo_pattern_t* source = cairo_get_source(target);
        // Pad keeps the edges sharp; a scaled image is filtered, not sampled.
        cairo_pattern_set_extend(source, CAIRO_EXTEND_PAD);
        cairo_pattern_set_filter(source, CAIRO_FILTER_GOOD);
        cairo_rectangle(target, 0, 0, image->pixelWidth(), image->pixelHeight());
        cairo_fill(target);
    });
}

Size Canvas::sizeWithAttributes(std::string_view text, const TextAttributes& attributes) const {
    GObjectPtr<PangoLayout> layout = layoutInPixels(impl_->fonts, attributes.font, impl_->scale);
    pango_layout_set_text(layout.get(), validText(text).get(), -1);
    PangoRectangle logical;
    pango_layout_get_extents(layout.get(), nullptr, &logical);
    double width = static_cast<double>(logical.width) / PANGO_SCALE / impl_->scale;
    return {width, impl_->fonts.lineHeight(attributes.font)};
}

void Canvas::drawAtPoint(std::string_view text, Point point, const TextAttributes& attributes) {
    if (!impl_->drawable() || !finite(point) || text.empty()) return;
    Point p = impl_->clamped(point);
    double scale = impl_->scale;
    // Laid out at the final pixel size: bitmap glyphs are scaled, not redrawn.
    GObjectPtr<PangoLayout> layout = layoutInPixels(impl_->fonts, attributes.font, scale);
    pango_layout_set_text(layout.get(), validText(text).get(), -1);
    PangoRectangle ink, logical;
    pango_layout_get_pixel_extents(layout.get(), &ink, &logical);
    Rgba background = attributes.background.rgba();
    Rgba foreground = attributes.foreground.rgba();
    PixelBox extent = layoutExtent(p, scale, ink, logical);
    impl_->draw(extent, [&](cairo_t* target) {
        CairoSaved saved(target);
        // The layout is in canvas pixels.
        cairo_translate(target, p.x, p.y);
        cairo_scale(target, 1 / scale, 1 / scale);
        if (background.a > 0) {
            setSource(target, background);
            cairo_rectangle(target, logical.x, logical.y, logical.width, logical.height);
            cairo_fill(target);
        }
        setSource(target, foreground);
        cairo_move_to(target, 0, 0);
        pango_cairo_show_layout(target, layout.get());
        // The saved state does not cover the path: leave no current point behind.
        cairo_new_path(target);
    }, MaskGrid::Pixels);
}

ImagePtr Canvas::makeImage() {
    Impl& impl = *impl_;
    impl.clear();
    cairo_surface_flush(impl.surface.get());
    ImagePtr image = adoptSurface(std::move(impl.surface), impl.size, impl.scale);
    // The canvas is left empty: drawing after this point goes nowhere.
    impl.surface.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 0, 0));
    impl.cr.reset(cairo_create(impl.surface.get()));
    cairo_scale(impl.cr.get(), impl.scale, impl.scale);
    impl.pixelWidth = impl.pixelHeight = 0;
    impl.size = {};
    impl.contextSaves = 0;
    impl.cleared = true;
    impl.drawn = {};
    return image;
}

ImagePtr Canvas::drawLater(Size points, double scale, std::function<ImagePtr()> draw) {
    const CanvasGeometry geometry = canvasGeometry(points, scale);
    return Image::onDemand(geometry.size, geometry.scale, geometry.pixelWidth, geometry.pixelHeight, std::move(draw));
}

void Canvas::addRoundedRect(Rect rect, double radius) {
    if (!finite(rect.x) || !finite(rect.y) || !finite(rect.width) || !finite(rect.height) || !finite(radius)) return;
    if (rect.width <= 0 || rect.height <= 0) return;
    Point origin = impl_->clamped({rect.x, rect.y});
    double limit = impl_->maxCoordinate();
    double x = origin.x, y = origin.y, w = std::min(rect.width, limit), h = std::min(rect.height, limit);
    double r = std::clamp(radius, 0.0, std::min(w, h) / 2);
    cairo_t* cr = impl_->cr.get();
    cairo_new_sub_path(cr);
    if (r <= 0) {
        cairo_rectangle(cr, x, y, w, h);
        return;
    }
    cairo_arc(cr, x + w - r, y + r, r, -M_PI / 2, 0);
    cairo_arc(cr, x + w - r, y + h - r, r, 0, M_PI / 2);
    cairo_arc(cr, x + r, y + h - r, r, M_PI / 2, M_PI);
    cairo_arc(cr, x + r, y + r, r, M_PI, 3 * M_PI / 2);
    cairo_close_path(cr);
}

void Canvas::clipToPath() {
    cairo_t* cr = impl_->cr.get();
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_WINDING);
    cairo_clip(cr);
    impl_->state.clipped = true;
}

void Canvas::drawLinearGradient(const std::vector<Colour>& colours, Point start, Point end) {
    if (!impl_->drawable() || colours.empty() || !finite(start) || !finite(end)) return;
    Point a = impl_->clamped(start), b = impl_->clamped(end);
    PatternPtr pattern(cairo_pattern_create_linear(a.x, a.y, b.x, b.y));
    for (std::size_t i = 0; i < colours.size(); ++i) {
        Rgba c = colours[i].rgba();
        double offset = colours.size() == 1 ? 0 : static_cast<double>(i) / (colours.size() - 1);
        cairo_pattern_add_color_stop_rgba(pattern.get(), offset, c.r, c.g, c.b, c.a);
    }
    cairo_t* cr = impl_->cr.get();
    // An opaque gradient over a clip of whole pixels replaces them all: on a
    // canvas not cleared yet only the pixels around it need clearing.
    std::optional<PixelBox> replaced;
    if (std::all_of(colours.begin(), colours.end(), [](const Colour& c) { return c.rgba().a >= 1; }))
        replaced = impl_->wholePixelClip();
    if (replaced) impl_->clearAround(*replaced);
    else impl_->clear();
    cairo_matrix_t matrix;
    cairo_get_matrix(cr, &matrix);
    if (replaced && a.x == b.x && matrix.xy == 0 && matrix.yx == 0) {
        impl_->paintRowsAlike(*replaced, pattern.get());
    } else {
        CairoSaved saved(cr);
        cairo_set_source(cr, pattern.get());
        cairo_paint(cr);
    }
    double x0, y0, x1, y1;
    cairo_clip_extents(cr, &x0, &y0, &x1, &y1);
    impl_->markDrawn(impl_->deviceBox(std::floor(x0), std::floor(y0), std::ceil(x1), std::ceil(y1)));
}

namespace {

// Wider blocks than this are laid out as this wide: Pango widths are ints of 1/1024 pixel.
constexpr double kMaxBlockPixels = 1 << 20;

// A block wrapped at `width` points in at most `lines` lines (0: any), laid out in device pixels.
GObjectPtr<PangoLayout> blockLayout(const FontSystem& fonts, double scale, std::string_view text, double width,
                                    int lines, const TextAttributes& attributes) {
    GObjectPtr<PangoLayout> layout = layoutInPixels(fonts, attributes.font, scale);
    pango_layout_set_text(layout.get(), validText(text).get(), -1);
    double pixels = finite(width) ? std::clamp(width * scale, 0.0, kMaxBlockPixels) : kMaxBlockPixels;
    pango_layout_set_width(layout.get(), static_cast<int>(pixels * PANGO_SCALE));
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    if (lines > 0) {
        pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
        pango_layout_set_height(layout.get(), -lines);
    }
    return layout;
}

}  // namespace

struct Canvas::TextBlock::Layout {
    GObjectPtr<PangoLayout> layout;
    Rgba foreground;
};

Canvas::TextBlock Canvas::layOutTextBlock(std::string_view text, double width, int lines, TextAlignment alignment,
                                          const TextAttributes& attributes) const {
    GObjectPtr<PangoLayout> layout = blockLayout(impl_->fonts, impl_->scale, text, width, lines, attributes);
    pango_layout_set_alignment(layout.get(), alignment == TextAlignment::Centre  ? PANGO_ALIGN_CENTER
                                             : alignment == TextAlignment::Right ? PANGO_ALIGN_RIGHT
                                                                                 : PANGO_ALIGN_LEFT);
    PangoRectangle logical;
    pango_layout_get_extents(layout.get(), nullptr, &logical);
    double scale = impl_->scale;
    TextBlock block;
    block.size = {static_cast<double>(logical.width) / PANGO_SCALE / scale,
                  static_cast<double>(logical.height) / PANGO_SCALE / scale};
    block.truncated = pango_layout_is_ellipsized(layout.get()) != 0;
    block.lines = pango_layout_get_line_count(layout.get());
    if (!text.empty()) block.layout_ = std::make_shared<const TextBlock::Layout>(TextBlock::Layout{std::move(layout), attributes.foreground.rgba()});
    return block;
}

void Canvas::drawTextBlock(const TextBlock& block, Rect rect) {
    if (!impl_->drawable() || !block.layout_ || !finite(rect.x) || !finite(rect.y) || !finite(rect.height)) return;
    double scale = impl_->scale;
    PangoLayout* layout = block.layout_->layout.get();
    PangoRectangle ink, logical;
    pango_layout_get_pixel_extents(layout, &ink, &logical);
    Point p = impl_->clamped({rect.x, rect.y + (rect.height - logical.height / scale) / 2});
    Rgba foreground = block.layout_->foreground;
    PixelBox extent = layoutExtent(p, scale, ink, logical);
    impl_->draw(extent, [&](cairo_t* target) {
        CairoSaved saved(target);
        // The layout is in canvas pixels.
        cairo_translate(target, p.x, p.y);
        cairo_scale(target, 1 / scale, 1 / scale);
        setSource(target, foreground);
        cairo_move_to(target, 0, 0);
        pango_cairo_show_layout(target, layout);
        // The saved state does not cover the path: leave no current point behind.
        cairo_new_path(target);
    }, MaskGrid::Pixels);
}

}  // namespace velmorant::platform
