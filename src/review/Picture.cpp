#include "Picture.h"

#include "BadInput.h"
#include "platform/graphics/detail/CHandles.h"

#include <spng.h>

#include <cstdlib>

namespace velmorant::review {
namespace {

using SpngContext = std::unique_ptr<spng_ctx, platform::CRelease<spng_ctx_free>>;

// Gallery pictures are at most 8192 pixels a side; anything claiming more is not ours.
constexpr std::uint32_t kMaxSide = 8192;

}  // namespace

Picture decodePng(std::string_view bytes, const std::string& name) {
    auto fail = [&](int e) { return BadInput(name + ": not a readable PNG (" + spng_strerror(e) + ")"); };
    SpngContext ctx(spng_ctx_new(0));
    if (!ctx) throw fail(SPNG_EMEM);
    // Damaged files are what this is for: checksums stay on, and a missing end is an error.
    if (int e = spng_set_png_buffer(ctx.get(), bytes.data(), bytes.size())) throw fail(e);
    spng_ihdr header{};
    if (int e = spng_get_ihdr(ctx.get(), &header)) throw fail(e);
    if (header.width > kMaxSide || header.height > kMaxSide)
        throw BadInput(name + ": a " + std::to_string(header.width) + " x " + std::to_string(header.height) +
                       " picture is larger than any gallery picture");
    std::size_t size = 0;
    if (int e = spng_decoded_image_size(ctx.get(), SPNG_FMT_RGBA8, &size)) throw fail(e);
    Picture picture{header.width, header.height, std::vector<std::uint8_t>(size)};
    if (int e = spng_decode_image(ctx.get(), picture.rgba.data(), size, SPNG_FMT_RGBA8, 0)) throw fail(e);
    return picture;
}

std::string encodePng(const Picture& picture) {
    SpngContext ctx(spng_ctx_new(SPNG_CTX_ENCODER));
    spng_set_option(ctx.get(), SPNG_ENCODE_TO_BUFFER, 1);
    // Difference pictures are mostly flat: no row filters and a fast zlib level keep them quick and small.
    spng_set_option(ctx.get(), SPNG_IMG_COMPRESSION_LEVEL, 1);
    spng_set_option(ctx.get(), SPNG_FILTER_CHOICE, SPNG_DISABLE_FILTERING);
    spng_ihdr header{};
    header.width = picture.width;
    header.height = picture.height;
    header.bit_depth = 8;
    header.color_type = SPNG_COLOR_TYPE_TRUECOLOR_ALPHA;
    spng_set_ihdr(ctx.get(), &header);
    int e = spng_encode_image(ctx.get(), picture.rgba.data(), picture.rgba.size(), SPNG_FMT_PNG,
                              SPNG_ENCODE_FINALIZE);
    std::size_t length = 0;
    void* buffer = e ? nullptr : spng_get_png_buffer(ctx.get(), &length, &e);
    if (!buffer) throw std::runtime_error(std::string("cannot encode a difference picture: ") + spng_strerror(e));
    std::string bytes(static_cast<const char*>(buffer), length);
    std::free(buffer);
    return bytes;
}

}  // namespace velmorant::review
