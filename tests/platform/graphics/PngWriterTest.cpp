#include "platform/graphics/detail/ImageSurface.h"
#include "platform/graphics/PngWriter.h"

#include <gtest/gtest.h>
#include <spng.h>

#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

using namespace velmorant::platform;

namespace {

struct Decoded {
    int colourType = -1;
    std::uint32_t width = 0;
    std::vector<std::uint8_t> rgba;  // straight alpha
    std::vector<std::pair<std::string, std::string>> texts;
};

Decoded decode(const std::string& png) {
    Decoded out;
    std::unique_ptr<spng_ctx, CRelease<spng_ctx_free>> ctx(spng_ctx_new(0));
    spng_set_png_buffer(ctx.get(), png.data(), png.size());
    spng_ihdr ihdr{};
    if (spng_get_ihdr(ctx.get(), &ihdr) != 0) return out;
    out.colourType = ihdr.color_type;
    out.width = ihdr.width;
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
std::shared_ptr<Image> imageOf(const std::array<std::uint32_t, 8>& pixels) {
    auto image = Image::create({4, 2}, 1);
    cairo_surface_flush(cairoSurface(*image));
    unsigned char* data = cairo_image_surface_get_data(cairoSurface(*image));
    int stride = cairo_image_surface_get_stride(cairoSurface(*image));
    for (int i = 0; i < 8; ++i) reinterpret_cast<std::uint32_t*>(data + i / 4 * stride)[i % 4] = pixels[i];
    cairo_surface_mark_dirty(cairoSurface(*image));
    return image;
}

// Every pixel survives each compression level, in the smallest colour type that holds it, with the description as text.
TEST(PngWriter, KeepsEveryPixelInTheSmallestFittingColourTypeAndTheDescription) {
    struct Case {
        std::array<std::uint32_t, 8> pixels;
        int colourType;
        std::array<std::uint8_t, 8> firstAndLast;
        std::string description;
    };
    const Case cases[] = {
        {{0xff102030, 0xffffffff, 0xff000000, 0xff808080, 0xff010203, 0xfffe0000, 0xff00fe00, 0xff0000fe},
         SPNG_COLOR_TYPE_TRUECOLOR, {0x10, 0x20, 0x30, 0xff, 0, 0, 0xfe, 0xff},
         "Avg. 95,4 %, 7 Tage 95,3 %. Bereich 90 % – 99 %."},
        // Half-transparent red is kept as full red at half alpha, not as dark red.
        {{0x80800000, 0, 0xff00ff00, 0xff0000ff, 0xff000000, 0xff000000, 0xff000000, 0x40004000},
         SPNG_COLOR_TYPE_TRUECOLOR_ALPHA, {0xff, 0, 0, 0x80, 0, 0xff, 0, 0x40}, ""},
    };
    for (const auto& c : cases) {
        for (int level : {0, 1, 2, 3}) {
            Decoded png = decode(encodePng(*imageOf(c.pixels), {.compressionLevel = level, .description = c.description}));
            EXPECT_EQ(png.colourType, c.colourType);
            ASSERT_EQ(png.rgba.size(), 32u);
            EXPECT_TRUE(std::equal(c.firstAndLast.begin(), c.firstAndLast.begin() + 4, png.rgba.begin()));
            EXPECT_TRUE(std::equal(c.firstAndLast.begin() + 4, c.firstAndLast.end(), png.rgba.end() - 4));
            EXPECT_EQ(png.texts, (c.description.empty() ? decltype(png.texts){}
                                                        : decltype(png.texts){{"Description", c.description}}));
        }
    }
}

// An image is opaque only when every pixel is: one barely translucent pixel
// in any corner, on any edge row or column, or inside, keeps the alpha, and
// every pixel, the last row's and column's too, comes back as it was.
TEST(PngWriter, OneTranslucentPixelAnywhereKeepsTheAlpha) {
    constexpr int kWidth = 5, kHeight = 3;
    const std::pair<int, int> translucentAt[] = {{-1, -1}, {0, 0}, {4, 0}, {0, 2}, {4, 2}, {2, 2}, {4, 1}, {2, 1}};
    for (auto [tx, ty] : translucentAt) {
        SCOPED_TRACE(::testing::Message() << "translucent at " << tx << ", " << ty);
        auto image = Image::create({kWidth, kHeight}, 1);
        cairo_surface_flush(cairoSurface(*image));
        unsigned char* data = cairo_image_surface_get_data(cairoSurface(*image));
        const int stride = cairo_image_surface_get_stride(cairoSurface(*image));
        std::vector<std::uint8_t> want;  // straight RGBA
        for (int y = 0; y < kHeight; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                const bool translucent = x == tx && y == ty;
                // Opaque pixels each their own colour; the translucent one black, so premultiplying changes nothing.
                const std::uint8_t r = translucent ? 0 : std::uint8_t(40 * x + 1), g = translucent ? 0 : std::uint8_t(80 * y + 2), b = 3 * !translucent;
                const std::uint8_t a = translucent ? 0xfe : 0xff;
                reinterpret_cast<std::uint32_t*>(data + y * stride)[x] = std::uint32_t(a) << 24 | r << 16 | g << 8 | b;
                want.insert(want.end(), {r, g, b, a});
            }
        }
        cairo_surface_mark_dirty(cairoSurface(*image));
        const bool opaque = tx < 0;
        EXPECT_EQ(isOpaque(*image), opaque);
        Decoded png = decode(encodePng(*image));
        EXPECT_EQ(png.colourType, opaque ? SPNG_COLOR_TYPE_TRUECOLOR : SPNG_COLOR_TYPE_TRUECOLOR_ALPHA);
        EXPECT_EQ(png.rgba, want);
    }
}

// Every translucent colour comes back straight, rounded to the nearest: one
// row for each alpha, one column for each premultiplied value it allows.
TEST(PngWriter, EveryTranslucentColourIsRoundedToTheNearest) {
    auto image = Image::create({256, 256}, 1);
    cairo_surface_flush(cairoSurface(*image));
    unsigned char* data = cairo_image_surface_get_data(cairoSurface(*image));
    const int stride = cairo_image_surface_get_stride(cairoSurface(*image));
    for (std::uint32_t a = 0; a < 256; ++a)
        for (std::uint32_t c = 0; c < 256; ++c) {
            const std::uint32_t premultiplied = std::min(c, a);
            reinterpret_cast<std::uint32_t*>(data + a * stride)[c] =
                a << 24 | premultiplied << 16 | (a - premultiplied) << 8 | premultiplied / 2;
        }
    cairo_surface_mark_dirty(cairoSurface(*image));
    Decoded png = decode(encodePng(*image));
    ASSERT_EQ(png.rgba.size(), 256u * 256u * 4u);
    auto nearest = [](std::uint32_t c, std::uint32_t a) {
        return a == 0 ? 0 : int(std::floor(double(c) * 255 / double(a) + 0.5));
    };
    int wrong = 0;
    for (std::uint32_t a = 0; a < 256; ++a)
        for (std::uint32_t c = 0; c < 256; ++c) {
            const std::uint8_t* got = &png.rgba[(a * 256 + c) * 4];
            const std::uint32_t premultiplied = std::min(c, a);
            const int want[] = {nearest(premultiplied, a), nearest(a - premultiplied, a), nearest(premultiplied / 2, a), int(a)};
            for (int i = 0; i < 4; ++i)
                if (got[i] != want[i] && ++wrong <= 5)
                    ADD_FAILURE() << "alpha " << a << ", value " << c << ", channel " << i << ": " << int(got[i])
                                  << " instead of " << want[i];
        }
    EXPECT_EQ(wrong, 0);
}

// A picture whose every pixel differs from its neighbours, so that its
// compressed data fills several pieces. Translucent pixels have each colour
// either off or at full strength, so their straight colour is exact.
struct Pattern {
    int width, height;
    bool alpha;
    std::uint32_t at(int x, int y) const {
        std::uint32_t noise = std::uint32_t(x * 2654435761u ^ y * 40503u) * 2246822519u >> 8;
        if (!alpha) return 0xff000000 | (noise & 0xffffff);
        std::uint32_t a = noise & 0xff, r = noise >> 8 & 1 ? a : 0, g = noise >> 9 & 1 ? a : 0, b = noise >> 10 & 1 ? a : 0;
        return a << 24 | r << 16 | g << 8 | b;
    }
    std::vector<std::uint8_t> straightRgba() const {
        std::vector<std::uint8_t> out;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                std::uint32_t p = at(x, y), a = p >> 24;
                auto full = [a](std::uint32_t c) { return std::uint8_t(c == 0 ? 0 : a == 0xff ? c : 0xff); };
                out.insert(out.end(), {full(p >> 16 & 0xff), full(p >> 8 & 0xff), full(p & 0xff), std::uint8_t(a)});
            }
        return out;
    }
    // Rows `top` onwards, in a band `bandRows` tall (rows past the picture left clear).
    std::shared_ptr<Image> band(int top, int bandRows) const {
        auto image = Image::create({double(width), double(bandRows)}, 1);
        cairo_surface_flush(cairoSurface(*image));
        unsigned char* data = cairo_image_surface_get_data(cairoSurface(*image));
        const int stride = cairo_image_surface_get_stride(cairoSurface(*image));
        for (int y = 0; y < bandRows && top + y < height; ++y)
            for (int x = 0; x < width; ++x) reinterpret_cast<std::uint32_t*>(data + y * stride)[x] = at(x, top + y);
        cairo_surface_mark_dirty(cairoSurface(*image));
        return image;
    }
};

