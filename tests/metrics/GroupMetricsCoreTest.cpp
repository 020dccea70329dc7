#include "MetricsTestSupport.h"

#include <cmath>
#include <limits>

namespace velmorant::testing {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
using GroupMetricsCore = MetricsTest;

// The configured night hour: read as a float, present even when 0, truncated, 21 when negative or unreadable.
TEST_F(GroupMetricsCore, ConfiguredNightHourAndPreviousDay) {
    struct { Value nightHour; int hourNow; float value; bool previous; } cases[] = {
        {Value(), 20, -1, false}, {Value(), 21, -1, true}, {Value(5.9), 4, 5.9f, false}, {Value("5.9 h"), 5, 5.9f, true},
        {Value(0), 23, 0, false}, {Value(-0.5), 23, -0.5f, false}, {Value(-2), 21, -2, true}, {Value(kNaN), 21, -1, true},
        {Value(-1), 21, -1, true},  // stored: the sentinel cannot tell it from missing, the optional can
    };
    for (const auto& c : cases) {
        start(local(2024, 3, 2, c.hourNow, 30));
        put("velmorantConfig", Value(Dictionary{{"nightHour", c.nightHour}}));
        EXPECT_FALSE(m->shouldReportPreviousDay() || m->getVelmorantSwitchValueForKey("nightHour"));  // store not open
        m->watchDictIsValid();
        EXPECT_EQ(m->getVelmorantConfigValueForKey("nightHour"), c.value);
        const bool missing = c.nightHour.isNone() || std::isnan(c.nightHour.doubleValue());
        EXPECT_EQ(m->configValueForKey("nightHour"), missing ? std::nullopt : std::optional<float>(c.value));
        EXPECT_EQ(m->getVelmorantSwitchValueForKey("nightHour"), !c.nightHour.isNone());
        EXPECT_EQ(m->shouldReportPreviousDay(), c.previous) << c.nightHour.doubleValue() << " at " << c.hourNow;
    }
}

// The stored night hour decides which day key is current; SpO2 is the probe.
TEST_F(GroupMetricsCore, CurrentDayKeyFollowsTheStoredNightHour) {
    struct { Value nightHour; Date now; const char* key; bool matches; } cases[] = {
        {Value(), local(2024, 3, 1, 20, 59), "20240301", true}, {Value(), local(2024, 3, 1, 21, 0), "20240302", true},
        {Value(), local(2024, 3, 2, 21, 0), "20240302", false}, {Value(), local(2024, 3, 2, 10, 0), "20240301", false},
        {Value(0), local(2024, 3, 2, 23, 30), "20240302", true},  // 0 is used as it stands
        {Value("22"), local(2024, 3, 1, 21, 30), "20240301", true},
        {Value(-4), local(2024, 3, 1, 21, 30), "20240302", true}, {Value(kNaN), local(2024, 3, 1, 21, 30), "20240302", true},
        {Value(), local(2024, 3, 10, 20, 30), "20240310", true},  // the day the clocks go forward
    };
    for (const auto& c : cases) {
        start(c.now);
        put("bankDict", Value(Dictionary{{"nightHour", c.nightHour}, {"spO2Dict", Value(Dictionary{{"key", Value(c.key)}})}}));
        EXPECT_EQ(m->requestSpO2().has_value(), c.matches) << c.key;
    }
}

TEST_F(GroupMetricsCore, DamagedOrHugeValuesNeverFail) {
    for (Value junk : {Value("bankDict"), Value(platform::Array{Value(1)}),
                       Value(Dictionary{{"spO2Dict", Value("x")}, {"readyDict", Value(1)}, {"key", Value(7)}})}) {
        start(local(2024, 3, 2, 10, 0));
        for (const char* key : {"bankDict", "watchTrackDict", "velmorantConfig", "cachedSleepBank"}) put(key, junk);
        EXPECT_FALSE(m->requestSpO2() || m->requestRespRate() || m->requestWristTemp() || m->requestReadiness() ||
                     m->requestOctane() || m->requestSleepBank() || m->requestQuality() || m->requestConsistencyDict());
    }
    const Value huge(3e38);  // far past any real figure: still a record, never a failure
    put("velmorantConfig", Value(Dictionary{{"WakeFixed6", huge}, {"WakeTime6", huge}}));
    put("bankDict", Value(Dictionary{{"medianWake", huge}, {"20240302", huge}}));
    put("watchTrackDict", Value(Dictionary{{"rawSynchTime", Value(local(2024, 3, 1, 23, 0))}, {"rawSleepTime", huge}}));
    EXPECT_TRUE(m->requestSleepBank() && m->requestQuality());
}

}  // namespace
}  // namespace velmorant::testing
