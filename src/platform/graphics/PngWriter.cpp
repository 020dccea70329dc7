#include "platform/graphics/PngWriter.h"

#include "platform/graphics/detail/CHandles.h"
#include "platform/graphics/detail/DeflateStream.h"
#include "platform/graphics/detail/ImageSurface.h"
#include "platform/graphics/detail/PngContainer.h"
#include "platform/graphics/detail/WideLoops.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>

#if defined(VELMORANT_HAND_WIDE)
#include <immintrin.h>
#endif

namespace velmorant::platform {
namespace {

using File = std::unique_ptr<std::FILE, CRelease<std::fclose>>;

// Bands are converted and compressed this many rows at a time (a card's band
// is as tall). igzip pays a fixed cost per call: a card in slices of 16 rows
// costs 4.7 M instructions more than in slices of 128.
constexpr int kSliceRows = 128;
// What a row conversion may write past the row's end.
constexpr std::size_t kSpareBytes = 8;

// The filter byte before each row: rows are stored as they are, which costs
// nothing to make; with igzip, Sub or Up filters made nearly every picture larger.
constexpr std::uint8_t kNoFilter = 0;

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

#if defined(VELMORANT_HAND_WIDE)
// Eight pixels at a time: each half shuffled into twelve bytes, the halves
// put side by side, and the 32-byte store runs eight bytes past them. The
// pixels converted.
__attribute__((target("avx2"))) int convertOpaqueEights(const std::uint32_t* in, int width, std::uint8_t* out) {
    const __m256i rgb = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, 3, 7, 11, 15,  //
                                         2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, 3, 7, 11, 15);
    const __m256i sideBySide = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);
    int x = 0;
    for (; x + 8 <= width; x += 8, out += 24) {
        const __m256i eight = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + x));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out),
                            _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(eight, rgb), sideBySide));
    }
    return x;
}
#endif

// PNG wants bytes in R, G, B order; Cairo's little-endian words hold B, G,
// R, A. Four pixels at a time are shuffled into twelve bytes, and each
// 16-byte store runs four bytes past them, over bytes written next (eight
// with AVX2): `out` needs eight bytes to spare.
VELMORANT_WIDE_LOOPS void convertOpaqueRow(const std::uint32_t* in, int width, std::uint8_t* out) {
    static_assert(std::endian::native == std::endian::little, "rows are converted for little-endian words");
    using Bytes = std::uint8_t __attribute__((vector_size(16)));
    int x = 0;
#if defined(VELMORANT_HAND_WIDE)
    if (kRunsAvx2) {
        x = convertOpaqueEights(in, width, out);
        out += 3 * std::size_t(x);
    }
#endif
    for (; x + 4 <= width; x += 4, out += 12) {
        Bytes four;
        std::memcpy(&four, in + x, sizeof four);
        // R, G, B of each pixel, then the four alphas (overwritten by the next store).
        four = __builtin_shufflevector(four, four, 2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, 3, 7, 11, 15);
        std::memcpy(out, &four, sizeof four);
    }
    for (; x < width; ++x, out += 3) {
        // 0xAARRGGBB swapped is 0xBBGGRRAA; shifted, its bytes in memory read R, G, B, 0.
        std::uint32_t rgb = __builtin_bswap32(in[x]) >> 8;
        std::memcpy(out, &rgb, sizeof rgb);
    }
}

// 2^24 / alpha, rounded up: (n * it) >> 24 is n / alpha, exactly, for every
// n below 2^16, without a division.
constexpr auto kReciprocals = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t alpha = 1; alpha < 256; ++alpha) table[alpha] = ((1u << 24) + alpha - 1) / alpha;
    return table;
}();

// R, G, B, A with straight alpha, each colour rounded to the nearest.
void convertRow(const std::uint32_t* in, int width, std::uint8_t* out) {
    for (int x = 0; x < width; ++x, out += 4) {
        std::uint32_t p = in[x], a = p >> 24;
        if (a != 0xff && a != 0) {
            const std::uint64_t reciprocal = kReciprocals[a];
            auto straight = [&](std::uint32_t c) { return std::uint32_t((c * 255 + a / 2) * reciprocal >> 24); };
            p = a << 24 | straight(p >> 16 & 0xff) << 16 | straight(p >> 8 & 0xff) << 8 | straight(p & 0xff);
        }
        // 0xAARRGGBB swapped is 0xBBGGRRAA, turned a byte right 0xAABBGGRR: in memory R, G, B, A.
        std::uint32_t rgba = std::rotr(__builtin_bswap32(p), 8);
        std::memcpy(out, &rgba, sizeof rgba);
    }
}

}  // namespace

