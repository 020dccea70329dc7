#include "TempDir.h"
#include "demo/DemoData.h"
#include "platform/graphics/Image.h"
#include "snippet_ui/SleepMetricsUI.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>

namespace velmorant {
using snippet_ui::SleepMetricsUI;

namespace {

using platform::Dictionary;
using platform::Value;
using Mirror = void (SleepMetricsUI::*)();
using Keys = std::map<std::string, Value>;

// The shared store as a file in a fresh folder, as the widgets and the main app see it.
class WidgetMirrorsTest : public ::testing::Test {
protected:
    std::unique_ptr<platform::Platform> platformOnFiles() {
        platform::PlatformOptions options{.now = platform::Date::fromUnix(1709641800),  // 07:30 in New York
                                          .timeZoneId = "America/New_York", .localeId = "en_US"};
        options.preferencesDir = dir->path();
        options.resourceDir = VELMORANT_TEST_RESOURCE_DIR;
        options.diagnostics = [](std::string_view) {};
        return std::make_unique<platform::Platform>(std::move(options));
    }
    Dictionary storeFile() { return platformOnFiles()->suiteNamed(platform::kAppGroupSuite)->dictionaryRepresentation(); }

    // A fresh store file: the demo night or nothing, a key of the app's own, and what earlier mirrors left.
    void fill(bool demo, const Dictionary& earlier = {}) {
        dir = std::make_unique<TempDir>();
        auto platform = platformOnFiles();
        auto store = platform->suiteNamed(platform::kAppGroupSuite);
        if (demo) demo::installDemoStores(*platform);
        store->setObject(Value("written by the app"), "mainAppKey");
        for (const auto& [key, value] : earlier) store->setObject(value, key);
        before = store->dictionaryRepresentation();
    }

    // Runs the mirror on a fresh object; the file then holds `expected` as its "Swift-" keys
    // and every other key as it was (the sleep-bank cache aside, which requests refresh).
    void expectMirror(Mirror mirror, const Keys& expected) {
        (SleepMetricsUI(*platformOnFiles()).*mirror)();
        Dictionary after = storeFile();
        Keys swift;
        for (const auto& [key, value] : after)
            if (key.starts_with("Swift-")) swift.emplace(key, value);
        EXPECT_EQ(swift, expected);
        for (const auto& [key, value] : before) {
            if (key.starts_with("Swift-") || key.starts_with("cachedSleepBank")) continue;
            EXPECT_TRUE(after.contains(key) && *after.objectForKey(key) == value) << key;
        }
    }

