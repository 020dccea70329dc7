// Pixel probes of the recharge rings and the bed clock at places their
// geometry fixes.
#include "SnippetUiTestSupport.h"

#include <unicode/gregocal.h>

#include <limits>
#include <numbers>
#include <optional>

namespace velmorant::testing {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();
const Rgba kWhite{1, 1, 1, 1};
const Rgba kBlack{0, 0, 0, 1};
const Rgba kClear{0, 0, 0, 0};

// The angle of a fraction of a turn, 0 straight up.
double tip(double fraction) { return (fraction - 0.25) * 2 * kPi; }
// The bed clock's angle of a time of day: midnight up, once round a day.
double clockAngle(double hour) { return tip(hour / 24); }

// An instant given by its wall-clock time in New York.
platform::Date newYork(int day, int hour, int minute) {
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar calendar(icu::TimeZone::createTimeZone("America/New_York"), status);
    calendar.clear();
    calendar.set(2024, 2, day, hour, minute, 0);
    return platform::Date::fromIcuMillis(calendar.getTime(status));
}

class PictureTest : public SnippetUiTest {
protected:
    static void expectCornersClear(const platform::Image& image, double side) {
        for (Point corner :
             {Point{0.5, 0.5}, Point{side - 0.5, 0.5}, Point{0.5, side - 0.5}, Point{side - 0.5, side - 0.5}})
            EXPECT_TRUE(pixelIs(image, corner, kClear, 0)) << side;
    }
};

class RechargeTest : public PictureTest {
protected:
    // The palette as the drawing leaves it: switched to dark.
    Pallet darkPallet() {
        Pallet palette = pallet();
        palette.setDarkTheme(true);
        return palette;
    }
    // Opens the shared store with a sleep goal, as the sleep-bank request does.
    void setGoal(std::optional<double> hours) {
        if (hours) put("velmorantConfig", Value(Dictionary{{"requiredHours", *hours}}));
        ui->requestSleepBankRings();
    }
};

// Sleep 0.8 outside, bank 0.6 inside: each ring's colour short of its tip, its
// track past it; white rings at the accessory side of 200.
TEST_F(RechargeTest, RingsEndAtTheirFractionsOnTheirTracks) {
    Pallet palette = darkPallet();
    const Rgba track = rgb(palette.innerShadeForType(2));
    struct Row {
        float side;
        double outer, inner, width;
    } rows[] = {{280, 116, 89, 25}, {220, 86, 59, 25}, {200, 76, 49, 25}, {100, 46, 39, 5}};
    for (const Row& row : rows) {
        const platform::ImagePtr image = ui->drawTheRechargeWithSize(row.side, 0.8f, 0.6f);
        const double c = row.side / 2;
        const Point centre{c, c};
        const bool white = row.side == 200;
        struct Ring {
            const char* name;
            double radius;
            float fraction;
            Rgba colour;
        } rings[] = {
            {"sleep", row.outer, 0.8f, white ? kWhite : rgb(palette.colourForBatteryChargePercent(0.8f))},
            {"bank", row.inner, 0.6f, white ? kWhite : rgb(palette.colourForBatteryChargePercent(0.6f))},
        };
        for (const Ring& ring : rings) {
            const double back = 0.4 * row.width, out = 0.28 * row.width;
            EXPECT_TRUE(pixelIs(*image, polar(centre, ring.radius + out, tip(ring.fraction) - back / ring.radius),
                                ring.colour))
                << ring.name << " at " << row.side;
        }
        // The inner track past the bank's tip, beyond its cap and head shadow.
        EXPECT_TRUE(pixelIs(*image, polar(centre, row.inner, tip(0.6) + (row.width + 10) / row.inner), track))
            << row.side;
        expectCornersClear(*image, row.side);
    }
}

// Every other hour of the goal is marked on the outer track; a fractional
// last hour is not, and a goal under four hours counts as eight.
TEST_F(RechargeTest, HourMarksFollowTheGoal) {
    Pallet palette = darkPallet();
    const Rgba marked = rgb(palette.innerShadeForType(0));
    const Rgba unmarked = rgb(palette.innerShadeForType(2));
    struct Row {
        std::optional<double> hours;
        // Marked at 0.6, 0.7, 0.78, 0.9 and 0.97 of a turn?
        bool marks[5];
    } rows[] = {
        {std::nullopt, {true, false, true, false, false}},
        {3.9, {true, false, true, false, false}},
        {7.5, {true, false, false, true, false}},
        {12, {false, true, false, true, false}},
    };
    const double turns[] = {0.6, 0.7, 0.78, 0.9, 0.97};
    for (const Row& row : rows) {
        start();
        setGoal(row.hours);
        for (float side : {280.0f, 100.0f}) {
            const platform::ImagePtr image = ui->drawTheRechargeWithSize(side, 0.5f, 0.3f);
            const double c = side / 2;
            const double outer = side == 280 ? 116 : 46;
            for (int i = 0; i < 5; ++i)
                EXPECT_TRUE(pixelIs(*image, polar({c, c}, outer, tip(turns[i])), row.marks[i] ? marked : unmarked))
                    << row.hours.value_or(0) << " hours at " << turns[i] << " turn, side " << side;
        }
    }
}

// Marks finer than the ring can show read as one even shade, in bounded time.
TEST_F(RechargeTest, CountlessHoursShadeTheTrackEvenly) {
    Pallet palette = darkPallet();
    for (double hours : {1e6, 3e38}) {
        start();
        setGoal(hours);
        const platform::ImagePtr image = ui->drawTheRechargeWithSize(280, 0.5f, 0.3f);
        const Rgba first = image->pixelAt(polar({140, 140}, 116, tip(0.7)));
        for (double turn : {0.78, 0.9, 0.97})
            EXPECT_TRUE(pixelIs(*image, polar({140, 140}, 116, tip(turn)), first, 0.005));
        // The two shades lie close together: tell them apart finely.
        for (float type : {0.0f, 2.0f})
            EXPECT_FALSE(pixelIs(*image, polar({140, 140}, 116, tip(0.7)), rgb(palette.innerShadeForType(type)), 0.01));
    }
}

// The backdrop lies behind the rings except on the accessory and the smallest sides.
TEST_F(RechargeTest, BackdropOnlyOnFullSizes) {
    struct Row {
        float side;
        Point probe;
        bool backdrop;
    } rows[] = {{280, {140, 140}, true}, {220, {110, 110}, true}, {200, {100, 125}, false}, {100, {50, 50}, false}};
    for (const Row& row : rows) {
        const double alpha = ui->drawTheRechargeWithSize(row.side, 0.5f, 0.5f)->pixelAt(row.probe).a;
        if (row.backdrop) EXPECT_GT(alpha, 0.5) << row.side;
        else EXPECT_LT(alpha, 0.15) << row.side;
    }
}

TEST_F(RechargeTest, AnyInputGivesAPicture) {
    setGoal(1e30);
    const float values[] = {kNaN, kInf, -kInf, 3e38f, -3e38f, 1e7f, -1, 0, 12.5f};
    for (float value : values) {
        for (float side : {280.0f, 200.0f, 100.0f})
            EXPECT_EQ(ui->drawTheRechargeWithSize(side, value, value)->size(), (platform::Size{side, side})) << value;
    }
    for (float side : {kNaN, kInf, -1.0f, 0.0f, 1.0f}) EXPECT_NE(ui->drawTheRechargeWithSize(side, 0.5f, 0.5f), nullptr);
}

class BedClockTest : public PictureTest {
protected:
    void SetUp() override { start(2, "en_US", newYork(5, 19, 0)); }
};

// At 19:00, bedtime 23:00 and waketime 07:00: the wedge runs from now to
// bedtime, the sleep span from bedtime over the top to waketime.
TEST_F(BedClockTest, FaceTrackWedgeSpanAndHands) {
    Pallet palette = pallet();
    const Rgba wedge = rgb(palette.lightRatingColour(80));
    const Rgba span = rgb(palette.lightRatingColour(110));
    const Rgba bedHand = rgb(palette.lightRatingColour(40));
    const Rgba track = rgb(ui->ringBkg());
    const std::optional<platform::Date> none;
    struct Probe {
        double radius, hour;
        Rgba colour;
        bool shown = true;
    };
    struct Row {
        const char* name;
        bool widget;
        std::optional<platform::Date> bedtime, waketime;
        std::vector<Probe> probes;
    } rows[] = {
        {"23:00 to 07:00",
         false,
         newYork(5, 23, 0),
         newYork(6, 7, 0),
         {{90, 3, kBlack},
          {128, 15, track},
          {139, 15, rgb(ui->gaugeBkg())},
          {129, 3, span},
          {129, 9, track},
          {60, 22, wedge},
          {30, 22, wedge},
          {60, 9, kBlack},
          {30, 23, bedHand},
          {40, 19, kWhite}}},
        {"widget wedge", true, newYork(5, 23, 0), newYork(6, 7, 0), {{30, 22, wedge}, {50, 22, kBlack}}},
        // A bedtime after midnight has no hand of its own.
        {"00:30 to 07:00",
         false,
         newYork(6, 0, 30),
         newYork(6, 7, 0),
         {{60, 0.2, wedge}, {129, 3, span}, {30, 0.5, bedHand, false}}},
        {"no waketime", false, newYork(5, 23, 0), none, {{60, 22, kBlack}, {30, 23, kBlack}, {129, 3, track}}},
        {"no dates", false, none, none, {{60, 22, kBlack}, {129, 3, track}, {40, 19, kWhite}}},
    };
    for (const Row& row : rows) {
        ui->widgetMode = row.widget;
        const platform::ImagePtr image = ui->drawTheBedClockWithSize(280, row.bedtime, row.waketime);
        for (const Probe& probe : row.probes)
            EXPECT_EQ(pixelIs(*image, polar({140, 140}, probe.radius, clockAngle(probe.hour)), probe.colour),
                      probe.shown)
                << row.name << ": radius " << probe.radius << " at " << probe.hour << " h";
        expectCornersClear(*image, 280);
    }
}

TEST_F(BedClockTest, AnyInputGivesAPicture) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (double seconds : {nan, 1e300, -1e300, 0.0}) {
        const platform::Date date = platform::Date::fromUnix(seconds);
        platform_->setNow(date);
        EXPECT_EQ(ui->drawTheBedClockWithSize(280, date, date)->size(), (platform::Size{280, 280})) << seconds;
    }
    for (float side : {kNaN, kInf, -1.0f, 0.0f, 1.0f})
        EXPECT_NE(ui->drawTheBedClockWithSize(side, newYork(5, 23, 0), newYork(6, 7, 0)), nullptr);
}

}  // namespace
}  // namespace velmorant::testing
