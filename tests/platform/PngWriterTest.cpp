#include "platform/CHandles.h"
#include "platform/Image.h"
#include "platform/PngWriter.h"

#include <gtest/gtest.h>
#include <spng.h>

#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

using namespace velmorant::platform;

namespace {

using SpngPtr = std::unique_ptr<spng_ctx, CRelease<spng_ctx_free>>;

struct Decoded {
    int colourType = -1;
    std::uint32_t width = 0, height = 0;
    std::vector<std::uint8_t> rgba;  // straight alpha
    std::vector<std::pair<std::string, std::string>> texts;
};

Decoded decode(const std::string& png) {
    Decoded out;
    SpngPtr ctx(spng_ctx_new(0));
    spng_set_png_buffer(ctx.get(), png.data(), png.size());
    spng_ihdr ihdr{};
    if (spng_get_ihdr(ctx.get(), &ihdr) != 0) return out;
    out.colourType = ihdr.color_type;
    out.width = ihdr.width;
    out.height = ihdr.height;
    std::size_t size = 0;
    spng_decoded_image_size(ctx.get(), SPNG_FMT_RGBA8, &size);
    out.rgba.resize(size);
    spng_decode_image(ctx.get(), out.rgba.data(), size, SPNG_FMT_RGBA8, 0);
    std::uint32_t count = 0;
    if (spng_get_text(ctx.get(), nullptr, &count) == 0) {
        std::vector<spng_text> texts(count);
        spng_get_text(ctx.get(), texts.data(), &count);
        for (const auto& t : texts) out.texts.emplace_back(t.keyword, std::string(t.text, t.length));
    }
    return out;
}

// A 4 x 2 pixel image: premultiplied ARGB words, row by row.
std::shared_ptr<Image> imageOf(const std::uint32_t (&pixels)[8]) {
    auto image = Image::create({4, 2}, 1);
    cairo_surface_flush(image->surface());
    unsigned char* data = cairo_image_surface_get_data(image->surface());
    int stride = cairo_image_surface_get_stride(image->surface());
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x) reinterpret_cast<std::uint32_t*>(data + y * stride)[x] = pixels[y * 4 + x];
    cairo_surface_mark_dirty(image->surface());
    return image;
}

TEST(PngWriter, KeepsEveryPixelInTheSmallestFittingColourType) {
    struct Case {
        const char* what;
        std::uint32_t pixels[8];
        int colourType;
        std::uint8_t firstRgba[4];
        std::uint8_t lastRgba[4];
    };
    const Case cases[] = {
        {"opaque", {0xff102030, 0xffffffff, 0xff000000, 0xff808080, 0xff010203, 0xfffe0000, 0xff00fe00, 0xff0000fe},
         SPNG_COLOR_TYPE_TRUECOLOR, {0x10, 0x20, 0x30, 0xff}, {0, 0, 0xfe, 0xff}},
        // Half-transparent red is kept as full red at half alpha, not as dark red.
        {"translucent", {0x80800000, 0, 0xff00ff00, 0xff0000ff, 0xff000000, 0xff000000, 0xff000000, 0x40004000},
         SPNG_COLOR_TYPE_TRUECOLOR_ALPHA, {0xff, 0, 0, 0x80}, {0, 0xff, 0, 0x40}},
    };
    for (const auto& c : cases) {
        for (PngFilter filter : {PngFilter::None, PngFilter::Up, PngFilter::Adaptive}) {
            Decoded png = decode(encodePng(*imageOf(c.pixels), {.compressionLevel = 1, .filter = filter}));
            EXPECT_EQ(png.colourType, c.colourType) << c.what;
            ASSERT_EQ(png.rgba.size(), 32u) << c.what;
            EXPECT_EQ(std::vector<std::uint8_t>(png.rgba.begin(), png.rgba.begin() + 4),
                      std::vector<std::uint8_t>(c.firstRgba, c.firstRgba + 4))
                << c.what;
            EXPECT_EQ(std::vector<std::uint8_t>(png.rgba.end() - 4, png.rgba.end()),
                      std::vector<std::uint8_t>(c.lastRgba, c.lastRgba + 4))
                << c.what;
        }
    }
}

