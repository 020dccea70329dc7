#include "platform/graphics/Canvas.h"
#include "platform/graphics/FontSystem.h"
#include "platform/graphics/detail/ImageSurface.h"
#include "platform/views/ViewLayout.h"
#include "platform/views/ViewRenderer.h"
#include "platform/views/ViewTree.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>
#include <string>

using namespace velmorant::platform;

namespace {

const FontSystem& fonts() {
    static const FontSystem system(std::filesystem::path(VELMORANT_TEST_RESOURCE_DIR) / "fonts" / "fonts.conf");
    return system;
}

Autoresizing mask(std::string_view parts) {
    auto has = [&](char part) { return parts.find(part) != std::string_view::npos; };
    return {has('L'), has('W'), has('R'), has('T'), has('H'), has('B')};
}

TEST(Autoresizing, SharesTheParentsChangeEquallyAmongTheFlexibleParts) {
    // A 100 x 40 view at (50, 30) in a 200 x 100 parent that grows to 260 x 130.
    const std::pair<const char*, Rect> cases[] = {
        {"", {50, 30, 100, 40}},     {"W", {50, 30, 160, 40}},    {"L", {110, 30, 100, 40}},
        {"R", {50, 30, 100, 40}},    {"LR", {80, 30, 100, 40}},   {"LW", {80, 30, 130, 40}},
        {"WR", {50, 30, 130, 40}},   {"LWR", {70, 30, 120, 40}},  {"H", {50, 30, 100, 70}},
        {"TB", {50, 45, 100, 40}},   {"LRTB", {80, 45, 100, 40}},
    };
    for (const auto& [parts, expected] : cases)
        EXPECT_EQ(autoresizedFrame({50, 30, 100, 40}, mask(parts), {200, 100}, {260, 130}), expected) << parts;
    // Shrinking never makes a negative width.
    EXPECT_EQ(autoresizedFrame({10, 0, 20, 10}, mask("W"), {200, 100}, {100, 100}).width, 0);
}

// A card with one panel: a stretching panel, a right-hand value and a centred picture.
constexpr const char* kCard = R"({"views": [
  {"name": "card", "kind": "container", "frame": [0, 0, 390, 180], "backgroundColour": {"h": 0.6, "s": 1, "b": 0.3}},
  {"name": "panel", "kind": "container", "parent": "card", "frame": [12, 20, 366, 100], "cornerRadius": 20,
   "autoresizing": ["flexibleWidth"], "backgroundColour": {"h": 0, "s": 1, "b": 0.6}},
  {"name": "dot", "kind": "indicator", "parent": "panel", "frame": [10, 10, 20, 20], "cornerRadius": 10,
   "backgroundColour": {"name": "systemGreen"}},
  {"name": "title", "kind": "label", "parent": "panel", "frame": [40, 8, 150, 24], "text": "Hello",
   "font": {"size": 18, "weight": "bold"}, "textColour": {"name": "white"}},
  {"name": "value", "kind": "label", "parent": "panel", "frame": [200, 8, 150, 24], "text": "Right", "font": {"size": 18},
   "autoresizing": ["flexibleLeftMargin"], "alignment": "right", "textColour": {"name": "white"}},
  {"name": "long", "kind": "label", "parent": "panel", "frame": [40, 50, 100, 24], "minimumScaleFactor": 0.8,
   "text": "A very long text that cannot possibly fit", "font": {"size": 18}, "textColour": {"name": "white"}},
  {"name": "picture", "kind": "imageView", "parent": "card", "frame": [145, 125, 100, 50],
   "autoresizing": ["flexibleLeftMargin", "flexibleRightMargin"]},
  {"name": "gone", "kind": "container", "parent": "card", "frame": [0, 125, 100, 50], "hidden": true},
  {"name": "ghost", "kind": "label", "parent": "gone", "frame": [0, 0, 100, 50], "text": "Hidden", "textColour": {"name": "white"}}
]})";

// A square picture of one colour, `side` points at scale 3.
ImagePtr swatch(double side, const Colour& colour) {
    Canvas canvas({side, side}, 3, fonts());
    canvas.addRoundedRect({0, 0, side, side}, 0), canvas.setFillColour(colour), canvas.fillPath();
    return canvas.makeImage();
}

struct Rendered {
    ViewTree tree = ViewTree::parseInterface(kCard);
    ViewLayout layout{tree, {}};
    ImagePtr card;
    Rect frameOf(const char* name) const { return layout.frameOf(name); }

