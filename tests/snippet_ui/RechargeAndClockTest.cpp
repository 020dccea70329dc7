// Pixel probes of the recharge rings and the bed clock at places their
// geometry fixes.
#include "SnippetUiTestSupport.h"

#include <numbers>
#include <optional>
#include <vector>

namespace velmorant::testing {
using palette::Pallet;

namespace {

const Rgba kWhite{1, 1, 1, 1};
const Rgba kBlack{0, 0, 0, 1};
const Rgba kClear{0, 0, 0, 0};

// The angle of a fraction of a turn, 0 straight up; the clock's of an hour of the day.
double tip(double fraction) { return (fraction - 0.25) * 2 * std::numbers::pi; }
double clockAngle(double hour) { return tip(hour / 24); }
// New York wall-clock time on the evening of kMorning's day; 24 and more is the next day.
platform::Date evening(double hour) { return kMorning.dateByAddingTimeInterval((hour - 7.5) * 3600); }

using RechargeTest = SnippetUiTest;

// Sleep 0.8 outside, bank 0.6 inside: each ring's colour short of its tip, the
// inner track past the bank's; white rings at the accessory side of 200; the
// backdrop behind them except on the accessory and the smallest sides.
TEST_F(RechargeTest, RingsEndAtTheirFractionsOnTheirTracks) {
    Pallet palette = pallet();
    palette.setDarkTheme(true);  // as the drawing leaves it
    struct Row { float side; double outer, inner, width; Point backdropProbe; bool backdrop; };
    const Row rows[] = {{280, 116, 89, 25, {140, 140}, true},
                {220, 86, 59, 25, {110, 110}, true},
                {200, 76, 49, 25, {100, 125}, false},
                {100, 46, 39, 5, {50, 50}, false}};
    for (const Row& row : rows) {
        const platform::ImagePtr image = ui->drawTheRechargeWithSize(row.side, 0.8f, 0.6f);
        const Point centre{row.side / 2.0, row.side / 2.0};
        const bool white = row.side == 200;
        for (auto [radius, fraction] : {std::pair{row.outer, 0.8f}, std::pair{row.inner, 0.6f}}) {
            const Rgba colour = white ? kWhite : rgb(palette.colourForBatteryChargePercent(fraction));
            const Point shortOfTip = polar(centre, radius + 0.28 * row.width, tip(fraction) - 0.4 * row.width / radius);
            EXPECT_TRUE(pixelIs(*image, shortOfTip, colour)) << radius << " at " << row.side;
        }
        const Point pastBank = polar(centre, row.inner, tip(0.6) + (row.width + 10) / row.inner);
        EXPECT_TRUE(pixelIs(*image, pastBank, rgb(palette.innerShadeForType(2)))) << row.side;
        for (Point corner : {Point{0.5, 0.5}, Point{row.side - 0.5, row.side - 0.5}})
            EXPECT_TRUE(pixelIs(*image, corner, kClear, 0)) << row.side;
        const double alpha = image->pixelAt(row.backdropProbe).a;
        EXPECT_TRUE(row.backdrop ? alpha > 0.5 : alpha < 0.15) << row.side << ": alpha " << alpha;
    }
}

// Every other hour of the goal is marked on the outer track; a fractional last
// hour is not, a goal under four hours counts as eight, and countless hours
// shade the track evenly, apart from both shades.
TEST_F(RechargeTest, HourMarksFollowTheGoal) {
    Pallet palette = pallet();
    palette.setDarkTheme(true);  // as the drawing leaves it
    const Rgba marked = rgb(palette.innerShadeForType(0)), unmarked = rgb(palette.innerShadeForType(2));
    const double turns[] = {0.6, 0.7, 0.78, 0.9, 0.97};
    struct Row {
        std::optional<double> hours;
        // Marked at each of the turns above; none: an even shade.
        std::optional<std::vector<bool>> marks;
    } rows[] = {{std::nullopt, {{true, false, true, false, false}}}, {3.9, {{true, false, true, false, false}}},
                {7.5, {{true, false, false, true, false}}},          {12, {{false, true, false, true, false}}},
                {1e6, std::nullopt},                                 {3e38, std::nullopt}};
    for (const Row& row : rows) {
        start();
        // The sleep-bank request opens the shared store with the goal.
        if (row.hours) put("velmorantConfig", Dictionary{{"requiredHours", *row.hours}});
        ui->requestSleepBankRings();
        for (float side : {280.0f, 100.0f}) {
            const platform::ImagePtr image = ui->drawTheRechargeWithSize(side, 0.5f, 0.3f);
            auto at = [&](double turn) { return polar({side / 2.0, side / 2.0}, side == 280 ? 116 : 46, tip(turn)); };
            const Rgba even = image->pixelAt(at(turns[0]));
            for (int i = 0; i < 5; ++i) {
                if (row.marks)
                    EXPECT_TRUE(pixelIs(*image, at(turns[i]), (*row.marks)[i] ? marked : unmarked))
                        << row.hours.value_or(0) << " hours at " << turns[i] << " turn, side " << side;
                else
                    EXPECT_TRUE(pixelIs(*image, at(turns[i]), even, 0.005)) << row.hours.value_or(0) << " hours";
            }
            // The two shades lie close together: tell them apart finely.
            if (!row.marks) {
                for (Rgba shade : {marked, unmarked}) EXPECT_FALSE(pixelIs(*image, at(turns[0]), shade, 0.01));
            }
        }
    }
}

using BedClockTest = SnippetUiTest;

// At 19:00, bedtime 23:00 and waketime 07:00: the wedge runs from now to
// bedtime, the sleep span from bedtime over the top to waketime.
TEST_F(BedClockTest, FaceTrackWedgeSpanAndHands) {
    start(2, "en_US", evening(19));
    Pallet palette = pallet();
    const Rgba wedge = rgb(palette.lightRatingColour(80)), span = rgb(palette.lightRatingColour(110));
    const Rgba bedHand = rgb(palette.lightRatingColour(40)), track = rgb(ui->ringBkg());
    struct Probe { double radius, hour; Rgba colour; bool shown = true; };
    struct Row {
        const char* name;
        bool widget;
        std::optional<platform::Date> bedtime, waketime;
        std::vector<Probe> probes;
    } rows[] = {
        {"23:00 to 07:00", false, evening(23), evening(31),
         {{90, 3, kBlack}, {128, 15, track}, {139, 15, rgb(ui->gaugeBkg())}, {129, 3, span}, {129, 9, track},
          {60, 22, wedge}, {30, 22, wedge}, {60, 9, kBlack}, {30, 23, bedHand}, {40, 19, kWhite}}},
        {"widget wedge", true, evening(23), evening(31), {{30, 22, wedge}, {50, 22, kBlack}}},
        // A bedtime after midnight has no hand of its own.
        {"00:30 to 07:00", false, evening(24.5), evening(31), {{60, 0.2, wedge}, {129, 3, span}, {30, 0.5, bedHand, false}}},
        {"no waketime", false, evening(23), std::nullopt, {{60, 22, kBlack}, {30, 23, kBlack}, {129, 3, track}}},
        {"no dates", false, std::nullopt, std::nullopt, {{60, 22, kBlack}, {129, 3, track}, {40, 19, kWhite}}},
    };
    for (const Row& row : rows) {
        ui->widgetMode = row.widget;
        const platform::ImagePtr image = ui->drawTheBedClockWithSize(280, row.bedtime, row.waketime);
        for (const Probe& probe : row.probes)
            EXPECT_EQ(pixelIs(*image, polar({140, 140}, probe.radius, clockAngle(probe.hour)), probe.colour), probe.shown)
                << row.name << ": radius " << probe.radius << " at " << probe.hour << " h";
        for (Point corner : {Point{0.5, 0.5}, Point{279.5, 279.5}}) EXPECT_TRUE(pixelIs(*image, corner, kClear, 0));
    }
}

}  // namespace
}  // namespace velmorant::testing
