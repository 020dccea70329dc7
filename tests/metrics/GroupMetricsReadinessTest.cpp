#include "MetricsTestSupport.h"

#include <limits>

namespace velmorant::testing {
namespace {

class GroupMetricsReadiness : public MetricsTest {
protected:
    void SetUp() override { start(local(2024, 3, 2, 10, 0)); }
    static Value scores(Value h, Value H, Value b, Value B, const char* key = "20240302") {
        return Value(Dictionary{{"key", Value(key)}, {"hrvTodayVal", h}, {"hrvAverage", H}, {"bpmTodayVal", b},
                                {"bpmAverage", B}});
    }
    // A track synched tonight (the night began 1 March 21:00), or the morning before.
    void putWatch(double hrv, double waking, bool tonight = true) {
        put("watchTrackDict", Value(Dictionary{{"rawSynchTime", Value(local(2024, 3, 1, tonight ? 23 : 8, 0))},
                                               {"rawHRVVal", Value(hrv)}, {"rawWakingVal", Value(waking)}}));
    }
};

TEST_F(GroupMetricsReadiness, PointsGradesAndStars) {
    const Value no;
    struct { Value h, H, b, B; float hrvPoints, wakingPoints; const char* grade; float stars; } cases[] = {
        {Value(50), Value(50), no, no, 0.7f, 0, "Poor", 2},  // ratio 1: the step down from 0.75
        {Value(49.95), Value(50), no, no, 0.749f, 0, "Regular", 2.392f},
        {Value(75), Value(100), no, no, 0.5f, 0, "Bad", 1},
        {Value(180), Value(100), no, no, 1.5f, 0, "Jet fuel", 6},  // exactly 1.5 is not above it
        {no, no, Value(96), Value(100), 0, 1.12f, "Premium", 4.68f},
        {no, no, Value(80), Value(100), 0, 1.6f, "Rocket fuel", 6},
        {no, no, Value(105), Value(100), 0, 0.7f, "Regular", 2},  // a hair over 0.7
        {Value("48"), Value(45), Value(55), Value(57), 0.7666667f, 1.0807018f, "Plus", 3.7894737f},
    };
    for (const auto& c : cases) {
        put("bankDict", Value(Dictionary{{"octaneDict", scores(c.h, c.H, c.b, c.B)}}));
        auto r = m->requestOctane();
        ASSERT_TRUE(r) << c.grade;
        EXPECT_NEAR(single(*r, "hrvPoints"), c.hrvPoints, 1e-4) << c.grade;
        EXPECT_NEAR(single(*r, "wakingPoints"), c.wakingPoints, 1e-4) << c.grade;
        EXPECT_EQ(text(*r, "rating"), c.grade);
        EXPECT_NEAR(single(*r, "starsValue"), c.stars, 1e-4) << c.grade;
    }
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (Value fuel : {scores(Value(48), Value(0), Value(55), Value(0)), scores(Value(10), Value(100), no, no),
                       scores(Value(-48), Value(45), Value(nan), Value("x")),
                       scores(Value(48), Value(45), Value(55), Value(57), "20240301")}) {
        put("bankDict", Value(Dictionary{{"octaneDict", fuel}}));
        putWatch(60, 50);  // the watch never stands in for fuel
        EXPECT_FALSE(m->requestOctane());
    }
}

TEST_F(GroupMetricsReadiness, TextsTintsAndCopyText) {
    put("bankDict", Value(Dictionary{{"octaneDict", scores(Value(48), Value(45), Value(55), Value(57))},
                                     {"readyDict", scores(Value(48), Value(45), Value(55), Value(57))}}));
    auto fuel = m->requestOctane();
    expectTexts(*fuel, {{"todaysReadinessStars", "Sleep Fuel Rating is plus."}, {"hrvLabel", "48 ms"},
                        {"hrvDifLabel", "3 above baseline"}, {"wakingLabel", "55 bpm"}, {"wakingDifLabel", "2 below baseline"},
                        {"pasteItem", "{\"Stars\":\"3.79\", \"HRV\":\"48\", \"bpm\": \"55\", \"BaselineSleepHRV\":"
                                      "\"45\", \"BaselineSleepBPM\":\"57\", \"Rating\":\"Plus\"}"}});
    // Opposite tints: a higher HRV and a lower heart rate are both good.
    EXPECT_EQ(fuel->objectForKey("hrvTint")->integerValue(), 2);
    EXPECT_EQ(fuel->objectForKey("wakingTint")->integerValue(), 2);
    expectTexts(*m->requestReadiness(), {{"rating", "Good"}, {"todaysReadinessStars", "Today's Readiness is good."}});
    put("readyStars", Value(true));
    expectTexts(*m->requestReadiness(), {{"rating", "\u2605\u2605\u2605\u2B52\u2B52"},
                                         {"todaysReadinessStars", "Today's Readiness is 3.79 stars."}});
}

TEST_F(GroupMetricsReadiness, ReadinessChoosesBetweenStoredDayAndWatch) {
    const Value stored = scores(Value(48), Value(45), Value(55), Value(57));
    const Value stale = scores(Value(48), Value(45), Value(55), Value(0), "20240301");
    struct { Value ready; double watchHRV, watchBPM; bool tonight; const char *hrv, *waking; } cases[] = {
        {stale, 0, 0, true, nullptr, nullptr}, {stale, 60, 50, false, nullptr, nullptr},
        {stale, 60, 50, true, "60 ms", "50 bpm"},  // a zero baseline takes the watch value
        {stored, 60, 50, true, "48 ms", "55 bpm"},  // the stored day wins
        {scores(Value(0), Value(45), Value(0), Value(57)), 60, 50, true, "60 ms", "50 bpm"},
        {Value("readyDict"), 60, 50, true, nullptr, nullptr},
    };
    for (const auto& c : cases) {
        put("bankDict", Value(Dictionary{{"readyDict", c.ready}}));
        putWatch(c.watchHRV, c.watchBPM, c.tonight);
        auto r = m->requestReadiness();
        ASSERT_EQ(r.has_value(), c.hrv != nullptr);
        if (r) {
            expectTexts(*r, {{"hrvLabel", c.hrv}, {"wakingLabel", c.waking}});
        }
    }
}

}  // namespace
}  // namespace velmorant::testing
