#include "MetricsTestSupport.h"

#include <array>

namespace velmorant::testing {
namespace {

constexpr double R = 28800;  // the default eight hours
using Nights = std::array<Value, 7>;

// 10:00 on Saturday 2 March: the nights run from 25 February (weight 1) to 2 March (weight 7).
class GroupMetricsSleepBank : public MetricsTest {
protected:
    void SetUp() override { start(local(2024, 3, 2, 10, 0)); }
    static Dictionary bank(const Nights& nights, Dictionary extra = {}) {
        const char* keys[7] = {"20240225", "20240226", "20240227", "20240228", "20240229", "20240301", "20240302"};
        for (int i = 0; i < 7; ++i) extra.setObject(nights[i], keys[i]);
        return extra;
    }
    static Nights every(double s) { Nights n; n.fill(Value(s)); return n; }
};

TEST_F(GroupMetricsSleepBank, WeightedBalanceAndForecast) {
    const Value no, r(R), h7(25200);
    struct { const char* name; Nights nights; double watch, balance, forecast; } cases[] = {
        {"on target", every(R), 0, R, R},
        {"only tonight", {no, no, no, no, no, no, h7}, 0, 25200, 2 * R - 25200},
        {"-1 is a missing night", {h7, h7, h7, Value(-1), h7, h7, h7}, 0, 25200, 266400.0 / 7},
        {"the watch stands in tonight", {r, r, r, r, r, r, no}, 21600, 27000, 244800.0 / 7},
        {"but not for earlier nights", {r, r, r, r, r, no, r}, 21600, R, R},
        {"wrong kind is missing", {Value(Dictionary{}), r, r, r, r, r, r}, 0, R, R},
        {"no nights", {no, no, no, no, no, no, no}, 0, 0, 0},
        {"all zero", every(0), 0, 0, 0},
    };
    for (const auto& c : cases) {
        put("bankDict", Value(bank(c.nights)));
        put("watchTrackDict", Value(Dictionary{{"rawSynchTime", Value(local(2024, 3, 1, 23, 0))},
                                               {"rawSleepTime", Value(c.watch)}}));
        auto rec = m->requestSleepBank();
        ASSERT_EQ(rec.has_value(), c.balance > 0) << c.name;
        if (!rec) continue;
        EXPECT_NEAR(single(*rec, "bankBalance"), c.balance, 0.01) << c.name;
        EXPECT_NEAR(single(*rec, "bankForecast"), c.forecast, 0.01) << c.name;
        EXPECT_NEAR(single(*rec, "bankPercent"), c.balance / R, 1e-6) << c.name;
        EXPECT_EQ(rec->size(), 3u) << c.name;  // no wake offset: no bedtime, nothing cached
        EXPECT_TRUE(store()->objectForKey("cachedSleepBank").isNone());
    }
}

TEST_F(GroupMetricsSleepBank, BedtimeCopyTextAndCache) {
    put("bankDict", Value(bank(every(R), Dictionary{{"medianWake", Value(36000)}})));
    auto r = m->requestSleepBank();
    ASSERT_TRUE(r);
    // 8 h at 90% efficiency is 32000 s in bed before the 07:00 wake (2 ms more in single precision).
    const Date wake = local(2024, 3, 2, 7, 0), bed = local(2024, 3, 1, 22, 6, 40);
    EXPECT_NEAR(date(*r, "adjustedBedTime").timeIntervalSinceDate(bed), 86400, 0.01);
    EXPECT_NEAR(single(*r, "timeUntilBed"), 43600, 0.01);
    const std::string paste = "{\"Tonight'sBedtime\":\"10:06 PM\", \"Waketime\":\"" + dayTime(wake) + "\", ";
    expectTexts(*r, {{"latestBedLabel", "Try to be in bed by 10:06 PM"}, {"timeUntilBedLabel", "12h 6m"},
                     {"timeUntilWakeLabel", "21h 0m"},
                     {"pasteItem", paste + "\"TimeUntilBed\": \"12.11\", \"RequiredHours\":\"8.00\"}"}});
    EXPECT_EQ(*store()->objectForKey("cachedSleepBank").dictionary(), *r);

    // Past the night hour the cached figures are served, brought up to date, even with the bank gone.
    platform_->setNow(local(2024, 3, 2, 22, 0));
    put("bankDict", Value());
    auto later = m->requestSleepBank();
    ASSERT_TRUE(later);
    expectTexts(*later, {{"latestBedTime", "10:06 PM"}, {"timeUntilBedLabel", "0h 6m"}, {"timeUntilWakeLabel", "9h 0m"},
                         {"pasteItem", paste + "\"TimeUntilBed\": \"0.11\", \"RequiredHours\":\"8.00\"}"}});
    EXPECT_EQ(store()->objectForKey("cachedSleepBankUpdate").date(), local(2024, 3, 2, 10, 0));
}

TEST_F(GroupMetricsSleepBank, SleepNeedClampsAndWakeTimes) {
    const Date nine = local(2024, 3, 2, 9, 0);
    struct { const char* name; double nightly; Dictionary config, extra; Date wake; double need; } cases[] = {
        {"below the lower clamp", 32400, {}, {}, nine, 28000},
        {"configured minimum", 32400, {{"minimumHours", Value(7.5)}}, {}, nine, 30000},
        {"a minimum under an hour is ignored", 32400, {{"minimumHours", Value(0.5)}}, {}, nine, 28000},
        {"configured maximum, efficiency 80", R, {{"maximumHours", Value(7)}}, {{"averageEfficiency", Value(80)}}, nine,
         31500},
        {"above the upper clamp", 18000, {}, {}, nine, 40000},
        {"maximum under the minimum", 18000, {{"maximumHours", Value(5)}}, {}, nine, 40000},
        {"efficiency 0 reads as 90", R, {}, {{"averageEfficiency", Value(0)}}, nine, 32000},
        {"wake from the average", R, {}, {{"medianWake", Value(-5)}, {"averageWake", Value(36000)}},
         local(2024, 3, 2, 7, 0), 32000},
        // The coming morning is Sunday, weekday index 6.
        {"fixed wake", R, {{"WakeFixed6", Value(0)}, {"WakeTime6", Value(28800)}}, {}, local(2024, 3, 2, 8, 0), 32000},
        {"not before the night starts", R, {}, {{"medianWake", Value(3600)}}, local(2024, 3, 1, 22, 0), 3600},
    };
    for (const auto& c : cases) {
        put("velmorantConfig", Value(c.config));
        Dictionary extra = c.extra;
        if (!extra.contains("medianWake")) extra.setObject(Value(43200), "medianWake");
        put("bankDict", Value(bank(every(c.nightly), extra)));
        auto r = m->requestSleepBank();
        ASSERT_TRUE(r) << c.name;
        EXPECT_EQ(date(*r, "wakeTime"), c.wake) << c.name;
        EXPECT_NEAR(c.wake.timeIntervalSinceDate(date(*r, "bedTime")), c.need, 0.01) << c.name;
    }
}

TEST_F(GroupMetricsSleepBank, CacheServedOnlyAMinuteAfterThePreviousNight) {
    const Value cached(Dictionary{{"bedTime", Value(local(2024, 3, 1, 22, 0))}, {"wakeTime", Value(local(2024, 3, 2, 6, 0))}});
    struct { Value cache, updated; bool served; } cases[] = {
        {cached, Value(local(2024, 3, 1, 21, 1)), false}, {cached, Value(local(2024, 3, 1, 21, 1, 0.5)), true},
        {Value(Dictionary{{"bedTime", Value(local(2024, 3, 1, 22, 0))}}), Value(local(2024, 3, 2, 9, 0)), false},
    };
    for (const auto& c : cases) {
        start(local(2024, 3, 2, 22, 0));
        put("cachedSleepBank", c.cache);
        put("cachedSleepBankUpdate", c.updated);
        auto r = m->returnPreviousSleepBank();
        ASSERT_EQ(r.has_value(), c.served);
        EXPECT_TRUE(!r || date(*r, "adjustedBedTime") == local(2024, 3, 2, 22, 0));
    }
    platform_->setNow(local(2024, 3, 2, 20, 0));  // before the night hour the cache is not used
    EXPECT_FALSE(m->requestSleepBank());
    // Past the night hour without a cache: tonight's bedtime needs no shift to tomorrow.
    start(local(2024, 3, 2, 22, 30));
    put("bankDict", Value(bank(every(R), Dictionary{{"medianWake", Value(36000)}})));
    auto r = m->requestSleepBank();
    EXPECT_EQ(date(*r, "adjustedBedTime"), date(*r, "bedTime"));
    EXPECT_NEAR(date(*r, "wakeTime").timeIntervalSinceDate(local(2024, 3, 3, 7, 0)), 0, 0.01);
}

}  // namespace
}  // namespace velmorant::testing
