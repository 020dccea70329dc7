#include "platform/CHandles.h"
#include "platform/Canvas.h"
#include "platform/FontSystem.h"
#include "platform/Image.h"
#include "platform/ViewLayout.h"
#include "platform/ViewRenderer.h"
#include "platform/ViewTree.h"

#include <gtest/gtest.h>
#include <spng.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <vector>
#include <string>

using namespace velmorant::platform;

namespace {

const FontSystem& fonts() {
    static const FontSystem system(std::filesystem::path(VELMORANT_TEST_RESOURCE_DIR) / "fonts" / "fonts.conf");
    return system;
}

Autoresizing mask(std::string_view parts) {
    Autoresizing m;
    m.flexibleLeftMargin = parts.find('L') != std::string_view::npos;
    m.flexibleWidth = parts.find('W') != std::string_view::npos;
    m.flexibleRightMargin = parts.find('R') != std::string_view::npos;
    m.flexibleTopMargin = parts.find('T') != std::string_view::npos;
    m.flexibleHeight = parts.find('H') != std::string_view::npos;
    m.flexibleBottomMargin = parts.find('B') != std::string_view::npos;
    return m;
}

TEST(Autoresizing, SharesTheParentsChangeEquallyAmongTheFlexibleParts) {
    struct Case {
        const char* parts;
        Rect expected;
    };
    // A 100 x 40 view at (50, 30) in a 200 x 100 parent that grows to 260 x 130.
    const Case cases[] = {
        {"", {50, 30, 100, 40}},     {"W", {50, 30, 160, 40}},    {"L", {110, 30, 100, 40}},
        {"R", {50, 30, 100, 40}},    {"LR", {80, 30, 100, 40}},   {"LW", {80, 30, 130, 40}},
        {"WR", {50, 30, 130, 40}},   {"LWR", {70, 30, 120, 40}},  {"H", {50, 30, 100, 70}},
        {"TB", {50, 45, 100, 40}},   {"LRTB", {80, 45, 100, 40}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(autoresizedFrame({50, 30, 100, 40}, mask(c.parts), {200, 100}, {260, 130}), c.expected) << c.parts;
    // Shrinking never makes a negative width.
    EXPECT_EQ(autoresizedFrame({10, 0, 20, 10}, mask("W"), {200, 100}, {100, 100}).width, 0);
}

// A card with one panel: a stretching panel, a right-hand value and a centred picture.
constexpr const char* kCard = R"({"views": [
  {"name": "card", "kind": "container", "frame": [0, 0, 390, 180], "backgroundColour": {"h": 0.6, "s": 1, "b": 0.3}},
  {"name": "panel", "kind": "container", "parent": "card", "frame": [12, 20, 366, 100],
   "autoresizing": ["flexibleWidth"], "backgroundColour": {"h": 0, "s": 1, "b": 0.6}, "cornerRadius": 20},
  {"name": "dot", "kind": "indicator", "parent": "panel", "frame": [10, 10, 20, 20],
   "backgroundColour": {"name": "systemGreen"}, "cornerRadius": 10},
  {"name": "title", "kind": "label", "parent": "panel", "frame": [40, 8, 150, 24], "text": "Hello",
   "font": {"size": 18, "weight": "bold"}, "textColour": {"name": "white"}},
  {"name": "value", "kind": "label", "parent": "panel", "frame": [200, 8, 150, 24], "text": "Right",
   "autoresizing": ["flexibleLeftMargin"], "alignment": "right", "font": {"size": 18},
   "textColour": {"name": "white"}},
  {"name": "long", "kind": "label", "parent": "panel", "frame": [40, 50, 100, 24], "minimumScaleFactor": 0.8,
   "text": "A very long text that cannot possibly fit", "font": {"size": 18}, "textColour": {"name": "white"}},
  {"name": "picture", "kind": "imageView", "parent": "card", "frame": [145, 125, 100, 50],
   "autoresizing": ["flexibleLeftMargin", "flexibleRightMargin"]},
  {"name": "gone", "kind": "container", "parent": "card", "frame": [0, 125, 100, 50], "hidden": true},
  {"name": "ghost", "kind": "label", "parent": "gone", "frame": [0, 0, 100, 50], "text": "Hidden",
   "textColour": {"name": "white"}}
]})";

