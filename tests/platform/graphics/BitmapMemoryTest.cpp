#include "platform/graphics/BitmapMemory.h"
#include "platform/graphics/Canvas.h"
#include "platform/graphics/FontSystem.h"
#include "platform/graphics/Image.h"
#include "platform/graphics/detail/ImageSurface.h"
#include "platform/graphics/detail/UninitialisedSurface.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>

using namespace velmorant::platform;

namespace {

const FontSystem& fonts() {
    static const FontSystem system(std::filesystem::path(VELMORANT_TEST_RESOURCE_DIR) / "fonts" / "fonts.conf");
    return system;
}

// Sets where large bitmaps come from while it lives.
class HugePages {
public:
    explicit HugePages(bool on) : before_(hugePageBitmaps()) { setHugePageBitmaps(on); }
    ~HugePages() { setHugePageBitmaps(before_); }
    HugePages(const HugePages&) = delete;
    HugePages& operator=(const HugePages&) = delete;

private:
    bool before_;
};

constexpr std::uintptr_t kTwoMiB = std::uintptr_t{2} << 20;

TEST(BitmapMemoryTest, EveryByteOfABitmapIsItsOwnWhereverItComesFrom) {
    struct Case {
        bool hugePages;
        cairo_format_t format;
        int width, height;
        bool onItsOwnMapping;  // starts on a 2 MiB boundary
    };
    const Case cases[] = {
        {false, CAIRO_FORMAT_ARGB32, 840, 840, false},
        {true, CAIRO_FORMAT_ARGB32, 840, 840, true},     // 2.8 MB: a whole block and a tail
        {true, CAIRO_FORMAT_ARGB32, 1024, 512, true},    // exactly 2 MiB
        {true, CAIRO_FORMAT_ARGB32, 1024, 511, false},   // 4 KiB short of it: the heap
        {true, CAIRO_FORMAT_A8, 1023, 2049, true},       // rows padded to their stride
        {true, CAIRO_FORMAT_ARGB32, 1170, 128, false},   // a card's band
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.width << "x" << c.height << (c.hugePages ? " huge pages" : " heap"));
        HugePages pages(c.hugePages);
        SurfacePtr surface = uninitialisedSurface(c.format, c.width, c.height);
        ASSERT_TRUE(surface);
        ASSERT_EQ(cairo_surface_status(surface.get()), CAIRO_STATUS_SUCCESS);
        EXPECT_EQ(cairo_image_surface_get_stride(surface.get()), cairo_format_stride_for_width(c.format, c.width));
        unsigned char* data = cairo_image_surface_get_data(surface.get());
        const auto address = reinterpret_cast<std::uintptr_t>(data);
        if (c.onItsOwnMapping) {
            EXPECT_EQ(address % kTwoMiB, 0u);
        }
        // Written to the last byte and read back: the mapping covers the whole bitmap.
        const std::size_t bytes = std::size_t(cairo_image_surface_get_stride(surface.get())) * c.height;
        std::memset(data, 0x5a, bytes);
        EXPECT_EQ(data[0], 0x5a);
        EXPECT_EQ(data[bytes - 1], 0x5a);
    }
}

TEST(BitmapMemoryTest, ALongTailIsMappedAsAWholeHugePage) {
    constexpr std::size_t kPage = 4096, kMiB = std::size_t{1} << 20;
    struct Case {
        std::size_t bytes, length;
    };
    const Case cases[] = {
        {2 * kMiB, 2 * kMiB},                             // whole huge pages only
        {2 * kMiB + 1, 2 * kMiB + kPage},                 // a byte over: one ordinary page more
        {3 * kMiB - kPage, 3 * kMiB - kPage},             // just short of half a huge page
        {3 * kMiB - kPage + 1, 4 * kMiB},                 // half of one once in whole pages
        {2822400, 690 * kPage},                           // a 280-point picture at scale 3
        {4 * kMiB + 100, 4 * kMiB + kPage},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.bytes);
        EXPECT_EQ(hugePageMappingLength(c.bytes, kPage), c.length);
    }
}

TEST(BitmapMemoryTest, EmptyOrImpossibleBitmapsAreNone) {
    HugePages pages(true);
    EXPECT_FALSE(uninitialisedSurface(CAIRO_FORMAT_ARGB32, 0, 840));
    EXPECT_FALSE(uninitialisedSurface(CAIRO_FORMAT_ARGB32, 840, -1));
    EXPECT_FALSE(uninitialisedSurface(CAIRO_FORMAT_ARGB32, 1 << 30, 4));
}

// A canvas on huge pages draws the pixels one on the heap does, cleared where nothing is drawn.
TEST(BitmapMemoryTest, ACanvasOnHugePagesDrawsTheSamePicture) {
    auto draw = [](bool hugePages) {
        HugePages pages(hugePages);
        Canvas canvas({280, 280}, 3, fonts());
        canvas.setFillColour(Colour::colorWithHue(0.6, 0.7, 0.8, 0.75));
        canvas.addRoundedRect({20, 30, 200, 150}, 24);
        canvas.fillPath();
        return canvas.makeImage();
    };
    ImagePtr heap = draw(false), huge = draw(true);
    ASSERT_TRUE(heap && huge);
    cairo_surface_t* a = cairoSurface(*heap);
    cairo_surface_t* b = cairoSurface(*huge);
    ASSERT_EQ(cairo_image_surface_get_stride(a), cairo_image_surface_get_stride(b));
    const std::size_t bytes = std::size_t(cairo_image_surface_get_stride(a)) * heap->pixelHeight();
    EXPECT_EQ(std::memcmp(cairo_image_surface_get_data(a), cairo_image_surface_get_data(b), bytes), 0);
    EXPECT_EQ(huge->pixelAt({5, 5}).a, 0);
}

}  // namespace