// Band by band, into memory or a file, the rows come back exactly, the last
// band's spare rows left out; rows of whole eights and of eights and a few
// are converted in both ways (a row of eight writes furthest past its end).
TEST(PngWriter, BandByBandKeepsEveryRowExactly) {
    struct Case {
        Pattern pattern;
        int bandRows;
        bool toFile;
    };
    const Case cases[] = {
        {{1, 1, false}, 1, false},      {{1, 1, true}, 1, false},      {{7, 5, false}, 2, false},
        {{7, 5, true}, 2, true},        {{333, 301, false}, 128, false}, {{333, 301, true}, 128, false},
        {{333, 301, true}, 7, true},    {{2, 300, false}, 1, false},   {{5, 3, false}, 200, false},
        {{64, 9, false}, 4, false},     {{8, 1, false}, 1, false},     {{17, 3, false}, 2, false},
    };
    auto file = std::filesystem::temp_directory_path() / ("velmorant-bands-" + std::to_string(::getpid()) + ".png");
    for (const auto& c : cases) {
        const Pattern& p = c.pattern;
        SCOPED_TRACE(::testing::Message() << p.width << " x " << p.height << (p.alpha ? " RGBA" : " RGB") << " in bands of "
                                          << c.bandRows << (c.toFile ? ", to a file" : ""));
        PngEncoder encoder(c.toFile ? file : std::filesystem::path{}, p.width, p.height, p.alpha);
        for (int top = 0; top < p.height; top += c.bandRows) {
            const int rows = std::min(c.bandRows, p.height - top);
            auto band = p.band(top, c.bandRows);
            ASSERT_TRUE(encoder.append(*band, rows)) << encoder.error();
        }
        ASSERT_TRUE(encoder.finish()) << encoder.error();
        std::string png = encoder.bytes();
        if (c.toFile) {
            std::ifstream in(file, std::ios::binary);
            png.assign(std::istreambuf_iterator<char>(in), {});
            std::filesystem::remove(file);
        }
        Decoded decoded = decode(png);
        EXPECT_EQ(decoded.colourType, p.alpha ? SPNG_COLOR_TYPE_TRUECOLOR_ALPHA : SPNG_COLOR_TYPE_TRUECOLOR);
        EXPECT_EQ(decoded.rgba, p.straightRgba());
    }
}