// A square picture of one colour, `side` points at scale 3.
ImagePtr swatch(double side, const Colour& colour) {
    Canvas canvas({side, side}, 3, fonts());
    canvas.addRoundedRect({0, 0, side, side}, 0);
    canvas.setFillColour(colour);
    canvas.fillPath();
    return canvas.makeImage();
}

struct Rendered {
    ViewTree tree = ViewTree::parseInterface(kCard);
    ImagePtr card;
    Rect frameOf(const char* name) const { return layout.frameOf(name); }
    ViewLayout layout{tree, {}};

    explicit Rendered(double width) {
        tree.view("picture")->setImage(swatch(40, Colour::colorWithHue(0.15, 1, 1, 1)));
        layout = ViewLayout(tree, {width, 180});
        card = renderCard(tree, {width, 180}, 3, fonts());
    }
};

bool near(const Rgba& a, const Rgba& b, double tolerance = 0.02) {
    return std::fabs(a.r - b.r) <= tolerance && std::fabs(a.g - b.g) <= tolerance &&
           std::fabs(a.b - b.b) <= tolerance && std::fabs(a.a - b.a) <= tolerance;
}

// Pixels in `r` (points) light enough to be the white text.
int whitePixels(const Image& image, Rect r) {
    int count = 0;
    double s = image.scale();
    for (int y = static_cast<int>(r.y * s); y < static_cast<int>((r.y + r.height) * s); ++y)
        for (int x = static_cast<int>(r.x * s); x < static_cast<int>((r.x + r.width) * s); ++x) {
            Rgba p = image.pixelAt({(x + 0.5) / s, (y + 0.5) / s});
            count += std::min({p.r, p.g, p.b}) > 0.6;
        }
    return count;
}

TEST(ViewLayout, TopLevelViewsFillTheCardAndChildrenFollowTheirMarks) {
    for (double width : {300.0, 390.0, 600.0}) {
        Rendered r(width);
        EXPECT_EQ(r.frameOf("card"), (Rect{0, 0, width, 180})) << width;
        EXPECT_EQ(r.frameOf("panel"), (Rect{12, 20, width - 24, 100})) << width;
        EXPECT_EQ(r.frameOf("value").x + r.frameOf("value").width, width - 12 - 16) << width;
        EXPECT_EQ(r.frameOf("picture").x + 50, width / 2) << width;
        EXPECT_EQ(r.frameOf("dot"), (Rect{22, 30, 20, 20})) << width;
    }
    EXPECT_EQ(ViewLayout(ViewTree::parseInterface(kCard), {390, 180}).frameOf("nothing"), Rect{});
}