    explicit Rendered(double width) {
        tree.view("picture")->setImage(swatch(40, Colour::colorWithHue(0.15, 1, 1, 1)));
        layout = ViewLayout(tree, {width, 180});
        card = renderCard(tree, {width, 180}, 3, fonts());
    }
};

bool near(const Rgba& a, const Rgba& b) {
    return std::max({std::fabs(a.r - b.r), std::fabs(a.g - b.g), std::fabs(a.b - b.b), std::fabs(a.a - b.a)}) <= 0.02;
}

// Pixels in `r` (points) light enough to be the white text.
int whitePixels(const Image& image, Rect r) {
    int count = 0;
    for (double y = r.y + 1 / 6.0; y < r.y + r.height; y += 1 / 3.0)
        for (double x = r.x + 1 / 6.0; x < r.x + r.width; x += 1 / 3.0) {
            Rgba p = image.pixelAt({x, y});
            count += std::min({p.r, p.g, p.b}) > 0.6;
        }
    return count;
}

TEST(ViewRenderer, LaysOutAndDrawsEachShownViewInItsFrameAtAnyWidth) {
    const Rgba background = Colour::colorWithHue(0.6, 1, 0.3, 1).rgba(), panel = Colour::colorWithHue(0, 1, 0.6, 1).rgba();
    const Rgba yellow = Colour::colorWithHue(0.15, 1, 1, 1).rgba();
    for (double width : {300.0, 390.0, 600.0}) {
        SCOPED_TRACE(width);
        Rendered r(width);
        const Image& card = *r.card;
        // Top-level views fill the card; children follow their marks.
        Rect p = r.frameOf("panel"), dot = r.frameOf("dot"), pic = r.frameOf("picture");
        EXPECT_EQ(p, (Rect{12, 20, width - 24, 100}));
        EXPECT_EQ(r.frameOf("value").x + r.frameOf("value").width, width - 12 - 16);
        EXPECT_EQ(pic.x + 50, width / 2);
        EXPECT_EQ(dot, (Rect{22, 30, 20, 20}));
        // Rounded corners show the card through them; the panel's edges are straight between. The indicator
        // in its colour, round. The picture at its own size (not enlarged), centred in its frame.
        const std::pair<Point, Rgba> probes[] = {
            {{p.x + 1, p.y + 1}, background},         {{p.x + p.width - 1, p.y + p.height - 1}, background},
            {{p.x + p.width / 2, p.y + 1}, panel},    {{p.x + 1, p.y + p.height / 2}, panel},
            {{dot.x + 10, dot.y + 10}, Colour::systemGreenColor().rgba()}, {{dot.x + 1, dot.y + 1}, panel},
            {{pic.x + 50, pic.y + 25}, yellow},       {{pic.x + 30.5, pic.y + 25}, yellow},
            {{pic.x + 29.5, pic.y + 25}, background},
        };
        for (auto [at, colour] : probes) EXPECT_TRUE(near(card.pixelAt(at), colour)) << at.x << "," << at.y;
        // Nothing of the texts outside their frames; a hidden container hides its children.
        Rect longText = r.frameOf("long");
        EXPECT_EQ(whitePixels(card, {longText.x + longText.width, longText.y - 4, 60, longText.height + 8}), 0);
        EXPECT_EQ(whitePixels(card, {p.x, p.y + 76, p.width, 24}), 0);
        EXPECT_EQ(whitePixels(card, r.frameOf("gone")), 0);
    }
}

TEST(ViewRenderer, FitsALongTextAStepSmallerThenCutsItWithAnEllipsis) {
    Rendered r(390);
    Rect frame = r.frameOf("long");
    // The cut text still reaches close to the end of its frame: it was not
    // shrunk away, and the ellipsis stands where the rest would be.
    int tail = whitePixels(*r.card, {frame.x + frame.width - 12, frame.y, 12, frame.height});
    EXPECT_GT(tail, 5);
    // ...and no glyph is cut at the frame's edge.
    EXPECT_EQ(whitePixels(*r.card, {frame.x + frame.width - 2.0 / 3, frame.y, 2.0 / 3, frame.height}), 0);
    // A short text in the same frame is left at its given size: its first
    // letter's ink is as tall as an 18-point capital.
    ViewTree tree = ViewTree::parseInterface(kCard);
    tree.view("long")->setText("H");
    ImagePtr card = renderCard(tree, {390, 180}, 3, fonts());
    int rows = 0;
    for (double y = frame.y; y < frame.y + frame.height; y += 1.0 / 3)
        rows += whitePixels(*card, {frame.x, y, 20, 1.0 / 3}) > 0;
    EXPECT_NEAR(rows / 3.0, 13, 1.5);
}

