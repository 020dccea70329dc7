#include "MetricsTestSupport.h"

#include <limits>

namespace velmorant::testing {
namespace {

// 10:00 on 2 March with the default night hour: the current day key is 20240302.
class GroupMetricsVitals : public MetricsTest {
protected:
    void SetUp() override { start(local(2024, 3, 2, 10, 0)); }
    void putSpO2(double avg, double avg7, double min = 90) {
        put("bankDict", Value(Dictionary{{"spO2Dict", Value(Dictionary{
            {"key", Value("20240302")}, {"averageSpO2", Value(avg)}, {"minSpO2", Value(min)}, {"maxSpO2", Value(99)},
            {"averageSpO27", Value(avg7)}, {"minSpO27", Value(89)}, {"maxSpO27", Value(99)}})}}));
    }
};

TEST_F(GroupMetricsVitals, SpO2AndRespirationRecords) {
    putSpO2(95.4, 95.1);
    auto r = m->requestSpO2();
    ASSERT_TRUE(r);
    expectTexts(*r, {{"averageSpO2Label", "95.4%"}, {"averageSpO2RangeLabel", "90% - 99%"}, {"difLabel", "0.3%\u2197"},
                     {"averageSpO2Label7", "\u2466 95.1%"}, {"averageSpO2RangeLabel7", "\u2466 89% - 99%"},
                     {"todaysSpO2Info", "Today's average SpO2 is 95.4%. Today's SpO2 range is 90% to 99%."},
                     {"pasteItem", "{\"SpO2\":\"95.4\", \"MinSpO2\":\"90\", \"MaxSpO2\": \"99\", \"SpO2-7\":\"95.1\", "
                                   "\"MinSpO2-7\":\"89\" , \"MaxSpO2-7\":\"99\"}"}});
    EXPECT_EQ(single(*r, "averageSpO2"), 95.4f);

    put("bankDict", Value(Dictionary{{"respRateDict", Value(Dictionary{
        {"key", Value("20240302")}, {"averageRespRate", Value(14.26)}, {"minRespRate", Value("12.04")},
        {"maxRespRate", Value(17.5)}, {"averageRespRate7", Value(14.5)}})}}));
    r = m->requestRespRate();
    ASSERT_TRUE(r);
    expectTexts(*r, {{"averageRespRateLabel", "14.3 BrPM"}, {"averageRespRateWidgetLabel", "14.3 "},
                     {"averageRespRateRangeLabel", "12.0 - 17.5"}, {"difLabel", "0.2\u2198"},
                     {"pasteItem", "{\"RespRate\":\"14.3\", \"MinRespRate\":\"12\", \"MaxRespRate\": \"18\", "
                                   "\"RespRate-7\":\"14.5\", \"MinRespRate-7\":\"0\" , \"MaxRespRate-7\":\"0\"}"}});
}

TEST_F(GroupMetricsVitals, TrendUsesTheSinglePrecisionDifference) {
    struct { double average, average7; const char* label; int colour; } cases[] = {
        {95.4, 95.3, "", 0},  // 0.0999985 as floats: short of the threshold
        {96, 95, "1.0%\u2197", 1}, {95, 96, "1.0%\u2198", 2}, {93, 95.25, "2.2%\u2198", 2}, {96, 0, "", 0},
    };
    for (const auto& c : cases) {
        putSpO2(c.average, c.average7);
        auto r = m->requestSpO2();
        EXPECT_EQ(text(*r, "difLabel"), c.label) << c.average << " vs " << c.average7;
        EXPECT_EQ(r->objectForKey("difColour")->integerValue(), c.colour);
    }
    putSpO2(std::numeric_limits<double>::quiet_NaN(), 95, 88);  // no average: placeholders, numbers kept
    auto r = m->requestSpO2();
    expectTexts(*r, {{"averageSpO2Label", "--"}, {"averageSpO2Label7", "--"}, {"averageSpO2RangeLabel", "<absent>"},
                     {"todaysSpO2Info", "Today's average SpO2 is --. Today's SpO2 range is -- to --."}});
    EXPECT_EQ(text(*r, "pasteItem").rfind("{\"SpO2\":\"0.0\", \"MinSpO2\":\"88\", ", 0), 0u);
    start(local(2024, 3, 2, 10, 0), "de_DE");
    putSpO2(95.4, 94);
    expectTexts(*m->requestSpO2(), {{"averageSpO2Label", "95,4%"}, {"difLabel", "1,4%\u2197"}});
}

TEST_F(GroupMetricsVitals, WristTemperatureAgainstItsBaseline) {
    struct { Value today, baseline; const char* key; const char *dif, *sentence; } cases[] = {
        {Value(35.92), Value(35.61), "20240302", "0.31\u00B0\u2197", "35.92\u00B0. +0.31\u00B0 above baseline."},
        {Value(35.5), Value(35.75), "20240302", "0.25\u00B0\u2198", "35.50\u00B0. -0.25\u00B0 below baseline."},
        {Value(36.01f), Value(36.0f), "20240302", "0.00\u00B0=", "36.01\u00B0. No change from baseline."},
        {Value(36.2), Value(), "20240302", nullptr, nullptr},
        {Value(std::numeric_limits<double>::infinity()), Value("36"), "20240302", nullptr, nullptr},
        {Value(36.2), Value(36.0), "20240301", nullptr, nullptr},
    };
    for (const auto& c : cases) {
        put("bankDict", Value(Dictionary{{"wristTempKey", Value(c.key)}, {"wristTempTodayValue", c.today},
                                         {"wristTempAverage28", c.baseline}}));
        auto r = m->requestWristTemp();
        ASSERT_EQ(r.has_value(), c.dif != nullptr);
        if (r) {
            expectTexts(*r, {{"wristTempDifLabel", c.dif},
                             {"wristTempTodayInfo", std::string("Today's temperature is ") + c.sentence}});
        }
    }
    put("bankDict", Value(Dictionary{{"wristTempKey", Value("20240302")}, {"wristTempTodayValue", Value(35.92)},
                                     {"wristTempAverage28", Value(35.61)}}));
    EXPECT_EQ(text(*m->requestWristTemp(), "pasteItem"),
              "{\"Temperature\":\"35.92\", \"Baseline\":\"35.61\", \"Variance\": \"0.31\"}");
}

}  // namespace
}  // namespace velmorant::testing
