#include "SnippetUiTestSupport.h"

#include <algorithm>
#include <functional>
#include <set>

namespace velmorant::testing {
using format::FormatTools;
using metrics::GroupMetrics;
using snippet_ui::SleepMetricsUI;

namespace {

using platform::Date;

const Date kAfterNightHour = Date::fromUnix(1709690520);  // 21:02 the same day as kMorning

// The demo night in memory.
class RequestsTest : public SnippetUiTest {
protected:
    void SetUp() override { start(kMorning); }
    void start(Date now, bool demo = true) { SnippetUiTest::start(2, "en_US", now, demo); }
    static std::string text(const Dictionary& record, std::string_view key) {
        const Value* value = record.objectForKey(key);
        return value && value->string() ? *value->string() : "<absent>";
    }
};

struct RecordCase {
    const char* name;
    std::function<SleepMetricsUI::Record(SleepMetricsUI&)> request;
    std::function<GroupMetrics::Record(GroupMetrics&)> source;  // whose fields the record copies
    std::set<std::string> keys, widgetOnlyKeys;
    double plainSide, widgetSide, accessorySide;
};

template <SleepMetricsUI::Record (SleepMetricsUI::*request)()>
SleepMetricsUI::Record run(SleepMetricsUI& ui) { return (ui.*request)(); }

const std::vector<RecordCase> kRecords = {
    {"spO2", run<&SleepMetricsUI::requestSpO2>, &GroupMetrics::requestSpO2,
     {"averageSpO2Label", "averageSpO2Label7", "minSpO2Label", "maxSpO2Label", "averageSpO2RangeLabel",
      "averageSpO2RangeLabel7", "difLabel", "difColour", "pasteItem", "ringsImage"}, {}, 280, 220, 220},
    {"respRate", run<&SleepMetricsUI::requestRespRate>, &GroupMetrics::requestRespRate,
     {"averageRespRate", "averageRespRateLabel", "averageRespRateWidgetLabel", "averageRespRateLabel7",
      "minRespRateLabel", "maxRespRateLabel", "averageRespRateRangeLabel", "averageRespRateRangeLabel7", "difLabel",
      "difColour", "pasteItem", "ringsImage"}, {}, 280, 220, 220},
    {"wristTemp", run<&SleepMetricsUI::requestWristTemp>, &GroupMetrics::requestWristTemp,
     {"wristTempTodayLabel", "wristTempAverage28Label", "wristTempDifLabel", "wristTempScore", "pasteItem",
      "ratingColour", "ringsImage"}, {}, 280, 220, 220},
    {"readiness", run<&SleepMetricsUI::requestReadiness>, &GroupMetrics::requestReadiness,
     {"pasteItem", "ringsImage", "hrvIndicatorColour", "wakingIndicatorColour", "hrvDifLabel", "hrvLabel",
      "wakingDifLabel", "wakingLabel", "starsLabel"}, {"wakingTint", "hrvTint"}, 280, 220, 220},
    {"octane", run<&SleepMetricsUI::requestOctane>, &GroupMetrics::requestOctane,
     {"pasteItem", "ringsImage", "hrvIndicatorColour", "wakingIndicatorColour", "hrvDifLabel", "hrvLabel",
      "wakingDifLabel", "wakingLabel", "starsLabel"}, {"wakingTint", "hrvTint"}, 280, 220, 220},
    {"quality", run<&SleepMetricsUI::requestQuality>, &GroupMetrics::requestQuality,
     {"ringsImage", "ringSleepLabel", "ringQualityLabel", "ringDeepLabel", "ringBPMLabel", "ringSleepColour",
      "ringQualityColour", "ringDeepColour", "ringBPMColour", "pasteItem"}, {}, 280, 280, 260},
    {"sleepBank", [](SleepMetricsUI& ui) -> SleepMetricsUI::Record { return ui.requestSleepBankRings(); }, nullptr,
     {"ringsImage", "sleepTimeLabel", "sleepGoalLabel", "bankTimeLabel", "shortBankTimeLabel", "bankBalanceLabel",
      "sleepIndicatorColour", "bankIndicatorColour", "bankPercentage", "pasteItem"}, {}, 280, 220, 200},
    {"latestBedtime", run<&SleepMetricsUI::requestLatestBedtime>, &GroupMetrics::requestSleepBank,
     {"ringsImage", "latestBedTime", "wakeTimeLabel", "timeUntilBedLabel", "timeUntilWakeLabel", "pasteItem"},
     {"bedTime"}, 280, 220, 220},
    {"consistency", run<&SleepMetricsUI::requestConsistency>, &GroupMetrics::requestConsistencyDict,
     {"ringsImage", "avgBedtimeDateString", "trendString", "starsLabel"}, {}, 280, 220, 220},
};

TEST_F(RequestsTest, EachRecordHasItsKeysAndImageSideForTheWidgetFlags) {
    for (auto [widget, accessory] : {std::pair{false, false}, {true, false}, {true, true}}) {
        for (const RecordCase& c : kRecords) {
            SCOPED_TRACE(::testing::Message() << c.name << " widget " << widget << " accessory " << accessory);
            start(kMorning);
            ui->widgetMode = widget;
            ui->widgetAccessoryMode = accessory;
            SleepMetricsUI::Record record = c.request(*ui);
            ASSERT_TRUE(record);
            std::set<std::string> keys, expected = c.keys;
            for (const auto& [key, value] : *record) keys.insert(key);
            if (widget) expected.insert(c.widgetOnlyKeys.begin(), c.widgetOnlyKeys.end());
            EXPECT_EQ(keys, expected);
            // The bitmap itself, not only its stated size, has the side asked for.
            const double side = accessory ? c.accessorySide : widget ? c.widgetSide : c.plainSide;
            EXPECT_EQ(record->objectForKey("ringsImage")->image()->pixelWidth(), side * 2);
            // Copied fields are the source's own; the readiness copyable text too, not the stars figure written first.
            GroupMetrics metrics(*platform_);
            if (GroupMetrics::Record source = c.source && !widget ? c.source(metrics) : std::nullopt)
                for (const auto& [key, value] : *record)
                    if (const Value* original = source->objectForKey(key)) {
                        EXPECT_EQ(value, *original) << key;
                    }
        }
    }
    EXPECT_EQ(text(*ui->requestReadiness(), "starsLabel"), text(*GroupMetrics(*platform_).requestReadiness(), "rating"));
}

TEST_F(RequestsTest, WithoutDataThereIsNoRecordAndWidgetsGetThePlaceholder) {
    start(kMorning, false);
    for (const RecordCase& c : kRecords) {
        SleepMetricsUI::Record record = c.request(*ui);
        // The sleep bank alone answers an empty record rather than none.
        EXPECT_EQ(record.has_value(), c.name == std::string("sleepBank")) << c.name;
        EXPECT_TRUE(!record || record->empty());
    }
    for (auto image : {&SleepMetricsUI::swiftReadinessImage, &SleepMetricsUI::swiftOctaneImage,
                       &SleepMetricsUI::swiftSpO2Image, &SleepMetricsUI::swiftRespRateImage,
                       &SleepMetricsUI::swiftWristTempImage, &SleepMetricsUI::swiftSleepRingsImage,
                       &SleepMetricsUI::swiftSleepRingsAccessoryImage, &SleepMetricsUI::swiftBedtimeImage})
        EXPECT_EQ(((*ui).*image)()->name().value_or(""), "WidgetWait");
    EXPECT_FALSE(ui->swiftSleepBankImage() || ui->swiftSleepBankAccessoryImage());
}

TEST_F(RequestsTest, SleepBankBalanceAgainstAnEightHourGoal) {
    struct Row { double bankOfGoal; const char* balance; };
    const Row cases[] = {{1.0, "0.0% Credit"},  {0.5, "50.0% debt"},   {0.0, "100% debt"},
                 {1.995, "99.5% Credit"}, {2.0, "100% Credit"}, {0.999, "0.1% debt"}};
    for (const auto& c : cases) {
        put("watchTrackDict", Dictionary{{"rawSleepTime", 14400.0}, {"rawSleepBankTime", c.bankOfGoal * 28800}});
        Dictionary record = ui->requestSleepBankRings();
        EXPECT_EQ(text(record, "bankBalanceLabel"), c.balance);
        EXPECT_EQ(text(record, "sleepGoalLabel"), "50% of goal");
        EXPECT_FLOAT_EQ(record.objectForKey("bankPercentage")->floatValue(), static_cast<float>(c.bankOfGoal));
    }
}

TEST_F(RequestsTest, WidgetBedtimeIsTheNextOneAndIsLoggedOnEachRequest) {
    // In the morning last night's bedtime has passed; just after the night hour tonight's is ahead.
    for (auto [now, past] : {std::pair{kMorning, true}, {kAfterNightHour, false}}) {
        start(now);
        const Date bedTime = *GroupMetrics(*platform_).requestSleepBank()->objectForKey("bedTime")->date();
        ASSERT_EQ(bedTime < now, past) << "the demo night no longer covers this case";
        const std::string hourMin = FormatTools(*platform_).hourMin(bedTime);
        auto logged = [&] {
            return std::count_if(reported.begin(), reported.end(),
                                 [&](const std::string& line) { return line.find(hourMin) != std::string::npos; });
        };
        EXPECT_FALSE(ui->requestLatestBedtime()->contains("bedTime"));
        EXPECT_EQ(logged(), 0);
        ui->widgetMode = true;
        SleepMetricsUI::Record record = ui->requestLatestBedtime();
        EXPECT_EQ(record->objectForKey("bedTime")->date()->timeIntervalSinceDate(bedTime), past ? 86400 : 0);
        ui->requestLatestBedtime();
        EXPECT_EQ(logged(), 2);
    }
}

}  // namespace
}  // namespace velmorant::testing
