// Pictures drawn on demand: every way of reading pixels draws them, once,
// whichever thread asks first, and they are the pixels drawn at once.
#include "platform/graphics/Canvas.h"
#include "platform/graphics/FontSystem.h"
#include "platform/graphics/Image.h"
#include "platform/graphics/PngWriter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

using namespace velmorant::platform;

namespace {

const FontSystem& fonts() {
    static const FontSystem system(std::filesystem::path(VELMORANT_TEST_RESOURCE_DIR) / "fonts" / "fonts.conf");
    return system;
}

constexpr Size kSide{60, 40};
constexpr double kScale = 3;

// A stroke under a shadow and a line of text: the costly kinds of drawing.
ImagePtr drawNow() {
    Canvas canvas(kSide, kScale, fonts());
    canvas.strokeArc({30, 20}, 14, 0, 4, {6, LineCap::Round, Colour::systemRedColor(), Shadow::soft(3)});
    canvas.drawAtPoint("7 h", {4, 4}, {Font::boldSystemFontOfSize(12), Colour::whiteColor()});
    return canvas.makeImage();
}

// The same, drawn when first read; `drawings` counts the drawings.
ImagePtr drawLater(std::atomic<int>& drawings) {
    return Canvas::drawLater(kSide, kScale, [&drawings] {
        ++drawings;
        return drawNow();
    });
}

std::string png(const Image& image) { return encodePng(image); }

}  // namespace

TEST(DrawLater, EveryPixelReaderDrawsThePixelsDrawnAtOnce) {
    const std::string expected = png(*drawNow());
    struct Reader {
        const char* name;
        std::function<void(const ImagePtr&)> read;
    };
    const Reader readers[] = {
        {"pixelAt", [](const ImagePtr& image) { image->pixelAt({30, 20}); }},
        {"encodePng", [](const ImagePtr& image) { png(*image); }},
        {"isOpaque", [](const ImagePtr& image) { isOpaque(*image); }},
        {"drawImage", [](const ImagePtr& image) { Canvas(kSide, kScale, fonts()).drawImage(image, {0, 0, 60, 40}); }},
        {"drawLayer", [](const ImagePtr& image) { Canvas(kSide, kScale, fonts()).drawLayer(*image, {0, 0, 60, 40}); }},
    };
    for (const Reader& reader : readers) {
        std::atomic<int> drawings = 0;
        ImagePtr image = drawLater(drawings);
        EXPECT_EQ(drawings, 0) << reader.name;
        reader.read(image);
        EXPECT_EQ(drawings, 1) << reader.name;
        EXPECT_TRUE(image->isDrawn()) << reader.name;
        EXPECT_EQ(png(*image), expected) << reader.name;
        EXPECT_EQ(drawings, 1) << reader.name;
    }
}

TEST(DrawLater, ReadersOnSeveralThreadsAtOnceShareOneDrawing) {
    std::atomic<int> drawings = 0;
    ImagePtr image = drawLater(drawings);
    const std::uint64_t before = Image::drawingsOnDemand();
    std::atomic<int> waiting = 4;
    std::vector<std::string> seen(4);
    std::vector<std::thread> readers;
    for (int i = 0; i < 4; ++i)
        readers.emplace_back([&, i] {
            // All start together, so that they race to draw.
            --waiting;
            while (waiting > 0) std::this_thread::yield();
            seen[i] = png(*image);
        });
    for (std::thread& reader : readers) reader.join();
    EXPECT_EQ(drawings, 1);
    EXPECT_EQ(Image::drawingsOnDemand(), before + 1);
    for (const std::string& bytes : seen) EXPECT_EQ(bytes, seen[0]);
    EXPECT_EQ(seen[0], png(*drawNow()));
}

TEST(DrawLater, AFailedDrawingLeavesATransparentPictureOfThePromisedSize) {
    const std::function<ImagePtr()> failures[] = {
        [] { return ImagePtr(); },
        [] { return Canvas({10, 10}, kScale, fonts()).makeImage(); },  // another size
    };
    for (const auto& failure : failures) {
        ImagePtr image = Canvas::drawLater(kSide, kScale, failure);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->pixelAt({30, 20}).a, 0);
        EXPECT_EQ(image->pixelWidth(), 180);
        EXPECT_EQ(image->pixelHeight(), 120);
        EXPECT_FALSE(png(*image).empty());
    }
}