struct PngEncoder::Impl {
    std::filesystem::path path;
    int width = 0, height = 0, rowsWritten = 0;
    bool alpha = false;
    File file;
    std::string bytes;
    std::unique_ptr<PngContainer> container;
    std::unique_ptr<DeflateStream> deflate;
    std::size_t rowBytes = 0;  // one row in the file's pixel layout, after its filter byte
    std::unique_ptr<std::uint8_t[]> slice;  // up to kSliceRows converted rows, then kSpareBytes
    std::string error;

    bool fail(std::string why) {
        if (error.empty()) error = std::move(why);
        return false;
    }
    bool append(const Pixels& pixels, int first, int count);
};

PngEncoder::PngEncoder(std::filesystem::path path, int pixelWidth, int pixelHeight, bool alpha,
                       const PngOptions& options)
    : impl_(std::make_unique<Impl>()) {
    Impl& impl = *impl_;
    impl.path = std::move(path);
    impl.width = pixelWidth;
    impl.height = pixelHeight;
    impl.alpha = alpha;
    if (pixelWidth <= 0 || pixelHeight <= 0) {
        impl.fail("an image without pixels cannot be written as PNG");
        return;
    }
    impl.rowBytes = 1 + std::size_t(pixelWidth) * (alpha ? 4 : 3);
    if (!impl.path.empty()) {
        impl.file.reset(std::fopen(impl.path.c_str(), "wb"));
        if (!impl.file) {
            impl.fail("cannot be opened for writing");
            return;
        }
    }
    impl.container = std::make_unique<PngContainer>(impl.file.get(), &impl.bytes);
    PngContainer& png = *impl.container;
    impl.deflate = std::make_unique<DeflateStream>(
        options.compressionLevel, [&png](const std::uint8_t* bytes, std::size_t size) { return png.imageData(bytes, size); });
    if (!impl.deflate->error().empty()) {
        impl.fail(impl.deflate->error());
        return;
    }
    if (!png.begin(pixelWidth, pixelHeight, alpha, options.description)) {
        impl.fail(png.error());
        return;
    }
    // Every byte is written before it is read: not cleared first.
    impl.slice = std::make_unique_for_overwrite<std::uint8_t[]>(
        impl.rowBytes * std::size_t(std::min(kSliceRows, pixelHeight)) + kSpareBytes);
}

PngEncoder::~PngEncoder() {
    if (impl_->file) finish();  // not finished by its owner: the partial file goes
}

bool PngEncoder::Impl::append(const Pixels& pixels, int first, int count) {
    // In order: each row's filter byte also covers the bytes the row before spilled into.
    for (int y = 0; y < count; ++y) {
        std::uint8_t* out = slice.get() + rowBytes * std::size_t(y);
        out[0] = kNoFilter;
        if (alpha) convertRow(pixels.row(first + y), width, out + 1);
        else convertOpaqueRow(pixels.row(first + y), width, out + 1);
    }
    rowsWritten += count;
    const bool last = rowsWritten == height;
    if (!deflate->add(slice.get(), rowBytes * std::size_t(count), last)) return fail(deflate->error());
    if (last && !container->end()) return fail(container->error());
    return true;
}

bool PngEncoder::append(const Image& band, int rows) {
    Impl& impl = *impl_;
    if (!impl.error.empty()) return false;
    if (band.pixelWidth() != impl.width) return impl.fail("a band is not as wide as the picture");
    const int count = rows < 0 ? band.pixelHeight() : std::min(rows, band.pixelHeight());
    if (impl.rowsWritten + count > impl.height) return impl.fail("more rows than the picture has");
    cairo_surface_flush(cairoSurface(band));
    const Pixels pixels(band);
    for (int first = 0; first < count; first += kSliceRows)
        if (!impl.append(pixels, first, std::min(kSliceRows, count - first))) return false;
    return true;
}

bool PngEncoder::finish() {
    Impl& impl = *impl_;
    if (impl.error.empty() && impl.rowsWritten != impl.height)
        impl.fail("only " + std::to_string(impl.rowsWritten) + " of " + std::to_string(impl.height) + " rows were drawn");
    impl.deflate.reset();
    impl.container.reset();
    if (impl.file) {
        bool closed = std::fclose(impl.file.release()) == 0;
        if (!closed) impl.fail("cannot be written completely");
        if (!impl.error.empty()) {
            std::error_code ignored;
            std::filesystem::remove(impl.path, ignored);
        }
    }
    if (!impl.error.empty()) impl.bytes.clear();
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