// A card of one label, `lines` as described, `height` points tall, its text centred.
ImagePtr labelCard(int lines, double height, const std::string& text) {
    ViewTree tree = ViewTree::parseInterface(
        R"({"views": [{"name": "card", "kind": "container", "frame": [0, 0, 200, 120], "backgroundColour": {"name": "black"}},
          {"name": "label", "kind": "label", "parent": "card", "frame": [10, 10, 150, )" + std::to_string(height) +
        R"(], "alignment": "centre", "font": {"size": 18}, "textColour": {"name": "white"}, "lines": )" +
        std::to_string(lines) + R"(, "text": ")" + text + R"("}]})");
    return renderCard(tree, {200, 120}, 3, fonts());
}

bool samePixels(const Image& a, const Image& b) {
    cairo_surface_t *x = cairoSurface(a), *y = cairoSurface(b);
    const int stride = cairo_image_surface_get_stride(x);
    return a.pixelWidth() == b.pixelWidth() && a.pixelHeight() == b.pixelHeight() &&
           std::memcmp(cairo_image_surface_get_data(x), cairo_image_surface_get_data(y),
                       std::size_t(stride) * a.pixelHeight()) == 0;
}

TEST(ViewRenderer, ALabelOfAnyNumberOfLinesTakesAsManyAsItsFrameHolds) {
    const std::string text = "A text long enough to wrap into four lines of this narrow label";
    Canvas canvas({200, 120}, 3, fonts());
    const TextAttributes attributes{Font::systemFontOfSize(18), Colour::whiteColor()};
    auto heightOf = [&](int lines) { return canvas.layOutTextBlock(text, 150, lines, TextAlignment::Centre, attributes).size.height; };
    ASSERT_EQ(canvas.layOutTextBlock(text, 150, 0, TextAlignment::Centre, attributes).lines, 4);
    // Frames holding one line (or less), two, three, all four and more: as if that many lines were asked for.
    const std::pair<double, int> frames[] = {{5, 1}, {heightOf(1), 1}, {heightOf(2), 2}, {heightOf(3) + 0.4, 3},
                                             {heightOf(4), 4}, {100, 4}};
    for (auto [height, lines] : frames)
        EXPECT_TRUE(samePixels(*labelCard(0, height, text), *labelCard(lines, height, text))) << height << " " << lines;
    // A text of one line in a frame too short for it stays whole on that line.
    EXPECT_TRUE(samePixels(*labelCard(0, 5, "Short"), *labelCard(1, 5, "Short")));
}

// The pixels whose colour differs between an opaque card written to `file` and `whole`; -1 when the sizes differ.
int pixelsUnlike(const std::filesystem::path& file, const Image& whole) {
    SurfacePtr read(cairo_image_surface_create_from_png(file.c_str()));
    cairo_surface_t* drawn = cairoSurface(whole);
    const int w = whole.pixelWidth(), h = whole.pixelHeight(), stride = cairo_image_surface_get_stride(drawn);
    if (cairo_image_surface_get_width(read.get()) != w || cairo_image_surface_get_height(read.get()) != h ||
        cairo_image_surface_get_stride(read.get()) != stride)
        return -1;
    EXPECT_EQ(cairo_image_surface_get_format(read.get()), CAIRO_FORMAT_RGB24) << "written opaque";
    int differing = 0;  // the colour bytes of every pixel
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            auto word = [&](cairo_surface_t* s) {
                return reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(s) + y * stride)[x];
            };
            differing += ((word(read.get()) ^ word(drawn)) & 0xffffff) != 0;
        }
    return differing;
}

std::filesystem::path bandsFile() {
    return std::filesystem::temp_directory_path() / ("velmorant-bands-" + std::to_string(::getpid()) + ".png");
}