TEST(ViewRenderer, DrawsEachShownViewInItsFrameAtAnyWidth) {
    for (double width : {300.0, 390.0, 600.0}) {
        Rendered r(width);
        const Image& card = *r.card;
        SCOPED_TRACE(width);
        EXPECT_EQ(card.pixelWidth(), std::lround(width * 3));
        EXPECT_EQ(card.pixelHeight(), 540);

        Rgba background = Colour::colorWithHue(0.6, 1, 0.3, 1).rgba();
        Rgba panel = Colour::colorWithHue(0, 1, 0.6, 1).rgba();
        Rect p = r.frameOf("panel");
        // Rounded corners show the card through them; the panel's edges are straight between.
        EXPECT_TRUE(near(card.pixelAt({p.x + 1, p.y + 1}), background));
        EXPECT_TRUE(near(card.pixelAt({p.x + p.width - 1, p.y + p.height - 1}), background));
        EXPECT_TRUE(near(card.pixelAt({p.x + p.width / 2, p.y + 1}), panel));
        EXPECT_TRUE(near(card.pixelAt({p.x + 1, p.y + p.height / 2}), panel));
        // The indicator in its colour, round.
        Rect dot = r.frameOf("dot");
        EXPECT_TRUE(near(card.pixelAt({dot.x + 10, dot.y + 10}), Colour::systemGreenColor().rgba()));
        EXPECT_TRUE(near(card.pixelAt({dot.x + 1, dot.y + 1}), panel));
        // The picture at its own size (not enlarged), centred in its frame.
        Rect pic = r.frameOf("picture");
        Rgba yellow = Colour::colorWithHue(0.15, 1, 1, 1).rgba();
        EXPECT_TRUE(near(card.pixelAt({pic.x + 50, pic.y + 25}), yellow));
        EXPECT_TRUE(near(card.pixelAt({pic.x + 30.5, pic.y + 25}), yellow));
        EXPECT_TRUE(near(card.pixelAt({pic.x + 29.5, pic.y + 25}), background));
        // Texts inside their frames, and nothing of them outside.
        for (const char* label : {"title", "value", "long"}) EXPECT_GT(whitePixels(card, r.frameOf(label)), 20) << label;
        Rect longText = r.frameOf("long");
        EXPECT_EQ(whitePixels(card, {longText.x + longText.width, longText.y - 4, 60, longText.height + 8}), 0);
        EXPECT_EQ(whitePixels(card, {p.x, p.y + 76, p.width, 24}), 0);
        // A hidden container hides its children.
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

// The RGBA bytes of a PNG file, row by row.
std::vector<std::uint8_t> decodedPixels(const std::filesystem::path& file, std::uint32_t* width) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    std::string png = bytes.str();
    std::unique_ptr<spng_ctx, CRelease<spng_ctx_free>> ctx(spng_ctx_new(0));
    spng_set_png_buffer(ctx.get(), png.data(), png.size());
    spng_ihdr ihdr{};
    if (spng_get_ihdr(ctx.get(), &ihdr) != 0) return {};
    *width = ihdr.width;
    std::size_t size = 0;
    spng_decoded_image_size(ctx.get(), SPNG_FMT_RGBA8, &size);
    std::vector<std::uint8_t> out(size);
    spng_decode_image(ctx.get(), out.data(), size, SPNG_FMT_RGBA8, 0);
    return out;
}

TEST(ViewRenderer, TheCardWrittenBandByBandIsTheCardDrawnWhole) {
    auto file = std::filesystem::temp_directory_path() / ("velmorant-bands-" + std::to_string(::getpid()) + ".png");
    for (double width : {300.0, 391.5}) {
        Rendered r(width);
        ViewTree& tree = r.tree;
        // Tall enough for several bands, with views across their edges.
        ImagePtr whole = renderCard(tree, {width, 180}, 3, fonts());
        std::string error;
        ASSERT_TRUE(writeCardPng(tree, {width, 180}, 3, fonts(), file, "said", &error)) << error;
        std::uint32_t pngWidth = 0;
        std::vector<std::uint8_t> rgba = decodedPixels(file, &pngWidth);
        ASSERT_EQ(pngWidth, static_cast<std::uint32_t>(whole->pixelWidth()));
        ASSERT_EQ(rgba.size(), std::size_t(whole->pixelWidth()) * whole->pixelHeight() * 4);
        int differing = 0;
        const unsigned char* data = cairo_image_surface_get_data(whole->surface());
        int stride = cairo_image_surface_get_stride(whole->surface());
        for (int y = 0; y < whole->pixelHeight(); ++y)
            for (int x = 0; x < whole->pixelWidth(); ++x) {
                std::uint32_t p = reinterpret_cast<const std::uint32_t*>(data + y * stride)[x];
                const std::uint8_t* q = &rgba[(std::size_t(y) * whole->pixelWidth() + x) * 4];
                differing += q[0] != ((p >> 16) & 0xff) || q[1] != ((p >> 8) & 0xff) || q[2] != (p & 0xff) || q[3] != 0xff;
            }
        EXPECT_EQ(differing, 0) << width;
    }
    std::filesystem::remove(file);
    std::string error;
    EXPECT_FALSE(writeCardPng(ViewTree::parseInterface(kCard), {0, 180}, 3, fonts(), file, "", &error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST(ViewRenderer, AnImageViewShowsItsOwnArtworkUntilAnImageIsSet) {
    Rgba grey = Colour::colorWithHue(0, 0, 0.5, 1).rgba(), yellow = Colour::colorWithHue(0.15, 1, 1, 1).rgba();
    std::string json = kCard;
    json.replace(json.find(R"("name": "picture", "kind": "imageView")"), 0, R"("image": "Waiting", )");
    int lookups = 0;
    ViewTree tree = ViewTree::parseInterface(json, [&](std::string_view name) {
        ++lookups;
        return name == "Waiting" ? swatch(40, Colour::colorWithHue(0, 0, 0.5, 1)) : nullptr;
    });
    EXPECT_FALSE(tree.view("picture")->image());  // the record holds only what the code sets
    EXPECT_EQ(lookups, 0);                         // artwork is made when it is drawn
    ViewLayout layout(tree, {390, 180});
    Rect pic = layout.frameOf("picture");
    EXPECT_TRUE(near(renderCard(tree, {390, 180}, 3, fonts())->pixelAt({pic.x + 50, pic.y + 25}), grey));
    tree.view("picture")->setImage(swatch(40, Colour::colorWithHue(0.15, 1, 1, 1)));
    EXPECT_TRUE(near(renderCard(tree, {390, 180}, 3, fonts())->pixelAt({pic.x + 50, pic.y + 25}), yellow));
}

TEST(ViewRenderer, PictographsBeyondTheBasicPlaneShowInColourAsOnThePhone) {
    struct Case {
        const char* text;
        bool coloured;
    };
    const Case cases[] = {{"\U0001F6CF", true}, {"\U0001F6CF\uFE0E", false}, {"\u2665", false}, {"\u2605", false}};
    for (const auto& c : cases) {
        ViewTree tree = ViewTree::parseInterface(kCard);
        tree.view("title")->setText(std::string(c.text));
        ImagePtr card = renderCard(tree, {390, 180}, 3, fonts());
        Rect frame = ViewLayout(tree, {390, 180}).frameOf("title");
        int coloured = 0;
        for (double y = frame.y; y < frame.y + frame.height; y += 1.0 / 3)
            for (double x = frame.x; x < frame.x + 30; x += 1.0 / 3) {
                Rgba p = card->pixelAt({x, y});
                // Not the white text, not the red panel: some other hue.
                coloured += p.b > p.r + 0.2 || p.g > p.r + 0.2;
            }
        EXPECT_EQ(coloured > 10, c.coloured) << c.text << " " << coloured;
    }
}

TEST(InterfaceDescription, RefusesMarksItDoesNotKnow) {
    struct Case {
        const char* view;
        const char* mention;
    };
    const Case cases[] = {
        {R"("autoresizing": ["flexibleDepth"])", "unknown autoresizing part \"flexibleDepth\""},
        {R"("autoresizing": "flexibleWidth")", "autoresizing must be a list"},
        {R"("lines": -1)", "lines must be 0"},
        {R"("minimumScaleFactor": 1.5)", "minimumScaleFactor must be above 0"},
        {R"("gradient": [{"name": "black"}])", "a gradient needs two colours"},
    };
    for (const auto& c : cases) {
        std::string json = std::string(R"({"views": [{"name": "v", "kind": "label", "frame": [0, 0, 1, 1], )") +
                           c.view + "}]}";
        try {
            ViewTree::parseInterface(json);
            ADD_FAILURE() << c.view;
        } catch (const std::runtime_error& e) {
            EXPECT_NE(std::string(e.what()).find(c.mention), std::string::npos) << e.what();
            EXPECT_NE(std::string(e.what()).find("view \"v\""), std::string::npos) << e.what();
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
        for (const char* panel : {"ringTextContainer", "ringStatsContainer"}) {
            Rect p = layout.frameOf(panel);
            EXPECT_DOUBLE_EQ(p.x, width - p.x - p.width) << panel;  // equal margins
            EXPECT_LE(p.y + p.height, 420) << panel;
        }
        // Every view of a panel stays inside it, and the two values of a row never overlap.
        for (const auto& view : tree.views()) {
            if (view->parent() != "ringTextContainer" && view->parent() != "ringStatsContainer") continue;
            Rect v = layout.frameOf(view->name()), p = layout.frameOf(view->parent());
            EXPECT_GE(v.x, p.x) << view->name();
            EXPECT_LE(v.x + v.width, p.x + p.width) << view->name();
        }
        for (auto [left, right] : {std::pair{"sleepTimeLabel", "sleepGoalLabel"}, {"bankTimeLabel", "bankBalanceLabel"},
                                   {"qualityRingHeadingLabel", "qualityRingResultLabel"}}) {
            Rect l = layout.frameOf(left), r = layout.frameOf(right);
            EXPECT_LE(l.x + l.width, r.x) << left << " " << width;
        }
    }
}

}  // namespace
