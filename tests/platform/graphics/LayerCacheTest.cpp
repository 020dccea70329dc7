// Layers are kept from the second time they are asked for, per key, size and
// scale, and no more of them, nor bytes, than the cache holds; only a canvas
// nothing has been drawn on yet takes one.
#include "platform/graphics/LayerCache.h"

#include "platform/graphics/FontSystem.h"
#include "platform/graphics/Image.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace velmorant {
using platform::LayerCache;
using platform::LayerKey;

namespace {

using platform::Canvas;
using platform::Colour;

const platform::FontSystem& fonts() {
    static const platform::FontSystem system(std::filesystem::path(VELMORANT_TEST_RESOURCE_DIR) / "fonts" /
                                             "fonts.conf");
    return system;
}

class LayerCacheTest : public ::testing::Test {
protected:
    // Draws the layer under `key` on a fresh canvas; true when its steps ran.
    bool drawsSteps(const LayerKey& key, platform::Size size = {50, 50}, double scale = 2, bool drawnOn = false) {
        Canvas canvas(size, scale, fonts());
        if (drawnOn) canvas.addRoundedRect({0, 0, 5, 5}, 0), canvas.fillPath();
        bool ran = false;
        cache.draw(canvas, key, fonts(), [&](Canvas& layer) {
            ran = true;
            layer.setFillColour(Colour::whiteColor());
            layer.addRoundedRect({10, 10, 20, 20}, 0);
            layer.fillPath();
        });
        painted = canvas.makeImage()->pixelAt({20, 20}).a == 1;
        return ran;
    }

    LayerCache cache{2};
    bool painted = false;
};

TEST_F(LayerCacheTest, KeptFromTheSecondAskAndPaintedEveryTime) {
    const LayerKey key = LayerKey().add(1).add(Colour::whiteColor());
    EXPECT_TRUE(drawsSteps(key)) << "first: drawn in place";
    EXPECT_TRUE(painted);
    EXPECT_TRUE(drawsSteps(key)) << "second: drawn as a layer and kept";
    EXPECT_TRUE(painted);
    EXPECT_FALSE(drawsSteps(key)) << "third: from the kept layer";
    EXPECT_TRUE(painted);
}

// Laid over earlier drawing a layer would round unlike its steps drawn there.
TEST_F(LayerCacheTest, OverEarlierDrawingTheStepsAreDrawnInPlace) {
    const LayerKey key = LayerKey().add(1);
    for (int ask = 0; ask < 3; ++ask) EXPECT_TRUE(drawsSteps(key, {50, 50}, 2, true)) << ask;
    for (int ask = 0; ask < 2; ++ask) drawsSteps(key);
    EXPECT_TRUE(drawsSteps(key, {50, 50}, 2, true)) << "kept, yet not used";
    EXPECT_TRUE(painted);
    EXPECT_FALSE(drawsSteps(key));
}

TEST_F(LayerCacheTest, KeySizeAndScaleEachTellLayersApart) {
    const LayerKey key = LayerKey().add(1).add("name");
    for (int ask = 0; ask < 2; ++ask) drawsSteps(key);
    struct Row { LayerKey key; platform::Size size; double scale; const char* what; };
    const Row rows[] = {{LayerKey().add(1).add("other"), {50, 50}, 2, "text"},
                        {LayerKey().add(2).add("name"), {50, 50}, 2, "number"},
                        {LayerKey().add(1).add(Colour::blackColor()), {50, 50}, 2, "colour"},
                        {key, {60, 50}, 2, "size"},
                        {key, {50, 50}, 3, "scale"}};
    for (const Row& row : rows) EXPECT_TRUE(drawsSteps(row.key, row.size, row.scale)) << row.what;
    EXPECT_FALSE(drawsSteps(key)) << "still kept";
}

TEST_F(LayerCacheTest, HoldsNoMoreLayersThanAskedTheLeastRecentlyUsedGoes) {
    const LayerKey a = LayerKey().add(1), b = LayerKey().add(2), c = LayerKey().add(3);
    for (const LayerKey* key : {&a, &a, &b, &b}) drawsSteps(*key);
    EXPECT_FALSE(drawsSteps(a)) << "a used last";
    for (int ask = 0; ask < 2; ++ask) drawsSteps(c);
    EXPECT_FALSE(drawsSteps(a));
    EXPECT_FALSE(drawsSteps(c));
    EXPECT_TRUE(drawsSteps(b)) << "b went to make room for c";
}

TEST_F(LayerCacheTest, HoldsNoMoreBytesThanAskedALayerTooLargeIsNeverKept) {
    // A 50-point layer at scale 2 takes 40,000 bytes.
    struct Row { std::size_t bytes; bool aKept, bKept; const char* what; };
    const Row rows[] = {{39'999, false, false, "neither fits"},
                        {40'000, false, true, "one fits: a goes for b"},
                        {80'000, true, true, "both fit"}};
    const LayerKey a = LayerKey().add(1), b = LayerKey().add(2);
    for (const Row& row : rows) {
        cache = LayerCache(8, row.bytes);
        for (const LayerKey* key : {&a, &a, &b, &b}) drawsSteps(*key);
        EXPECT_EQ(!drawsSteps(b), row.bKept) << row.what;
        EXPECT_TRUE(painted) << row.what;
        EXPECT_EQ(!drawsSteps(a), row.aKept) << row.what;
    }
}

}  // namespace
}  // namespace velmorant