TEST(ViewRenderer, TheCardWrittenBandByBandIsTheCardDrawnWhole) {
    const auto file = bandsFile();
    std::string error;
    for (double width : {300.0, 391.5}) {
        Rendered r(width);  // tall enough for several bands, with views across their edges
        ASSERT_TRUE(writeCardPng(r.tree, {width, 180}, 3, fonts(), file, "said", &error)) << error;
        EXPECT_EQ(pixelsUnlike(file, *r.card), 0) << width;
    }
    std::filesystem::remove(file);
    EXPECT_FALSE(writeCardPng(ViewTree::parseInterface(kCard), {0, 180}, 3, fonts(), file, "", &error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(std::filesystem::exists(file));
}

// A caller watching the bands sees each once, top to bottom, with what it
// cost; stopping at a band leaves no picture, and watching changes no byte.
TEST(ViewRenderer, TheCardsBandsAreReportedInOrderAndCanBeStopped) {
    Rendered r(390);
    const std::string plain = encodeCardPng(r.tree, {390, 180}, 3, fonts(), "said");
    ASSERT_FALSE(plain.empty());
    struct Row { int stopAtBand; std::size_t bandsSeen; bool picture; };
    // 180 points at scale 3 are 540 rows: five bands, the last 28 rows.
    for (const Row row : {Row{-1, 5, true}, Row{0, 1, false}, Row{4, 5, false}}) {
        SCOPED_TRACE(row.stopAtBand);
        std::vector<CardBand> bands;
        std::string error;
        std::string bytes = encodeCardPng(r.tree, {390, 180}, 3, fonts(), "said", &error, [&](const CardBand& band) {
            bands.push_back(band);
            return static_cast<int>(bands.size()) - 1 != row.stopAtBand;
        });
        ASSERT_EQ(bands.size(), row.bandsSeen);
        for (std::size_t i = 0; i < bands.size(); ++i) {
            EXPECT_EQ(bands[i].rows, 540);
            EXPECT_EQ(bands[i].rowsDone, std::min<int>(540, 128 * static_cast<int>(i + 1)));
            EXPECT_GT(bands[i].drawingSeconds, 0);
            EXPECT_GT(bands[i].encodingSeconds, 0);
        }
        if (row.picture) {
            EXPECT_EQ(bytes, plain);
        } else {
            EXPECT_TRUE(bytes.empty());
            EXPECT_FALSE(error.empty());
        }
    }
}

// An opaque gradient over the whole card replaces every pixel where the card
// ends on a whole pixel, so neither the colour under it nor what the band's
// memory held before shows; where the card ends within a pixel, its colour does.
TEST(ViewRenderer, AnOpaqueGradientHidesTheColourUnderItOnlyOnWholePixels) {
    const auto file = bandsFile();
    std::string error;
    struct Row { double width; bool colourShows; };
    for (const Row row : {Row{300, false}, Row{391.5, true}}) {
        SCOPED_TRACE(row.width);
        ImagePtr cards[2];
        const Colour colours[2] = {Colour::systemRedColor(), Colour::systemGreenColor()};
        for (int i = 0; i < 2; ++i) {
            ViewTree tree = ViewTree::parseInterface(kCard);
            auto gradient = std::make_shared<Layer>("gradient");
            gradient->setColors({Colour::colorWithHue(0.5, 0.8, 0.4, 1), Colour::colorWithHue(0.5, 0.8, 0.1, 1)});
            tree.view("card")->layer().addSublayer(gradient);
            tree.view("card")->setBackgroundColor(colours[i]);
            cards[i] = renderCard(tree, {row.width, 180}, 3, fonts());
            ASSERT_TRUE(writeCardPng(tree, {row.width, 180}, 3, fonts(), file, "", &error)) << error;
            EXPECT_EQ(pixelsUnlike(file, *cards[i]), 0) << "bands unlike the whole card";
        }
        const int lastColumn = cards[0]->pixelWidth() - 1;
        const Point edge{(lastColumn + 0.5) / 3, 1};
        EXPECT_EQ(cards[0]->pixelAt(edge) != cards[1]->pixelAt(edge), row.colourShows);
        EXPECT_EQ(cards[0]->pixelAt({1, 1}), cards[1]->pixelAt({1, 1}));
    }
    std::filesystem::remove(file);
}

TEST(ViewRenderer, AnImageViewShowsItsOwnArtworkUntilAnImageIsSet) {
    std::string json = kCard;
    json.replace(json.find(R"("name": "picture", "kind": "imageView")"), 0, R"("image": "Waiting", )");
    int lookups = 0;
    ViewTree tree = ViewTree::parseInterface(json, [&](std::string_view name) {
        ++lookups;
        return name == "Waiting" ? swatch(40, Colour::colorWithHue(0, 0, 0.5, 1)) : nullptr;
    });
    EXPECT_FALSE(tree.view("picture")->image());  // the record holds only what the code sets
    EXPECT_EQ(lookups, 0);                         // artwork is made when it is drawn
    Rect pic = ViewLayout(tree, {390, 180}).frameOf("picture");
    auto middle = [&] { return renderCard(tree, {390, 180}, 3, fonts())->pixelAt({pic.x + 50, pic.y + 25}); };
    EXPECT_TRUE(near(middle(), Colour::colorWithHue(0, 0, 0.5, 1).rgba()));
    tree.view("picture")->setImage(swatch(40, Colour::colorWithHue(0.15, 1, 1, 1)));
    EXPECT_TRUE(near(middle(), Colour::colorWithHue(0.15, 1, 1, 1).rgba()));
}

TEST(ViewRenderer, PictographsBeyondTheBasicPlaneShowInColourAsOnThePhone) {
    for (auto [text, coloured] : {std::pair{"\U0001F6CF", true}, {"\U0001F6CF\uFE0E", false}, {"\u2665", false}}) {
        ViewTree tree = ViewTree::parseInterface(kCard);
        tree.view("title")->setText(std::string(text));
        ImagePtr card = renderCard(tree, {390, 180}, 3, fonts());
        Rect frame = ViewLayout(tree, {390, 180}).frameOf("title");
        int hued = 0;
        for (double y = frame.y; y < frame.y + frame.height; y += 1.0 / 3)
            for (double x = frame.x; x < frame.x + 30; x += 1.0 / 3) {
                Rgba p = card->pixelAt({x, y});
                hued += p.b > p.r + 0.2 || p.g > p.r + 0.2;  // not the white text, not the red panel
            }
        EXPECT_EQ(hued > 10, coloured) << text << " " << hued;
    }
}

TEST(InterfaceDescription, RefusesMarksItDoesNotKnow) {
    const std::pair<const char*, const char*> cases[] = {
        {R"("autoresizing": ["flexibleDepth"])", "unknown autoresizing part \"flexibleDepth\""},
        {R"("lines": -1)", "lines must be 0"},
        {R"("minimumScaleFactor": 1.5)", "minimumScaleFactor must be above 0"},
        {R"("gradient": [{"name": "black"}])", "a gradient needs two colours"},
    };
    for (const auto& [view, mention] : cases) {
        try {
            ViewTree::parseInterface(std::string(R"({"views": [{"name": "v", "kind": "label", "frame": [0, 0, 1, 1], )") +
                                     view + "}]}");
            ADD_FAILURE() << view;
        } catch (const std::runtime_error& e) {
            std::string what = e.what();
            EXPECT_TRUE(what.find(mention) != std::string::npos && what.find("view \"v\"") != std::string::npos) << what;
        }
    }
}

TEST(InterfaceDescription, TheSnippetCardStretchesWithTheHost) {
    ViewTree tree = ViewTree::loadInterface(std::filesystem::path(VELMORANT_TEST_RESOURCE_DIR) / "interface" /
                                            "IntentViewController.json");
    for (double width : {300.0, 600.0}) {
        ViewLayout layout(tree, {width, 420});
        Rect image = layout.frameOf("ringsImage");
        EXPECT_EQ(image.width, 280);
        EXPECT_DOUBLE_EQ(image.x + image.width / 2, width / 2);
        // Panels keep equal margins, every view of a panel stays inside it, and the two values of a row never overlap.
        for (const auto& view : tree.views()) {
            if (view->parent() != "ringTextContainer" && view->parent() != "ringStatsContainer") continue;
            Rect v = layout.frameOf(view->name()), p = layout.frameOf(view->parent());
            EXPECT_DOUBLE_EQ(p.x, width - p.x - p.width) << view->parent();
            EXPECT_TRUE(v.x >= p.x && v.x + v.width <= p.x + p.width) << view->name();
        }
        for (auto [left, right] : {std::pair{"sleepTimeLabel", "sleepGoalLabel"}, {"bankTimeLabel", "bankBalanceLabel"},
                                   {"qualityRingHeadingLabel", "qualityRingResultLabel"}}) {
            Rect l = layout.frameOf(left), r = layout.frameOf(right);
            EXPECT_LE(l.x + l.width, r.x) << left << " " << width;
        }
    }
}

}  // namespace