    std::unique_ptr<TempDir> dir;
    Dictionary before;
};

// With data each mirror writes exactly its fields; without, placeholders replace only the labels.
TEST_F(WidgetMirrorsTest, EachMirrorWritesItsFieldsOrPlaceholders) {
    const std::vector<std::string> score = {"hrvDifLabel", "hrvLabel",   "wakingDifLabel", "wakingLabel",
                                            "starsLabel",  "wakingTint", "hrvTint"};
    const Keys scoreBlank = {{"Swift-hrvDifLabel", Value("")},   {"Swift-hrvLabel", Value("--")},
                             {"Swift-wakingDifLabel", Value("")}, {"Swift-wakingLabel", Value("--")},
                             {"Swift-starsLabel", Value("")}};
    const Dictionary earlier{{"Swift-HasData", "1"},          {"Swift-averageSpO2RangeLabelCompact", "90-99"},
                             {"Swift-difColour", 2},          {"Swift-averageRespRateWidgetLabel", "14.3 "},
                             {"Swift-wakingTint", 1},         {"Swift-hrvTint", 2},
                             {"Swift-latestBedTime", "9:04 PM"}, {"Swift-sleepTimeLabel", "7h 36m"}};
    const struct {
        Mirror mirror;
        std::function<SleepMetricsUI::Record(SleepMetricsUI&)> request;
        std::vector<std::string> fields;
        Keys compact, placeholders;  // written with data besides the fields; written without data
        const char* removed;         // without data
    } cases[] = {
        {&SleepMetricsUI::requestSpO2ForSwift, &SleepMetricsUI::requestSpO2,
         {"averageSpO2Label", "averageSpO2RangeLabel", "difLabel", "difColour"},
         {{"Swift-averageSpO2RangeLabelCompact", Value("90-99")}},
         {{"Swift-averageSpO2Label", Value("--")}, {"Swift-averageSpO2RangeLabel", Value("--")},
          {"Swift-difLabel", Value("")}},
         "Swift-HasData"},
        // No colour from respiration, and only the spaces leave its compact range. Without data the
        // placeholder goes under the plain label; the widget label keeps its last value.
        {&SleepMetricsUI::requestRespRateForSwift, &SleepMetricsUI::requestRespRate,
         {"averageRespRateWidgetLabel", "averageRespRateRangeLabel", "difLabel"},
         {{"Swift-averageRespRateRangeLabelCompact", Value("12.1-17.8")}},
         {{"Swift-averageRespRateLabel", Value("--")}, {"Swift-averageRespRateRangeLabel", Value("--")},
          {"Swift-difLabel", Value("")}},
         "Swift-HasData"},
        {&SleepMetricsUI::requestReadinessForSwift, &SleepMetricsUI::requestReadiness, score, {}, scoreBlank,
         "Swift-HasData"},
        {&SleepMetricsUI::requestOctaneForSwift, &SleepMetricsUI::requestOctane, score, {}, scoreBlank, "Swift-HasData"},
        {&SleepMetricsUI::requestLatestBedtimeForSwift, &SleepMetricsUI::requestLatestBedtime,
         {"latestBedTime", "wakeTimeLabel", "bedTime"}, {}, {}, "Swift-HasData"},
        // The sleep bank always has a record: data present, its absent labels removed.
        {&SleepMetricsUI::requestSleepBankForSwift,
         [](SleepMetricsUI& ui) -> SleepMetricsUI::Record { return ui.requestSleepBankRings(); },
         {"sleepTimeLabel", "bankTimeLabel"}, {}, {{"Swift-HasData", Value("1")}}, "Swift-sleepTimeLabel"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fields[0]);
        fill(true);
        {
            auto platform = platformOnFiles();
            SleepMetricsUI widget(*platform);
            widget.widgetMode = true;
            SleepMetricsUI::Record record = c.request(widget);
            Keys expected = c.compact;
            expected.emplace("Swift-HasData", Value("1"));
            for (const std::string& field : c.fields) expected.emplace("Swift-" + field, *record->objectForKey(field));
            expectMirror(c.mirror, expected);
        }
        fill(false, earlier);
        Keys expected(earlier.begin(), earlier.end());
        expected.erase(c.removed);
        for (const auto& [key, value] : c.placeholders) expected[key] = value;
        expectMirror(c.mirror, expected);
    }
}

TEST_F(WidgetMirrorsTest, WidgetImagesSetTheirFlagsAndDrawAtWidgetSizes) {
    const struct { platform::ImagePtr (SleepMetricsUI::*image)(); bool accessory; double side; } cases[] = {
        {&SleepMetricsUI::swiftReadinessImage, false, 220},     {&SleepMetricsUI::swiftOctaneImage, false, 220},
        {&SleepMetricsUI::swiftSpO2Image, false, 220},          {&SleepMetricsUI::swiftRespRateImage, false, 220},
        {&SleepMetricsUI::swiftWristTempImage, false, 220},     {&SleepMetricsUI::swiftSleepRingsImage, false, 280},
        {&SleepMetricsUI::swiftSleepRingsAccessoryImage, true, 260}, {&SleepMetricsUI::swiftSleepBankImage, false, 220},
        {&SleepMetricsUI::swiftSleepBankAccessoryImage, true, 200},  {&SleepMetricsUI::swiftBedtimeImage, false, 220},
    };
    fill(true);
    auto platform = platformOnFiles();
    for (const auto& c : cases) {
        SleepMetricsUI ui(*platform);
        platform::ImagePtr image = (ui.*c.image)();
        EXPECT_FALSE(image->name());
        EXPECT_EQ(image->size().width, c.side);
        EXPECT_TRUE(ui.widgetMode && ui.widgetAccessoryMode == c.accessory);
        // Widget mode stays on for the object's later plain requests.
        EXPECT_EQ(ui.requestSpO2()->objectForKey("ringsImage")->image()->size().width, 220);
    }
    // One object serving both kinds of widget gives each its own size, whichever asked last.
    SleepMetricsUI shared(*platform);
    EXPECT_EQ(shared.swiftSleepRingsAccessoryImage()->size().width, 260);
    EXPECT_EQ(shared.swiftSleepRingsImage()->size().width, 280);
    EXPECT_EQ(shared.swiftSleepBankAccessoryImage()->size().width, 200);
    EXPECT_EQ(shared.swiftSleepBankImage()->size().width, 220);
    // The sleep-bank mirror leaves the flags as they are.
    SleepMetricsUI untouched(*platform);
    untouched.requestSleepBankForSwift();
    EXPECT_FALSE(untouched.widgetMode || untouched.widgetAccessoryMode);
}

}  // namespace
}  // namespace velmorant
