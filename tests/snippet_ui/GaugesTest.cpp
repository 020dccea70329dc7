// Pixel probes of the dial gauges at places their geometry fixes.
#include "SnippetUiTestSupport.h"
#include "platform/graphics/FontSystem.h"

#include <limits>
#include <numbers>
#include <vector>

namespace velmorant::testing {
using palette::Pallet;

namespace {

enum class Dial { SpO2, Resp, Consistency, Wrist, Readiness, Fuel, ReadinessBare };
constexpr const char* kNames[] = {"spO2", "resp", "consistency", "wrist", "readiness", "fuel", "readinessBare"};
constexpr Dial kDials[] = {Dial::SpO2, Dial::Resp, Dial::Consistency, Dial::Wrist, Dial::Readiness, Dial::Fuel};

// Where a dial fraction points: 0.8 of a turn from down-left over the top.
double dialAngle(double fraction) { return (0.8 * fraction - 0.65) * 2 * std::numbers::pi; }
double spO2(double percent) { return (percent - 80) / 20; }
double stars(double value) { return value / 7; }

const Rgba kBlack{0, 0, 0, 1};
const Rgba kClear{0, 0, 0, 0};
bool isWhite(Rgba c) { return c.r > 0.97 && c.g > 0.97 && c.b > 0.97 && c.a > 0.97; }

class GaugesTest : public SnippetUiTest {
protected:
    // The readiness dials take "value" and "label" from the record.
    platform::ImagePtr draw(Dial dial, const Dictionary& record, float side = 280) {
        const Value* label = record.objectForKey("label");
        auto text = label && label->string() ? std::optional(*label->string()) : std::nullopt;
        const float value = record.objectForKey("value") ? record.objectForKey("value")->floatValue() : 0;
        switch (dial) {
            case Dial::SpO2: return ui->drawSpO2GaugeWithSize(side, record);
            case Dial::Resp: return ui->drawRespRateGaugeWithSize(side, record);
            case Dial::Consistency: return ui->drawConsistencyGaugeWithSize(side, record);
            case Dial::Wrist: return ui->drawWristTempGaugeWithSize(side, record);
            case Dial::Readiness: return ui->drawReadiRingsWithSize(side, value, text, 2);
            case Dial::Fuel: return ui->drawReadiRingsWithSize(side, value, text, 1);
            case Dial::ReadinessBare: return ui->drawReadiRingsWithSize(side, value);
        }
        return nullptr;
    }
    // A record whose needle rests at the scale's start (low) or end.
    static Dictionary needleAt(Dial dial, bool high) {
        switch (dial) {
            case Dial::SpO2: return {{"averageSpO2", high ? 100 : 0}};
            case Dial::Resp: return {{"averageRespRate", high ? 40 : 0}};
            case Dial::Consistency: return {{"bedTrend", high ? 9000 : -9000}};
            case Dial::Wrist: return {{"wristTempScore", high ? 7 : 0}};
            default: return {{"value", high ? 3 : 0}};
        }
    }
    Rgba disc() const { return rgb(ui->gaugeBkg()); }
};

TEST_F(GaugesTest, FrameDiscTrackAndClearCorners) {
    // Side, widget, disc radius R; the track is 25 wide at R + 1.
    for (auto [side, widget, radius] : {std::tuple{280.0f, false, 115.0}, std::tuple{220.0f, true, 85.0}}) {
        ui->widgetMode = widget;
        for (Dial dial : kDials) {
            SCOPED_TRACE(::testing::Message() << kNames[int(dial)] << " at " << side);
            platform::ImagePtr image = draw(dial, {}, side);
            ASSERT_TRUE(image);
            EXPECT_EQ(image->size(), (platform::Size{side, side}));
            const Point centre{side / 2.0, side / 2.0};
            // Straight down, in the scale's gap.
            EXPECT_TRUE(pixelIs(*image, polar(centre, radius - 22, std::numbers::pi / 2), disc()));
            EXPECT_TRUE(pixelIs(*image, polar(centre, radius + 12, std::numbers::pi / 2), disc()));
            EXPECT_TRUE(pixelIs(*image, polar(centre, radius + 15, std::numbers::pi / 2), kClear));
            for (Point corner : {Point{0.5, 0.5}, Point{side - 0.5, 0.5}, Point{0.5, side - 0.5}})
                EXPECT_TRUE(pixelIs(*image, corner, kClear));
        }
    }
}

TEST_F(GaugesTest, ScaleBandColoursAtTheirMiddles) {
    Pallet p = pallet();
    // Colours by readiness score, oxygen reading, charge fraction and wrist score.
    auto r = [&](float v) { return rgb(p.colourForReadyScore(v)); };
    auto o = [&](float v) { return rgb(p.colourForSpO2Reading(v)); };
    auto c = [&](float v) { return rgb(p.colourForBatteryChargePercent(v)); };
    auto w = [&](float v) { return rgb(p.colourForWristTempScore(v)); };
    const Rgba k = kBlack;
    // Past the low end, each band's middle and a separator, past the high end.
    std::vector<double> oxygenProbes, starProbes;
    for (double v : {79.8, 82.45, 84.95, 87.45, 89.95, 92.45, 94.95, 97.5, 100.2}) oxygenProbes.push_back(spO2(v));
    for (double s : {-0.05, 0.49, 1.49, 1.99, 2.49, 3.49, 4.49, 5.49, 6.5, 7.05}) starProbes.push_back(stars(s));
    const std::pair<Dial, std::vector<Rgba>> rows[] = {
        {Dial::SpO2, {r(0), r(0), k, o(85), k, o(90), k, o(95), o(100)}},
        {Dial::Resp, {r(0), r(0), r(0.6f), k, r(1.0f), r(1.1f), r(1.0f), r(0.6f), r(0), r(0)}},
        {Dial::Consistency, {r(0), r(0), r(0.6f), k, c(0.9f), c(1.0f), c(0.9f), r(0.6f), r(0), r(0)}},
        // Past the high end the round tip keeps the lowest score's colour.
        {Dial::Wrist, {w(0.5f), w(0.5f), w(1.5f), k, w(2.5f), w(3.5f), w(4.5f), w(5.5f), w(6.5f), w(0.5f)}},
        {Dial::Readiness, {r(0), r(0), r(0.6f), k, r(0.75f), r(0.9f), r(1.1f), r(1.3f), r(1.6f), r(1.6f)}},
    };
    for (const auto& [dial, want] : rows) {
        const std::vector<double>& probes = dial == Dial::SpO2 ? oxygenProbes : starProbes;
        for (std::size_t i = 0; i < probes.size(); ++i) {
            SCOPED_TRACE(::testing::Message() << kNames[int(dial)] << " at fraction " << probes[i]);
            // The needle and its shadow are kept at the far end of the scale.
            platform::ImagePtr image = draw(dial, needleAt(dial, probes[i] < 0.5));
            EXPECT_TRUE(pixelIs(*image, polar({140, 140}, 116, dialAngle(probes[i])), want[i]));
        }
    }
}

TEST_F(GaugesTest, NeedlePointsAtTheValue) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    // Above 100 % the needle turns into the scale's gap; 102.5 % points straight down.
    std::vector<std::tuple<Dial, Dictionary, double>> rows = {
        {Dial::SpO2, {{"averageSpO2", 90}}, 0.5},          {Dial::SpO2, {}, 0.01},
        {Dial::SpO2, {{"averageSpO2", 102.5}}, 1.125},     {Dial::Resp, {{"averageRespRate", 16.25}}, 0.5},
        {Dial::Resp, {{"averageRespRate", 40}}, 6.99 / 7}, {Dial::Wrist, {{"wristTempScore", 3.5}}, 0.5},
        {Dial::Wrist, {{"wristTempScore", 12}}, 1},        {Dial::Wrist, {{"wristTempScore", -3}}, 0},
        {Dial::Readiness, {{"value", 1.0}}, 4.2 / 7},      {Dial::Readiness, {}, 0.02 / 7},
    };
    // Bedtime drift in seconds and its stars, one row inside each band of the rule.
    const std::pair<double, double> drifts[] = {{0, 3.5},     {900, 4},     {-900, 3},   {-1800, 2.5},
                                                {-4050, 1.5}, {-6750, 0.5}, {1800, 4.5}, {4050, 5.5},
                                                {6750, 6.5},  {8100, 7},    {nan, 3.5}};
    for (auto [seconds, starCount] : drifts)
        rows.push_back({Dial::Consistency, {{"bedTrend", seconds}}, starCount / 7});
    for (bool widget : {false, true}) {
        ui->widgetMode = widget;
        const float side = widget ? 220 : 280;
        const double c = side / 2, length = 0.95 * (c - 25);
        for (const auto& [dial, record, fraction] : rows) {
            SCOPED_TRACE(::testing::Message() << kNames[int(dial)] << " to " << fraction << " widget " << widget);
            platform::ImagePtr image = draw(dial, record, side);
            const double angle = dialAngle(fraction);
            for (double along : {0.3, 0.6, 0.93})
                EXPECT_TRUE(isWhite(image->pixelAt(polar({c, c}, along * length, angle))));
            EXPECT_FALSE(isWhite(image->pixelAt(polar({c, c}, length + 5, angle))));
            for (double aside : {-8.0, 8.0})
                EXPECT_FALSE(isWhite(image->pixelAt(polar({c, c}, 0.93 * length, angle + aside / length))));
        }
    }
}

TEST_F(GaugesTest, RangeBandsAndSevenDayOverlays) {
    Pallet p = pallet();
    const Rgba blue = rgb(Colour::colorWithHue(193.0 / 360, 0.92, 0.5, 1));
    const Rgba halfBlue = rgb(Colour::colorWithHue(193.0 / 360, 0.92, 0.5, 0.5));
    const Rgba marker = rgb(Colour::colorWithHue(193.0 / 360, 0.92, 0.1, 0.8));
    auto ready = [&](float r) { return rgb(p.colourForReadyScore(r)); };
    auto oxygen = [&](float s) { return rgb(p.colourForSpO2Reading(s)); };
    // The respiration week is drawn after the hub, under its soft shadow, as deep as the overlay is opaque.
    auto shaded = [&](Rgba top, float r) { return over(top, over({0, 0, 0, top.a / 3}, ready(r))); };
    auto respStars = [&](float breaths) { return stars(p.starsValueForRespRate(breaths)); };
    struct Row { const char* what; Dial dial; Dictionary record; float side; bool widget; double radius, fraction;
                 Rgba want; };
    const Dictionary oxygenRange{{"averageSpO2", 102.5}, {"minSpO2", 82}, {"maxSpO2", 88}};
    const Dictionary oxygenWeek{{"averageSpO2", 102.5}, {"minSpO27", 86}, {"maxSpO27", 89}, {"averageSpO27", 97.5}};
    auto breaths = [&](std::initializer_list<std::pair<const char*, Value>> more) {
        Dictionary d{{"averageRespRate", 30}, {"minRespRate", 12}, {"maxRespRate", 14}};
        for (const auto& [key, value] : more) d.setObject(value, key);
        return d;
    };
    const Dictionary breathWeek = breaths({{"averageRespRate7", 16.25}, {"minRespRate7", 14}, {"maxRespRate7", 15.5}});
    const std::vector<Row> rows = {
        // The 24-hour band lies at radius c - w, w wide; 78 wide in a widget whatever the side.
        {"oxygen range", Dial::SpO2, oxygenRange, 280, false, 55, spO2(85), blue},
        {"oxygen outside range", Dial::SpO2, oxygenRange, 280, false, 55, spO2(95), disc()},
        {"widget band", Dial::SpO2, oxygenRange, 220, true, 69, spO2(85), blue},
        {"scaled band", Dial::SpO2, oxygenRange, 220, false, 75, spO2(85), blue},
        {"oxygen week", Dial::SpO2, oxygenWeek, 280, false, 116, spO2(87.45), over(halfBlue, oxygen(85))},
        {"oxygen marker", Dial::SpO2, oxygenWeek, 280, false, 116, spO2(97.5), over(marker, oxygen(95))},
        {"breath range", Dial::Resp, breaths({}), 280, false, 55, respStars(13), blue},
        {"breath marker", Dial::Resp, breathWeek, 280, false, 116, 0.5, shaded(marker, 1.1f)},
        {"breath week", Dial::Resp, breathWeek, 280, false, 116, respStars(15), shaded(halfBlue, 1.1f)},
        // A missing low end starts the week's range at its average; a missing high end is taken as read.
        {"breath week from average", Dial::Resp, breaths({{"averageRespRate7", 16.25}, {"maxRespRate7", 18.5}}), 280,
         false, 116, respStars(15), ready(1.1f)},
        {"breath week to zero", Dial::Resp,
         breaths({{"averageRespRate7", 16.25}, {"minRespRate7", 14}, {"maxRespRate7", 0}}), 280, false, 116, stars(5.5),
         shaded(halfBlue, 0.6f)},
        {"no week at 40", Dial::Resp, breaths({{"averageRespRate", 12.5}, {"averageRespRate7", 40}}), 280, false, 116,
         respStars(40), ready(0)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ui->widgetMode = row.widget;
        platform::ImagePtr image = draw(row.dial, row.record, row.side);
        const double c = row.side / 2;
        EXPECT_TRUE(pixelIs(*image, polar({c, c}, row.radius, dialAngle(row.fraction)), row.want));
    }
}

TEST_F(GaugesTest, IconsSitBelowTheHub) {
    // Icon (none: no icon), its frame, and a flat, opaque place of the artwork in parts of its side.
    const std::tuple<Dial, const char*, double, double, double, Point> rows[] = {
        {Dial::SpO2, "SpO2Icon", 117, 165, 46, {0.5, 0.55}},       {Dial::Resp, "RespIcon", 117, 165, 46, {0.3, 0.65}},
        {Dial::Consistency, "InBedIcon", 117, 165, 46, {0.6, 0.6}}, {Dial::Wrist, "WristTempIcon", 117, 165, 46, {0.5, 0.75}},
        {Dial::Readiness, "Readiperson", 117, 165, 46, {0.5, 0.2}}, {Dial::Fuel, "FuelIcon", 122, 168, 40, {0.5, 0.66}},
        {Dial::ReadinessBare, nullptr, 117, 165, 46, {0.5, 0.2}}};
    // Needles pointing up, away from the icon.
    const Dictionary record{{"averageSpO2", 90}, {"averageRespRate", 16.25}, {"wristTempScore", 3.5}, {"value", 0.9}};
    for (const auto& [dial, name, left, top, side, probe] : rows) {
        SCOPED_TRACE(kNames[int(dial)]);
        platform::ImagePtr icon = platform_->imageNamed(name ? name : "Readiperson");
        ASSERT_TRUE(icon);
        Rgba art = icon->pixelAt({probe.x * icon->size().width, probe.y * icon->size().height});
        ASSERT_EQ(art.a, 1);
        EXPECT_TRUE(pixelIs(*draw(dial, record), {left + probe.x * side, top + probe.y * side}, name ? art : disc()));
    }
}

TEST_F(GaugesTest, ValueTextCentredAboveTheHub) {
    // Needles rest low, away from the text.
    const std::vector<std::tuple<Dial, Dictionary, bool>> rows = {
        {Dial::SpO2, {{"averageSpO2", 80}}, true},  {Dial::Consistency, {{"bedTrend", -9000}, {"starsLabel", "★★★★"}}, true},
        {Dial::Wrist, {{"wristTempDifLabel", "+0.4°"}}, true}, {Dial::Wrist, {}, false},
        {Dial::Readiness, {{"label", "Good"}}, true},          {Dial::Readiness, {}, false}};
    const Rgba tint = rgb(pallet().tintColour());
    const double height = platform_->fonts().lineHeight({24, platform::FontWeight::Bold});
    const double top = 140 + 90 - 5.1 * height;
    for (const auto& [dial, record, drawn] : rows) {
        SCOPED_TRACE(kNames[int(dial)]);
        platform::ImagePtr image = draw(dial, record);
        double left = 280, right = 0;
        int inked = 0, outside = 0;
        for (double y = top - 10; y < top + height + 10; ++y) {
            for (double x = 40; x < 240; ++x) {
                if (!pixelIs(*image, {x, y}, tint, 0.02)) continue;
                ++inked;
                left = std::min(left, x);
                right = std::max(right, x);
                if (y < top || y > top + height) ++outside;
            }
        }
        EXPECT_EQ(inked > 0, drawn);
        EXPECT_EQ(outside, 0);
        if (drawn) {
            EXPECT_NEAR(left + right, 280, 3);
        }
    }
}

}  // namespace
}  // namespace velmorant::testing
