#include "review/PixelCompare.h"

#include <gtest/gtest.h>

namespace review = velmorant::review;

namespace {

// A 6 x 6 picture: black in the first `edge` columns, then `rest` grey.
review::Picture edgePicture(std::uint32_t edge, std::uint8_t rest) {
    review::Picture p{6, 6, std::vector<std::uint8_t>(6 * 6 * 4, 255)};
    for (std::uint32_t y = 0; y < 6; ++y)
        for (std::uint32_t x = 0; x < 6; ++x)
            for (int c = 0; c < 3; ++c) p.rgba[(y * 6 + x) * 4 + c] = x < edge ? 0 : rest;
    return p;
}

void setPixel(review::Picture& p, std::uint32_t x, std::uint32_t y, std::uint8_t grey) {
    for (int c = 0; c < 3; ++c) p.rgba[(y * p.width + x) * 4 + c] = grey;
}

TEST(PixelCompare, DistanceWeighsBrightnessMost) {
    const std::uint8_t black[] = {0, 0, 0, 255}, white[] = {255, 255, 255, 255}, clear[] = {0, 0, 0, 0};
    EXPECT_NEAR(review::yiqDistance(black, white), 0.5053 * 255 * 255, 1);
    EXPECT_LE(review::yiqDistance(black, white), review::kMaxYiqDistance);
    EXPECT_EQ(review::yiqDistance(clear, white), 0);  // laid over white, as the page it sits on
}

TEST(PixelCompare, ChangeAntiAliasingAndThreshold) {
    struct Case {
        const char* what;
        std::uint32_t x, y;
        std::uint8_t grey;
        double threshold;
        std::uint64_t changed, antiAliased;
    };
    const Case cases[] = {
        {"a lone pixel in a flat area", 4, 3, 0, 0.1, 1, 0},
        {"a shade on the edge its neighbours explain", 2, 3, 128, 0.1, 0, 1},
        {"a faint shift under the threshold", 4, 3, 250, 0.1, 0, 0},
        {"the same shift with no threshold", 4, 3, 250, 0, 1, 0},
    };
    const review::Picture before = edgePicture(2, 255);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        review::Picture after = before;
        setPixel(after, c.x, c.y, c.grey);
        review::PictureDifference d = review::comparePictures(before, after, c.threshold);
        EXPECT_EQ(d.changedPixels, c.changed);
        EXPECT_EQ(d.antiAliasedPixels, c.antiAliased);
        if (c.changed + c.antiAliased) {
            EXPECT_EQ(d.left, c.x);
            EXPECT_EQ(d.top, c.y);
            EXPECT_EQ(d.right, c.x + 1);
            // The difference picture marks it in its own colour and fades the rest.
            review::Picture shown = review::differencePicture(after, d);
            const std::uint8_t* mark = shown.rgba.data() + (c.y * 6 + c.x) * 4;
            EXPECT_EQ(mark[0], 255);
            EXPECT_EQ(mark[1], c.changed ? 40 : 200);
            EXPECT_LT(shown.rgba[(1 * 6 + 5) * 4], 100);
        }
    }
}

TEST(PixelCompare, PicturesOfAnotherSizeDiffer) {
    review::Picture small{2, 2, std::vector<std::uint8_t>(16, 0)};
    EXPECT_TRUE(review::comparePictures(small, edgePicture(2, 255), 0.1).sizeDiffers);
}

}  // namespace