TEST(PngWriter, CarriesTheDescriptionAsInternationalText) {
    const std::uint32_t pixels[8] = {0xff000000, 0xff000000, 0xff000000, 0xff000000,
                                     0xff000000, 0xff000000, 0xff000000, 0xff000000};
    std::string said = "Avg. 95,4 %, 7 Tage 95,3 %. Bereich 90 % – 99 %.";
    Decoded png = decode(encodePng(*imageOf(pixels), {.description = said}));
    ASSERT_EQ(png.texts.size(), 1u);
    EXPECT_EQ(png.texts[0].first, "Description");
    EXPECT_EQ(png.texts[0].second, said);
    EXPECT_TRUE(decode(encodePng(*imageOf(pixels))).texts.empty());
}

TEST(PngWriter, WritesTheFileOrSaysWhyNotAndLeavesNothing) {
    const std::uint32_t pixels[8] = {};
    auto dir = std::filesystem::temp_directory_path() / ("velmorant-png-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    std::string error;
    ASSERT_TRUE(writePng(*imageOf(pixels), dir / "card.png", {}, &error)) << error;
    std::ifstream in(dir / "card.png", std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    EXPECT_EQ(decode(bytes.str()).width, 4u);

    EXPECT_FALSE(writePng(*imageOf(pixels), dir / "missing" / "card.png", {}, &error));
    EXPECT_FALSE(error.empty());
    auto empty = Image::create({0, 0}, 3);
    ASSERT_TRUE(empty);
    error.clear();
    EXPECT_FALSE(writePng(*empty, dir / "empty.png", {}, &error));
    EXPECT_NE(error.find("without pixels"), std::string::npos) << error;
    EXPECT_FALSE(std::filesystem::exists(dir / "empty.png"));
    std::filesystem::remove_all(dir);
}

cairo_status_t appendTo(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

// A card-sized picture (1170 x 600 pixels) drawn straight with Cairo.
std::shared_ptr<Image> drawn(bool opaque, const std::function<void(cairo_t*)>& draw) {
    auto image = Image::create({390, 200}, 3);
    CairoPtr cr(cairo_create(image->surface()));
    if (opaque) {
        cairo_set_source_rgb(cr.get(), 0.07, 0.08, 0.12);
        cairo_paint(cr.get());
    }
    draw(cr.get());
    cairo_surface_flush(image->surface());
    return image;
}

void rings(cairo_t* cr) {
    for (int i = 0; i < 3; ++i) {
        PatternPtr gradient(cairo_pattern_create_linear(0, 0, 1170, 600));
        cairo_pattern_add_color_stop_rgb(gradient.get(), 0, 0.2 * i, 0.8, 0.4);
        cairo_pattern_add_color_stop_rgb(gradient.get(), 1, 0.9, 0.3, 0.1 * i);
        cairo_set_source(cr, gradient.get());
        cairo_set_line_width(cr, 40);
        cairo_arc(cr, 300, 300, 240 - 60 * i, -M_PI / 2, M_PI * (0.6 + 0.4 * i));
        cairo_stroke(cr);
    }
}

void text(cairo_t* cr) {
    cairo_set_source_rgb(cr, 0.95, 0.95, 0.97);
    cairo_select_font_face(cr, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, 42);
    for (int line = 0; line < 9; ++line) {
        cairo_move_to(cr, 40, 60 + 60 * line);
        cairo_show_text(cr, "Time asleep 7 h 42 min, 93 % of the sleep you need");
    }
}

// The defaults trade size for speed, but never so far that a card grows past
// one and a half times what Cairo's own writer makes of it.
TEST(PngWriter, StaysWithinHalfAgainCairosSize) {
    struct Case {
        const char* what;
        bool opaque;
        std::function<void(cairo_t*)> draw;
    };
    const Case cases[] = {
        {"rings", true, rings},
        {"text", true, text},
        {"rings and text", true, [](cairo_t* cr) { rings(cr); text(cr); }},
        {"translucent rings", false, rings},
    };
    for (const auto& c : cases) {
        auto image = drawn(c.opaque, c.draw);
        std::string cairo;
        ASSERT_EQ(cairo_surface_write_to_png_stream(image->surface(), appendTo, &cairo), CAIRO_STATUS_SUCCESS);
        std::string ours = encodePng(*image);
        ASSERT_FALSE(ours.empty()) << c.what;
        EXPECT_LE(double(ours.size()), 1.5 * double(cairo.size())) << c.what << ": " << ours.size() << " against " << cairo.size();
        EXPECT_EQ(decode(ours).width, 1170u) << c.what;
    }
}

}  // namespace
