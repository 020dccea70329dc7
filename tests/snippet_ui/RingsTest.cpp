// Pixel probes of the sleep rings at places their geometry fixes, and the
// shadow direction of a ring's head.
#include "SnippetUiTestSupport.h"

#include <limits>
#include <numbers>
#include <vector>

namespace velmorant::testing {
using palette::Pallet;

namespace {

constexpr double kPi = std::numbers::pi;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
const Rgba kWhite{1, 1, 1, 1};
const Rgba kClear{0, 0, 0, 0};

// The angle of a fraction of a turn, 0 straight up.
double tip(double fraction) { return (fraction - 0.25) * 2 * kPi; }

class RingsTest : public SnippetUiTest {
protected:
    // Sleep 0.8, quality 0.6, deep 0.45, heart rate 0.3: no two tips side by side.
    platform::ImagePtr draw(float side, float rating = 0.856f) {
        return ui->drawSleepRingsWithSize(side, 0.8f, 0.6f, 0.45f, 0.3f, rating, false);
    }
};

TEST_F(RingsTest, ShadowOfTheHeadTurnsWithTheQuarter) {
    struct Row { float percent; platform::Size offset; };
    const Row rows[] = {{-3, {2, 2}},      {0.25f, {2, 2}},  {0.26f, {-1, 1}}, {0.5f, {-1, 1}}, {0.51f, {-1, -1}},
                {0.75f, {-1, -1}}, {0.76f, {2, 0}},  {1, {2, 0}},
                // Past a full turn the head's shadow is that of the first lap.
                {1.3f, {-1, 1}},   {2.2f, {2, 0}},   {kNaN, {2, 0}}};
    for (const Row& row : rows) EXPECT_EQ(ui->getShadowForPercent(row.percent), row.offset) << row.percent;
}

// Each ring shows its colour just short of its tip and its track just past it;
// only the side of exactly 260 draws the rings white.
TEST_F(RingsTest, EachRingEndsAtItsFractionOnItsTrack) {
    Pallet palette = pallet();
    const Rgba track = rgb(ui->ringBkg());
    for (float side : {280.0f, 260.0f, 261.0f, 220.0f}) {
        const platform::ImagePtr image = draw(side);
        const double c = side / 2;
        const Point centre{c, c};
        struct Ring { const char* name; double radius; float fraction; };
        const Ring rings[] = {{"sleep", c - 19, 0.8f}, {"quality", c - 41, 0.6f}, {"deep", c - 63, 0.45f}, {"bpm", c - 85, 0.3f}};
        if (side == 280) {
            EXPECT_EQ(rings[0].radius, 121) << "radii at 280 are 121, 99, 77, 55";
        }
        for (const Ring& ring : rings) {
            const Rgba colour = side == 260 ? kWhite : rgb(palette.colourForBatteryChargePercent(ring.fraction));
            // 8 points back along the ring and 6 outwards: under the head, clear of the glyph.
            EXPECT_TRUE(pixelIs(*image, polar(centre, ring.radius + 6, tip(ring.fraction) - 8 / ring.radius), colour))
                << ring.name << " at " << side;
            // 30 points on, beyond the round cap and the head's shadow: the
            // track, 20 wide, with a 2-point gap outside it (the middle disc may
            // cover the inner edge of the innermost).
            const double past = tip(ring.fraction) + 30 / ring.radius;
            for (double across : {0.0, 9.0})
                EXPECT_TRUE(pixelIs(*image, polar(centre, ring.radius + across, past), track))
                    << ring.name << " at " << side << ", " << across << " across";
            EXPECT_LT(image->pixelAt(polar(centre, ring.radius + 11, past)).a, 0.6) << ring.name << " at " << side;
        }
        for (Point corner : {Point{0.5, 0.5}, Point{side - 0.5, 0.5}, Point{0.5, side - 0.5}, Point{side - 0.5, side - 0.5}})
            EXPECT_TRUE(pixelIs(*image, corner, kClear, 0)) << side;
    }
}

// The rating is a disc with a thin ring as long as the rating; none at 0 or
// less, and no disc in the monochrome style.
TEST_F(RingsTest, RatingDiscAndRing) {
    Pallet palette = pallet();
    const Rgba disc = rgb(palette.colourForClockFace(5, true));
    const Rgba tint = rgb(palette.highTintColour());
    struct Row { float side, rating; Rgba disc, ring; };
    const Row rows[] = {{280, 0.856f, disc, tint}, {280, 0.3f, disc, tint},     {280, 0, kClear, kClear},
                {280, -0.5f, kClear, kClear}, {260, 0.7f, kClear, kWhite}, {261, 0.7f, disc, tint}};
    for (const Row& row : rows) {
        const platform::ImagePtr image = draw(row.side, row.rating);
        const double c = row.side / 2, ringRadius = (c - 82) - 20;
        // Below the number, inside the ring; on the ring a tenth of a turn in, and just past its tip.
        EXPECT_TRUE(pixelIs(*image, {c, c + 20}, row.disc)) << row.side << " " << row.rating;
        EXPECT_TRUE(pixelIs(*image, polar({c, c}, ringRadius, tip(0.1)), row.ring)) << row.side << " " << row.rating;
        EXPECT_TRUE(pixelIs(*image, polar({c, c}, ringRadius, tip(row.rating) + 0.15), row.disc))
            << row.side << " " << row.rating;
    }
}

}  // namespace
}  // namespace velmorant::testing