// However a picture goes wrong, the encoder says so and no file is left.
TEST(PngWriter, AFailedPictureLeavesNoFile) {
    struct Case {
        const char* name;
        int width, compressionLevel;
        std::vector<std::pair<int, int>> bands;  // width and rows of each band appended
        const char* said;
    };
    const Case cases[] = {
        {"rows missing", 8, 1, {{8, 4}}, "only 4 of 6 rows"},
        {"rows too many", 8, 1, {{8, 4}, {8, 4}}, "more rows"},
        {"a band too narrow", 8, 1, {{8, 2}, {7, 4}}, "not as wide"},
        {"an unknown level", 8, 9, {{8, 6}}, "level 9"},
        // Refused by libpng, which reports it by jumping out of the header's writing.
        {"wider than libpng allows", 2'000'000, 1, {}, "IHDR"},
    };
    auto file = std::filesystem::temp_directory_path() / ("velmorant-failed-" + std::to_string(::getpid()) + ".png");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        PngEncoder encoder(file, c.width, 6, false, {.compressionLevel = c.compressionLevel});
        for (auto [width, rows] : c.bands) encoder.append(*Pattern{width, rows, false}.band(0, rows));
        EXPECT_FALSE(encoder.finish());
        EXPECT_NE(encoder.error().find(c.said), std::string::npos) << encoder.error();
        EXPECT_FALSE(std::filesystem::exists(file));
    }
}

