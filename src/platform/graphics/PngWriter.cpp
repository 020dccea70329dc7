#include "platform/graphics/PngWriter.h"

#include "platform/graphics/detail/CHandles.h"
#include "platform/graphics/detail/ImageSurface.h"

#include <spng.h>
#include <zlib.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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
        : data(cairo_image_surface_get_data(cairoSurface(image))),
          width(image.pixelWidth()),
          height(image.pixelHeight()),
          stride(cairo_image_surface_get_stride(cairoSurface(image))) {}
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

// PNG wants bytes in R, G, B order. Each pixel is stored as a whole word and
// the next overwrites its fourth byte, so `out` needs one byte to spare.
void convertOpaqueRow(const std::uint32_t* in, int width, std::uint8_t* out) {
    static_assert(std::endian::native == std::endian::little, "rows are converted for little-endian words");
    for (int x = 0; x < width; ++x, out += 3) {
        // 0xAARRGGBB swapped is 0xBBGGRRAA; shifted, its bytes in memory read R, G, B, 0.
        std::uint32_t rgb = __builtin_bswap32(in[x]) >> 8;
        std::memcpy(out, &rgb, sizeof rgb);
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

// Sets up an encoder for a picture of the given size; 0 or a libspng error.
// libspng keeps a pointer to the description's bytes until the file is finished.
int start(spng_ctx* ctx, int width, int height, bool alpha, const PngOptions& options, std::string& description) {
    spng_ihdr ihdr{};
    ihdr.width = std::uint32_t(width);
    ihdr.height = std::uint32_t(height);
    ihdr.bit_depth = 8;
    ihdr.color_type = alpha ? SPNG_COLOR_TYPE_TRUECOLOR_ALPHA : SPNG_COLOR_TYPE_TRUECOLOR;
    if (int e = spng_set_ihdr(ctx, &ihdr)) return e;
    if (int e = spng_set_option(ctx, SPNG_IMG_COMPRESSION_LEVEL, options.compressionLevel)) return e;
    if (int e = spng_set_option(ctx, SPNG_FILTER_CHOICE, filterChoice(options.filter))) return e;
    if (int e = spng_set_option(ctx, SPNG_IMG_COMPRESSION_STRATEGY, zlibStrategy(options.strategy))) return e;
    if (int e = spng_set_option(ctx, SPNG_IMG_WINDOW_BITS, options.windowBits)) return e;
    if (int e = spng_set_option(ctx, SPNG_IMG_MEM_LEVEL, options.memLevel)) return e;
    if (!description.empty()) {
        char* empty = description.data() + description.size();  // the string's terminating NUL
        spng_text text{};
        std::snprintf(text.keyword, sizeof text.keyword, "%s", "Description");
        text.type = SPNG_ITXT;
        text.length = description.size();
        text.text = description.data();
        text.language_tag = empty;
        text.translated_keyword = empty;
        if (int e = spng_set_text(ctx, &text, 1)) return e;
    }
    return spng_encode_image(ctx, nullptr, 0, SPNG_FMT_PNG, SPNG_ENCODE_PROGRESSIVE | SPNG_ENCODE_FINALIZE);
}

}  // namespace

struct PngEncoder::Impl {
    std::filesystem::path path;
    int width = 0, height = 0, rowsWritten = 0;
    bool alpha = false;
    File file;
    SpngContext ctx;
    std::size_t rowBytes = 0;  // one row in the file's pixel layout
    std::string description;
    std::string error;
    std::string bytes;

    bool fail(std::string why) {
        if (error.empty()) error = std::move(why);
        return false;
    }
    bool check(int e) { return e == 0 || e == SPNG_EOI || fail(spng_strerror(e)); }
};

PngEncoder::PngEncoder(std::filesystem::path path, int pixelWidth, int pixelHeight, bool alpha,
                       const PngOptions& options)
    : impl_(std::make_unique<Impl>()) {
    Impl& impl = *impl_;
    impl.path = std::move(path);
    impl.width = pixelWidth;
    impl.height = pixelHeight;
    impl.alpha = alpha;
    impl.rowBytes = std::size_t(std::max(pixelWidth, 0)) * (alpha ? 4 : 3);
    if (pixelWidth <= 0 || pixelHeight <= 0) {
        impl.fail("an image without pixels cannot be written as PNG");
        return;
    }
    impl.ctx.reset(spng_ctx_new(SPNG_CTX_ENCODER));
    if (!impl.ctx) {
        impl.fail(spng_strerror(SPNG_EMEM));
        return;
    }
    if (impl.path.empty()) {
        if (!impl.check(spng_set_option(impl.ctx.get(), SPNG_ENCODE_TO_BUFFER, 1))) return;
    } else {
        impl.file.reset(std::fopen(impl.path.c_str(), "wb"));
        if (!impl.file) {
            impl.fail("cannot be opened for writing");
            return;
        }
        if (!impl.check(spng_set_png_file(impl.ctx.get(), impl.file.get()))) return;
    }
    impl.description = options.description;
    if (!impl.check(start(impl.ctx.get(), pixelWidth, pixelHeight, alpha, options, impl.description))) return;
}

PngEncoder::~PngEncoder() {
    if (impl_->file) finish();  // not finished by its owner: the partial file goes
}

PngEncoder::Rows PngEncoder::convert(const Image& band, int rows) const {
    const Impl& impl = *impl_;
    Rows converted;
    if (band.pixelWidth() != impl.width) {
        converted.wrongWidth = true;
        return converted;
    }
    converted.count = rows < 0 ? band.pixelHeight() : std::min(rows, band.pixelHeight());
    const std::size_t rowBytes = impl.rowBytes;
    // Every byte is written before it is read: not cleared first.
    converted.bytes = std::make_unique_for_overwrite<std::uint8_t[]>(rowBytes * std::size_t(converted.count) + 1);
    cairo_surface_flush(cairoSurface(band));
    Pixels pixels(band);
    for (int y = 0; y < converted.count; ++y) {
        std::uint8_t* out = converted.bytes.get() + rowBytes * std::size_t(y);
        if (impl.alpha) convertRow(pixels.row(y), pixels.width, out);
        else convertOpaqueRow(pixels.row(y), pixels.width, out);
    }
    return converted;
}

bool PngEncoder::append(const Rows& rows) {
    Impl& impl = *impl_;
    if (!impl.error.empty() || !impl.ctx) return false;
    if (rows.wrongWidth) return impl.fail("a band is not as wide as the picture");
    if (impl.rowsWritten + rows.count > impl.height) return impl.fail("more rows than the picture has");
    const std::size_t rowBytes = impl.rowBytes;
    for (int y = 0; y < rows.count; ++y) {
        const std::uint8_t* row = rows.bytes.get() + rowBytes * std::size_t(y);
        if (!impl.check(spng_encode_row(impl.ctx.get(), row, rowBytes))) return false;
        ++impl.rowsWritten;
    }
    return true;
}

bool PngEncoder::finish() {
    Impl& impl = *impl_;
    if (impl.error.empty() && impl.rowsWritten != impl.height)
        impl.fail("only " + std::to_string(impl.rowsWritten) + " of " + std::to_string(impl.height) + " rows were drawn");
    if (impl.error.empty() && impl.path.empty()) {
        int e = 0;
        std::size_t length = 0;
        void* buffer = spng_get_png_buffer(impl.ctx.get(), &length, &e);
        if (impl.check(e) && buffer) impl.bytes.assign(static_cast<const char*>(buffer), length);
        std::free(buffer);
    }
    impl.ctx.reset();
    if (impl.file) {
        bool closed = std::fclose(impl.file.release()) == 0;
        if (!closed) impl.fail("cannot be written completely");
        if (!impl.error.empty()) {
            std::error_code ignored;
            std::filesystem::remove(impl.path, ignored);
        }
    }
    return impl.error.empty();
}

const std::string& PngEncoder::error() const { return impl_->error; }
std::string PngEncoder::bytes() const { return impl_->bytes; }

bool isOpaque(const Image& image) {
    cairo_surface_flush(cairoSurface(image));
    return Pixels(image).opaque();
}

bool writePng(const Image& image, const std::filesystem::path& path, const PngOptions& options, std::string* error) {
    PngEncoder encoder(path, image.pixelWidth(), image.pixelHeight(), !isOpaque(image), options);
    encoder.append(image);
    if (encoder.finish()) return true;
    if (error) *error = encoder.error();
    return false;
}

std::string encodePng(const Image& image, const PngOptions& options, std::string* error) {
    PngEncoder encoder({}, image.pixelWidth(), image.pixelHeight(), !isOpaque(image), options);
    encoder.append(image);
    if (encoder.finish()) return encoder.bytes();
    if (error) *error = encoder.error();
    return {};
}

}  // namespace velmorant::platform
