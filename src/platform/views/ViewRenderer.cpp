#include "platform/views/ViewRenderer.h"

#include "platform/text/detail/IcuStrings.h"
#include "platform/graphics/Image.h"
#include "platform/graphics/PngWriter.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <tuple>
#include <utility>

#include <unicode/uchar.h>

namespace velmorant::platform {
namespace {

// A label that may take any number of lines still takes no more than its frame holds.
constexpr int kMostLines = 8;
// A block this much taller than its frame still fits: its line spacing is not ink.
constexpr double kHeightTolerance = 0.5;

// Rows of the card drawn and encoded at a time: a band of a 390-point card at
// scale 3 takes 600 KB, and one is drawn while the one before is encoded,
// instead of six megabytes for the whole card. (Bands of 256 rows cost 1.5 MB
// more at the peak and 600 more page faults per card, for 1 % fewer instructions.)
constexpr int kBandRows = 128;

// Halvings of the width range when balancing lines: to a fraction of a point.
constexpr int kBalancingSteps = 8;

// Pixels along one side of a canvas of `points` at `scale`, as the canvas counts them.
int canvasPixels(double points, double scale) {
    double pixels = std::ceil(points * scale);
    if (!std::isfinite(pixels) || pixels <= 0) return 0;
    return static_cast<int>(std::min(pixels, static_cast<double>(Canvas::kMaxPixels)));
}

// Labels without a colour of their own draw in the dark theme's label colour.
Colour defaultTextColour() { return Colour::whiteColor(); }

// A rect's edges moved to whole device pixels, so pictures are not resampled.
Rect onPixelGrid(Rect r, double scale) {
    double x0 = std::round(r.x * scale) / scale, y0 = std::round(r.y * scale) / scale;
    return {x0, y0, std::round(r.width * scale) / scale, std::round(r.height * scale) / scale};
}

// Whether every edge of `r` lies on a device pixel's edge, so that nothing drawn
// inside it covers a pixel partly.
bool onWholePixels(Rect r, double scale) {
    auto whole = [&](double v) { return std::abs(v * scale - std::round(v * scale)) < 1e-6; };
    return whole(r.x) && whole(r.y) && whole(r.x + r.width) && whole(r.y + r.height);
}

// The text as the phone shows it: its fonts carry no plain glyphs for the
// pictographs beyond the basic plane (🛏), so those always appear in colour.
// Ours do, so such a pictograph is asked for in its emoji presentation.
std::string withColourPictographs(std::string_view text) {
    icu::UnicodeString in = fromUtf8(text), out;
    for (int32_t i = 0; i < in.length();) {
        UChar32 c = in.char32At(i);
        i += U16_LENGTH(c);
        out.append(c);
        bool textByDefault = c > 0xFFFF && u_hasBinaryProperty(c, UCHAR_EXTENDED_PICTOGRAPHIC) &&
                             !u_hasBinaryProperty(c, UCHAR_EMOJI_PRESENTATION);
        UChar32 next = i < in.length() ? in.char32At(i) : 0;
        if (textByDefault && next != 0xFE0E && next != 0xFE0F) out.append(static_cast<UChar32>(0xFE0F));
    }
    return toUtf8(out);
}

// The narrowest part of `frame` that holds a wrapped text in as many lines as
// the whole width does (`full`, the text laid out across it), placed by the
// alignment, and the text laid out across it: lines of even length read better
// than a long line over a lone last word.
std::pair<Rect, Canvas::TextBlock> balanced(const Canvas& canvas, std::string_view text, Rect frame,
                                            Canvas::TextBlock full, int lines, TextAlignment alignment,
                                            const TextAttributes& attributes) {
    if (full.truncated || full.lines < 2) return {frame, std::move(full)};
    const double height = full.size.height;
    double narrow = frame.width / 2, wide = frame.width;
    Canvas::TextBlock widest = std::move(full);
    for (int step = 0; step < kBalancingSteps; ++step) {
        double middle = (narrow + wide) / 2;
        Canvas::TextBlock trial = canvas.layOutTextBlock(text, middle, lines, alignment, attributes);
        bool same = !trial.truncated && trial.size.height <= height + kHeightTolerance;
        (same ? wide : narrow) = middle;
        if (same) widest = std::move(trial);
    }
    double spare = frame.width - wide;
    double shift = alignment == TextAlignment::Centre ? spare / 2 : alignment == TextAlignment::Right ? spare : 0;
    return {{frame.x + shift, frame.y, wide, frame.height}, std::move(widest)};
}

}  // namespace

void ViewRenderer::draw(Canvas& canvas, Point origin) const {
    Size band = canvas.size();
    for (const auto& view : views_.views()) {
        if (!views_.isShown(*view)) continue;
        Rect frame = layout_.frameOf(view->name());
        frame.x -= origin.x;
        frame.y -= origin.y;
        // Everything a view draws stays inside its frame: one outside the band is skipped.
        if (frame.width <= 0 || frame.height <= 0 || frame.y >= band.height || frame.y + frame.height <= 0 ||
            frame.x >= band.width || frame.x + frame.width <= 0)
            continue;
        drawView(canvas, *view, frame);
    }
}

void ViewRenderer::drawView(Canvas& canvas, const View& view, Rect frame) const {
    drawBackground(canvas, view, frame);
    if (view.kind() == ViewKind::ImageView) {
        if (ImagePtr image = views_.shownImage(view)) drawImage(canvas, view, image, frame);
    }
    if (view.text() && !view.text()->empty()) drawText(canvas, view, frame);
}

void ViewRenderer::layOutTexts(const Canvas& canvas) const {
    for (const auto& view : views_.views()) {
        if (!views_.isShown(*view) || !view->text() || view->text()->empty()) continue;
        Rect frame = layout_.frameOf(view->name());
        if (frame.width > 0 && frame.height > 0) fitted(canvas, *view, frame);
    }
}

bool ViewRenderer::coversCard() const {
    for (const auto& view : views_.views()) {
        if (!view->parent().empty() || !views_.isShown(*view)) continue;
        if (view->backgroundColor() && view->backgroundColor()->alpha() >= 1 && view->layer().cornerRadius() <= 0)
            return true;
    }
    return false;
}

void ViewRenderer::drawBackground(Canvas& canvas, const View& view, Rect frame) const {
    const auto& sublayers = view.layer().sublayers();
    bool hasGradient = std::any_of(sublayers.begin(), sublayers.end(), [](const auto& l) { return l->colors().size() > 1; });
    bool hasColour = view.backgroundColor() && view.backgroundColor()->alpha() > 0;
    if (!hasColour && !hasGradient) return;
    // An opaque gradient replaces every pixel of a square-cornered view on
    // whole pixels: the colour under it would never be seen.
    bool hidden = view.layer().cornerRadius() <= 0 && onWholePixels(frame, canvas.scale()) &&
                  std::any_of(sublayers.begin(), sublayers.end(), [](const auto& l) {
                      return l->colors().size() > 1 && std::all_of(l->colors().begin(), l->colors().end(),
                                                                   [](const Colour& c) { return c.alpha() >= 1; });
                  });
    canvas.addRoundedRect(frame, view.layer().cornerRadius());
    auto saved = canvas.saveGState();
    canvas.clipToPath();
    if (hasColour && !hidden) {
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

void ViewRenderer::drawImage(Canvas& canvas, const View& view, const ImagePtr& image, Rect frame) const {
    Size natural = image->size();
    if (!(natural.width > 0 && natural.height > 0)) return;
    // Fitted inside the frame, never enlarged, centred.
    double fit = std::min({1.0, frame.width / natural.width, frame.height / natural.height});
    double w = natural.width * fit, h = natural.height * fit;
    Rect r = onPixelGrid({frame.x + (frame.width - w) / 2, frame.y + (frame.height - h) / 2, w, h}, canvas.scale());
    canvas.addRoundedRect(frame, view.layer().cornerRadius());
    auto saved = canvas.saveGState();
    canvas.clipToPath();
    canvas.drawImage(image, r);
}

const ViewRenderer::FittedText& ViewRenderer::fitted(const Canvas& canvas, const View& view, Rect frame) const {
    if (auto it = fittedTexts_.find(&view); it != fittedTexts_.end()) return it->second;
    const std::string text = withColourPictographs(*view.text());
    const TextFitting& fitting = view.textFitting();
    TextAttributes attributes{view.font().value_or(Font::systemFontOfSize(17)),
                              view.textColor().value_or(defaultTextColour())};
    // The font as given, then one step smaller; whatever still does not fit is
    // cut with an ellipsis at the smaller size, in as many lines as the frame holds.
    const Font given = attributes.font;
    const TextAlignment alignment = view.alignment();
    int lines = 1;
    Canvas::TextBlock block;
    for (double factor : {1.0, fitting.minimumScaleFactor}) {
        attributes.font.size = given.size * factor;
        lines = fitting.numberOfLines == 0 ? kMostLines : fitting.numberOfLines;
        block = canvas.layOutTextBlock(text, frame.width, lines, alignment, attributes);
        while (lines > 1 && block.size.height > frame.height + kHeightTolerance) {
            // Allowed only the lines it takes, the text is laid out the same: not measured again.
            if (!block.truncated) lines = std::clamp(block.lines, 1, lines);
            if (lines == 1) break;
            --lines;
            block = canvas.layOutTextBlock(text, frame.width, lines, alignment, attributes);
        }
        if (!block.truncated) break;
    }
    Rect atOrigin{0, 0, frame.width, frame.height};
    FittedText fit{atOrigin, std::move(block)};
    if (lines > 1) std::tie(fit.rect, fit.block) = balanced(canvas, text, atOrigin, std::move(fit.block), lines, alignment, attributes);
    return fittedTexts_.emplace(&view, std::move(fit)).first->second;
}

void ViewRenderer::drawText(Canvas& canvas, const View& view, Rect frame) const {
    // Laid out once for the card: a label across two bands is neither measured nor laid out again.
    const FittedText& fit = fitted(canvas, view, frame);
    Rect block{frame.x + fit.rect.x, frame.y + fit.rect.y, fit.rect.width, fit.rect.height};
    canvas.addRoundedRect(frame, 0);
    auto saved = canvas.saveGState();
    canvas.clipToPath();
    canvas.drawTextBlock(fit.block, block);
}

ImagePtr renderCard(const ViewTree& views, Size size, double scale, const FontSystem& fonts) {
    Canvas canvas(size, scale, fonts);
    ViewLayout layout(views, size);
    ViewRenderer(views, layout).draw(canvas);
    return canvas.makeImage();
}

namespace {

// Draws the card a band of rows at a time into `encoder`, which converts and
// compresses each band before the next is drawn: one band is held at a time.
// Compressing a card costs about 1.5 ms, a fraction of drawing it; a helper
// thread per band cost about 1 ms more CPU time per card (BM_cardPng) to hide
// at most that, and held a second band (`show --png` peaked 1.5 MB higher); a
// thread for the whole card, handed each band in turn, made `show --png` 1-2 ms
// slower than none. The encoder is finished by the caller; false when `progress` stopped the card.
bool drawCardInto(PngEncoder& encoder, const ViewRenderer& renderer, Size size, double scale, const FontSystem& fonts,
                  int height, const CardProgress& progress) {
    using Clock = std::chrono::steady_clock;
    for (int top = 0; top < height; top += kBandRows) {
        int rows = std::min(kBandRows, height - top);
        auto start = Clock::now();
        Canvas band({size.width, rows / scale}, scale, fonts);
        // Every label is laid out before the first picture is read: one drawn on
        // another thread meanwhile (`show`) is then waited for as late as can be.
        if (top == 0) renderer.layOutTexts(band);
        renderer.draw(band, {0, top / scale});
        ImagePtr image = band.makeImage();
        auto drawn = Clock::now();
        if (!image || !encoder.append(*image, rows)) return true;
        if (progress) {
            std::chrono::duration<double> drawing = drawn - start, encoding = Clock::now() - drawn;
            if (!progress({top + rows, height, drawing.count(), encoding.count()})) return false;
        }
    }
    return true;
}

bool drawCardPng(const ViewTree& views, Size size, double scale, const FontSystem& fonts,
                 const std::filesystem::path& path, const std::string& description, std::string* error,
                 std::string* bytes, const CardProgress& progress = {}) {
    ViewLayout layout(views, size);
    ViewRenderer renderer(views, layout);
    int width = canvasPixels(size.width, scale), height = canvasPixels(size.height, scale);
    if (width == 0 || height == 0) width = height = 0;
    PngEncoder encoder(path, width, height, !renderer.coversCard(), {.description = description});
    if (!drawCardInto(encoder, renderer, size, scale, fonts, height, progress)) {
        if (error) *error = "the card was stopped while it was drawn";
        return false;
    }
    if (encoder.finish()) {
        // A copy, of exactly the picture's size: the encoder's own string grew by doubling, and
        // a result cache bounded by bodies' sizes would hold up to twice that.
        if (bytes) *bytes = encoder.bytes();
        return true;
    }
    if (error) *error = encoder.error();
    return false;
}

}  // namespace

bool writeCardPng(const ViewTree& views, Size size, double scale, const FontSystem& fonts,
                  const std::filesystem::path& path, const std::string& description, std::string* error) {
    return drawCardPng(views, size, scale, fonts, path, description, error, nullptr);
}

std::string encodeCardPng(const ViewTree& views, Size size, double scale, const FontSystem& fonts,
                          const std::string& description, std::string* error, const CardProgress& progress) {
    std::string bytes;
    drawCardPng(views, size, scale, fonts, {}, description, error, &bytes, progress);
    return bytes;
}

}  // namespace velmorant::platform