TEST(PngWriter, SaysWhyAFileCannotBeWrittenAndLeavesNothing) {
    auto stem = std::filesystem::temp_directory_path() / ("velmorant-png-" + std::to_string(::getpid()));
    std::string error;
    EXPECT_FALSE(writePng(*imageOf({}), stem / "missing" / "card.png", {}, &error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(writePng(*Image::create({0, 0}, 3), stem.string() + ".png", {}, &error));
    EXPECT_NE(error.find("without pixels"), std::string::npos) << error;
    EXPECT_FALSE(std::filesystem::exists(stem.string() + ".png"));
}

cairo_status_t appendTo(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

// The defaults trade size for speed, but never so far that a card (opaque)
// grows past one and a half times what Cairo's own writer (zlib's default
// level, adaptive row filters) makes of it. Translucent pictures without
// text, all soft gradients, lose most to the missing filters.
TEST(PngWriter, StaysWithinHalfAgainCairosSize) {
    struct Case {
        bool opaque, withText;
        double most;
    };
    for (auto [opaque, withText, most] : {Case{true, false, 1.5}, {true, true, 1.5}, {false, false, 1.6}, {false, true, 1.5}}) {
        auto image = Image::create({390, 200}, 3);  // 1170 x 600 pixels
        CairoPtr context(cairo_create(cairoSurface(*image)));
        cairo_t* cr = context.get();
        if (opaque) cairo_set_source_rgb(cr, 0.07, 0.08, 0.12), cairo_paint(cr);
        for (int i = 0; i < 3; ++i) {  // gradient rings
            PatternPtr gradient(cairo_pattern_create_linear(0, 0, 1170, 600));
            cairo_pattern_add_color_stop_rgb(gradient.get(), 0, 0.2 * i, 0.8, 0.4);
            cairo_pattern_add_color_stop_rgb(gradient.get(), 1, 0.9, 0.3, 0.1 * i);
            cairo_set_source(cr, gradient.get()), cairo_set_line_width(cr, 40);
            cairo_arc(cr, 300, 300, 240 - 60 * i, -M_PI / 2, M_PI * (0.6 + 0.4 * i)), cairo_stroke(cr);
        }
        cairo_set_source_rgb(cr, 0.95, 0.95, 0.97), cairo_set_font_size(cr, 42);
        for (int line = 0; withText && line < 9; ++line)
            cairo_move_to(cr, 40, 60 + 60 * line), cairo_show_text(cr, "Time asleep 7 h 42 min, 93 % of the sleep you need");
        cairo_surface_flush(cairoSurface(*image));
        std::string cairo, ours = encodePng(*image);
        ASSERT_EQ(cairo_surface_write_to_png_stream(cairoSurface(*image), appendTo, &cairo), CAIRO_STATUS_SUCCESS);
        EXPECT_LE(double(ours.size()), most * double(cairo.size())) << opaque << withText << ": " << ours.size();
        EXPECT_EQ(decode(ours).width, 1170u);
    }
}

}  // namespace
