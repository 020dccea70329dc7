#include "PngWriter.h"

#include "CHandles.h"
#include "Image.h"

#include <spng.h>
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace velmorant::platform {
namespace {

using SpngContext = std::unique_ptr<spng_ctx, CRelease<spng_ctx_free>>;
using File = std::unique_ptr<std::FILE, CRelease<std::fclose>>;

int filterChoice(PngFilter filter) {
    switch (filter) {
        case PngFilter::None: return SPNG_FILTER_CHOICE_NONE;
        case PngFilter::Sub: return SPNG_FILTER_CHOICE_SUB;
        case PngFilter::Up: return SPNG_FILTER_CHOICE_UP;
        case PngFilter::Average: return SPNG_FILTER_CHOICE_AVG;
        case PngFilter::Paeth: return SPNG_FILTER_CHOICE_PAETH;
        case PngFilter::Adaptive: return SPNG_FILTER_CHOICE_ALL;
    }
    return SPNG_FILTER_CHOICE_ALL;
}

int zlibStrategy(PngStrategy strategy) {
    switch (strategy) {
        case PngStrategy::Default: return Z_DEFAULT_STRATEGY;
        case PngStrategy::Filtered: return Z_FILTERED;
        case PngStrategy::HuffmanOnly: return Z_HUFFMAN_ONLY;
        case PngStrategy::RunLength: return Z_RLE;
    }
    return Z_DEFAULT_STRATEGY;
}

// The bitmap's rows as Cairo keeps them: premultiplied native-endian ARGB words.
struct Pixels {
    const unsigned char* data;
    int width, height, stride;

    explicit Pixels(const Image& image)
        : data(cairo_image_surface_get_data(image.surface())),
          width(image.pixelWidth()),
          height(image.pixelHeight()),
          stride(cairo_image_surface_get_stride(image.surface())) {}
    const std::uint32_t* row(int y) const { return reinterpret_cast<const std::uint32_t*>(data + std::size_t(y) * stride); }

    bool opaque() const {
        for (int y = 0; y < height; ++y) {
            const std::uint32_t* r = row(y);
            std::uint32_t all = 0xffffffff;
            for (int x = 0; x < width; ++x) all &= r[x];
            if ((all >> 24) != 0xff) return false;
        }
        return true;
    }
};

// PNG wants bytes in R, G, B order.
void convertOpaqueRow(const std::uint32_t* in, int width, std::uint8_t* out) {
    for (int x = 0; x < width; ++x, out += 3) {
        std::uint32_t p = in[x];
        out[0] = std::uint8_t(p >> 16);
        out[1] = std::uint8_t(p >> 8);
        out[2] = std::uint8_t(p);
    }
}

// R, G, B, A with straight alpha.
void convertRow(const std::uint32_t* in, int width, std::uint8_t* out) {
    for (int x = 0; x < width; ++x, out += 4) {
        std::uint32_t p = in[x];
        std::uint32_t a = p >> 24, r = (p >> 16) & 0xff, g = (p >> 8) & 0xff, b = p & 0xff;
        if (a != 0xff && a != 0) {
            r = (r * 255 + a / 2) / a;
            g = (g * 255 + a / 2) / a;
            b = (b * 255 + a / 2) / a;
        }
        out[0] = std::uint8_t(r);
        out[1] = std::uint8_t(g);
        out[2] = std::uint8_t(b);
        out[3] = std::uint8_t(a);
    }
}

// Sets up the encoder and feeds it the bitmap row by row; 0 or a libspng error.
int encode(spng_ctx* ctx, const Image& image, const PngOptions& options) {
    cairo_surface_flush(image.surface());
    Pixels pixels(image);
    bool opaque = pixels.opaque();
    spng_ihdr ihdr{};
    ihdr.width = std::uint32_t(image.pixelWidth());
    ihdr.height = std::uint32_t(image.pixelHeight());
    ihdr.bit_depth = 8;
    ihdr.color_type = opaque ? SPNG_COLOR_TYPE_TRUECOLOR : SPNG_COLOR_TYPE_TRUECOLOR_ALPHA;
    if (int e = spng_set_ihdr(ctx, &ihdr)) return e;
    if (int e = spng_set_option(ctx, SPNG_IMG_COMPRESSION_LEVEL, options.compressionLevel)) return e;
    if (int e = spng_set_option(ctx, SPNG_FILTER_CHOICE, filterChoice(options.filter))) return e;
    if (int e = spng_set_option(ctx, SPNG_IMG_COMPRESSION_STRATEGY, zlibStrategy(options.strategy))) return e;
    std::string description = options.description;
    char empty[1] = "";
    spng_text text{};
    if (!description.empty()) {
        std::snprintf(text.keyword, sizeof text.keyword, "%s", "Description");
        text.type = SPNG_ITXT;
        text.length = description.size();
        text.text = description.data();
        text.language_tag = empty;
        text.translated_keyword = empty;
        if (int e = spng_set_text(ctx, &text, 1)) return e;
    }
    if (int e = spng_encode_image(ctx, nullptr, 0, SPNG_FMT_PNG, SPNG_ENCODE_PROGRESSIVE | SPNG_ENCODE_FINALIZE))
        return e;
    std::vector<std::uint8_t> row(std::size_t(pixels.width) * (opaque ? 3 : 4));
    for (int y = 0; y < pixels.height; ++y) {
        if (opaque) convertOpaqueRow(pixels.row(y), pixels.width, row.data());
        else convertRow(pixels.row(y), pixels.width, row.data());
        int e = spng_encode_row(ctx, row.data(), row.size());
        if (e == SPNG_EOI) break;
        if (e) return e;
    }
    return 0;
}

bool hasPixels(const Image& image, std::string* error) {
    if (image.pixelWidth() > 0 && image.pixelHeight() > 0) return true;
    if (error) *error = "an image without pixels cannot be written as PNG";
    return false;
}

}  // namespace

bool writePng(const Image& image, const std::filesystem::path& path, const PngOptions& options, std::string* error) {
    if (!hasPixels(image, error)) return false;
    File file(std::fopen(path.c_str(), "wb"));
    if (!file) {
        if (error) *error = "cannot be opened for writing";
        return false;
    }
    SpngContext ctx(spng_ctx_new(SPNG_CTX_ENCODER));
    int e = ctx ? spng_set_png_file(ctx.get(), file.get()) : SPNG_EMEM;
    if (!e) e = encode(ctx.get(), image, options);
    ctx.reset();
    bool closed = std::fclose(file.release()) == 0;
    if (e || !closed) {
        if (error) *error = e ? spng_strerror(e) : "cannot be written completely";
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
        return false;
    }
    return true;
}

std::string encodePng(const Image& image, const PngOptions& options, std::string* error) {
    if (!hasPixels(image, error)) return {};
    SpngContext ctx(spng_ctx_new(SPNG_CTX_ENCODER));
    int e = ctx ? spng_set_option(ctx.get(), SPNG_ENCODE_TO_BUFFER, 1) : SPNG_EMEM;
    if (!e) e = encode(ctx.get(), image, options);
    std::size_t length = 0;
    void* buffer = e ? nullptr : spng_get_png_buffer(ctx.get(), &length, &e);
    if (e || !buffer) {
        if (error) *error = spng_strerror(e ? e : SPNG_EMEM);
        return {};
    }
    std::string png(static_cast<const char*>(buffer), length);
    std::free(buffer);
    return png;
}

}  // namespace velmorant::platform
