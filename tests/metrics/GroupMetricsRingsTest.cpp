#include "MetricsTestSupport.h"

namespace velmorant::testing {
namespace {

// 07:00 on 2 March; the night began 1 March 21:00 and the watch synched just over a minute later.
class GroupMetricsRings : public MetricsTest {
protected:
    void SetUp() override { start(local(2024, 3, 2, 7, 0)); }
    void putTrack(Value sleep, Value rating, bool stages = false) {
        put("watchTrackDict", Value(Dictionary{{"rawSynchTime", Value(local(2024, 3, 1, 21, 1, 0.001))}, {"rawSleepTime", sleep},
                                               {"rawRingRating", rating}, {"rawRingValues", Value("4320|5400|52")},
                                               {"showStages", stages ? Value(0) : Value()}}));
    }
};

TEST_F(GroupMetricsRings, ClosedRingsRatingAndSentence) {
    struct { Value goal, sleep, rating; float sleepPercent, sleepRating; const char* sentence; } cases[] = {
        {Value(), Value(27360), Value("0.8|1.0|1.0"), 0.95f, 0.9375f, "2 sleep rings closed. Today's sleep rating is 94%."},
        {Value(), Value(28800), Value("1|1.2|1"), 1, 1, "All sleep rings closed! Today's sleep rating is 100%."},
        {Value(), Value(36000), Value("0.5|0.5|0.4"), 1.25f, 0.6f, "1 sleep ring closed. Today's sleep rating is 60%."},
        {Value(3.5), Value(14400), Value("0|0|0"), 0.5f, 0.125f, "No sleep rings closed. Today's sleep rating is 12%."},
        {Value(4.0), Value(14400), Value("0.8|0.9"), 1, 0.25f, "1 sleep ring closed. Today's sleep rating is 25%."},
        {Value(), Value(), Value("1|1|1|7"), 0, 0.75f, "3 sleep rings closed. Today's sleep rating is 75%."},
        {Value(), Value("x"), Value("abc|x|1e999"), 0, 0, "No sleep rings closed. Today's sleep rating is 0%."},
    };
    for (const auto& c : cases) {
        put("velmorantConfig", Value(Dictionary{{"requiredHours", c.goal}}));
        putTrack(c.sleep, c.rating);
        auto r = m->requestQuality();
        ASSERT_TRUE(r) << c.sentence;
        EXPECT_FLOAT_EQ(single(*r, "ringSleepPercent"), c.sleepPercent) << c.sentence;
        EXPECT_FLOAT_EQ(single(*r, "sleepRating"), c.sleepRating) << c.sentence;
        EXPECT_EQ(text(*r, "siriLabel"), c.sentence);
    }
}

TEST_F(GroupMetricsRings, LabelsCopyTextAndWidgetMirror) {
    struct { bool track, stages; const char *quality, *hasData, *mirrored; } cases[] = {
        {true, false, "Quality", "1", "\u2605 1h 12m"}, {true, true, "REM", "1", "\u24C7 1h 12m"},
        {false, false, "", "<absent>", "--"},
    };
    for (const auto& c : cases) {
        // A track synched only a minute after the night began is not tonight's.
        put("watchTrackDict", Value(Dictionary{{"rawSynchTime", Value(local(2024, 3, 1, 21, 1))}}));
        if (c.track) putTrack(Value(27360), Value("0.8|1.0|1.0"), c.stages);
        auto r = m->requestQuality();
        ASSERT_EQ(r.has_value(), c.track);
        const std::string q = c.quality;
        if (r) {
            expectTexts(*r, {{"ringSleepLabel", "7h 36m"}, {"ringDeepLabel", "1h 30m"}, {"ringBPMLabel", "52"},
                             {"showStages", c.stages ? "1" : "<absent>"},
                             {"pasteItem", "{\"Sleep%\":\"95\", \"" + q + "%\":\"80\", \"Deep%\": \"100\", \"bpm%\":\"100\", "
                                           "\"Sleep\":\"7.60\", \"" + q + "\":\"1.20\", \"Deep\": \"1.50\", \"bpm\":\"52\", "
                                           "\"SleepRating\":\"94\"}"}});
        }
        m->requestQualityForSwift();
        EXPECT_EQ(text(store()->dictionaryRepresentation(), "Swift-HasData"), c.hasData);
        EXPECT_EQ(text(store()->dictionaryRepresentation(), "Swift-ringQualityLabel"), c.mirrored);
        EXPECT_EQ(text(store()->dictionaryRepresentation(), "Swift-ringBPMLabel"), c.track ? "52" : "--");
    }
}

}  // namespace
}  // namespace velmorant::testing
