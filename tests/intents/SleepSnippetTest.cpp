#include "SnippetChecks.h"

#include "intents/HandleLightsOff.h"

#include <gtest/gtest.h>

using namespace velmorant;
using namespace velmorant::testing;

namespace {

using Texts = std::vector<std::pair<const char*, const char*>>;

Texts rings(const char* const (&headings)[4], const char* const (&results)[4]) {
    return {{"sleepRingHeadingLabel", headings[0]}, {"qualityRingHeadingLabel", headings[1]},
            {"deepRingHeadingLabel", headings[2]},  {"bpmRingHeadingLabel", headings[3]},
            {"sleepRingResultLabel", results[0]},   {"qualityRingResultLabel", results[1]},
            {"deepRingResultLabel", results[2]},    {"bpmRingResultLabel", results[3]},
            // The "R" of a stages record goes to a field the interface never connects.
            {"qualityGlyphLabel", "\u2605"},        {"starsLabel", ""}};
}

std::vector<std::pair<const char*, Tint>> ringTints(bool data) {
    auto tint = [&](const char* key) { return data ? fromRecord(key) : kDarkGray; };
    return {{"sleepRingIndicator", tint("ringSleepColour")}, {"qualityRingIndicator", tint("ringQualityColour")},
            {"deepRingIndicator", tint("ringDeepColour")}, {"bpmRingIndicator", tint("ringBPMColour")}};
}

std::vector<std::pair<const char*, Tint>> rows(Tint upper, Tint lower) {
    return {{"sleepIndicator", upper}, {"bankIndicator", lower}};
}

TEST(SleepSnippets, FillEveryFieldFromTheStoreFileInEnglishAndGerman) {
    const auto bankTints = rows(fromRecord("sleepIndicatorColour"), fromRecord("bankIndicatorColour"));
    runCases({
        {"LightsOffIntent", "en_US", Store::Switched,
         {{"lightsOffLabel", "\U0001F4A4 In bed at 10:45 PM."}, {"statusLabel", "GOOD NIGHT"}}, {}, "LightsOff"},
        {"LightsOffIntent", "de_DE", Store::Switched,
         {{"lightsOffLabel", "\U0001F4A4 Im Bett seit 22:45."}, {"statusLabel", "GUTE NACHT"}}, {}, "LightsOff"},
        {"LightsOffIntent", "en_US", Store::Tonight,
         {{"lightsOffLabel", "Optionally use lights off to start sleeping."}, {"statusLabel", "CONFIRM"}}, {},
         "LightsOn"},
        {"LightsOffIntent", "de_DE", Store::Bare,
         {{"lightsOffLabel", "Mit \u201ELicht aus\u201C den Schlaf beginnen."}, {"statusLabel", "BEST\u00C4TIGEN"}}, {},
         "LightsOn"},
        {"TimeAsleepIntent", "en_US", Store::Tonight,
         panel({"TODAY", "\u263E", "7h 36m", "95% of goal", "SLEEP BANK", "7", "7h 36m", "5.0% debt"}), bankTints,
         "drawn"},
        {"TimeAsleepIntent", "de_DE", Store::Tonight,
         panel({"HEUTE", "\u263E", "7 Std., 36 Min.", "95% des Ziels", "SCHLAFKONTO", "7", "7 Std., 36 Min.",
                "5,0% zu wenig"}),
         bankTints, "drawn"},
        // No empty state: a fresh controller keeps the panel as first loaded.
        {"TimeAsleepIntent", "de_DE", Store::NoWatch, panel({"HEUTE", "", "", "", "SCHLAFKONTO", "", "", ""}), {},
         nullptr},
        {"LatestBedtimeIntent", "en_US", Store::Tonight,
         panel({"BED TIME", "\U0001F6CC", "13h 34m", "9:04 PM", "WAKE TIME", "\U0001F6CF", "23h 30m", "7:00 AM"}),
         rows(kClear, kClear), "drawn"},
        {"LatestBedtimeIntent", "de_DE", Store::Tonight,
         panel({"SCHLAFENSZEIT", "\U0001F6CC", "13 Std., 34 Min.", "21:04", "AUFWACHZEIT", "\U0001F6CF",
                "23 Std., 30 Min.", "07:00"}),
         rows(kClear, kClear), "drawn"},
        // Without a bedtime the readiness glyphs stand in.
        {"LatestBedtimeIntent", "en_US", Store::Bare, panel({"BED TIME", "h", "", "", "WAKE TIME", "\u2665", "", ""}),
         rows(kDarkGray, kDarkGray), nullptr},
        {"LatestBedtimeIntent", "de_DE", Store::Bare,
         panel({"SCHLAFENSZEIT", "h", "", "", "AUFWACHZEIT", "\u2665", "", ""}), rows(kDarkGray, kDarkGray), nullptr},
        {"SleepRingsIntent", "en_US", Store::Tonight,
         rings({"SLEEP", "QUALITY", "DEEP", "BPM"}, {"7h 36m", "1h 30m", "1h 45m", "52"}), ringTints(true), "drawn"},
        {"SleepRingsIntent", "de_DE", Store::Stages,
         rings({"SCHLAF", "REM", "TIEFSCHLAF", "S/MIN"}, {"7 Std., 36 Min.", "1 Std., 30 Min.", "1 Std., 45 Min.", "52"}),
         ringTints(true), "drawn"},
        {"SleepRingsIntent", "en_US", Store::Stages,
         rings({"SLEEP", "REM", "DEEP", "BPM"}, {"7h 36m", "1h 30m", "1h 45m", "52"}), ringTints(true), "drawn"},
        {"SleepRingsIntent", "de_DE", Store::NoWatch, rings({"SCHLAF", "QUALIT\u00C4T", "TIEFSCHLAF", "S/MIN"}, {"", "", "", ""}),
         ringTints(false), nullptr},
    });
}

// What a request leaves from an earlier one on the same controller, and what it sets afresh.
TEST(SleepSnippets, ASecondRequestKeepsWhatItDoesNotSetAndRewritesTheRest) {
    SnippetFiles files;
    files.write(storeFor(Store::Stages));
    auto platform = files.platform("en_US");
    auto store = platform->suiteNamed(platform::kAppGroupSuite);
    IntentViewController controller(*platform, {});

    show(controller, "SleepRingsIntent");
    EXPECT_EQ(textOf(controller, "qualityRingHeadingLabel"), "REM");
    EXPECT_EQ(controller.qualityGlyphLabel, nullptr);
    files.write(storeFor(Store::Tonight));
    show(controller, "SleepRingsIntent");
    EXPECT_EQ(textOf(controller, "qualityRingHeadingLabel"), "QUALITY");
    EXPECT_EQ(textOf(controller, "qualityGlyphLabel"), "\u2605");

    show(controller, "TimeAsleepIntent");
    const platform::ImagePtr recharge = controller.ringsImage->image();
    ASSERT_NE(recharge, nullptr);
    const platform::Dictionary bankRecord = SleepMetricsUI(*platform).requestSleepBankRings();

    // The watch's figures go: the sleep bank changes nothing but its headings.
    store->removeObjectForKey("watchTrackDict");
    show(controller, "TimeAsleepIntent");
    EXPECT_EQ(controller.ringsImage->image(), recharge);
    for (const char* key : {"sleepTimeLabel", "sleepGoalLabel", "bankTimeLabel", "bankBalanceLabel"})
        EXPECT_EQ(textOf(controller, key), *bankRecord.objectForKey(key)->string()) << key;
    EXPECT_EQ(textOf(controller, "sleepGlyph"), "\u263E");
    EXPECT_EQ(textOf(controller, "bankGlyph"), "7");
    EXPECT_EQ(controller.sleepIndicator->backgroundColor(), bankRecord.objectForKey("sleepIndicatorColour")->colour());

    // The rings empty their results but keep the picture.
    show(controller, "SleepRingsIntent");
    EXPECT_EQ(controller.ringsImage->image(), recharge);
    EXPECT_EQ(textOf(controller, "sleepRingResultLabel"), "");
    EXPECT_EQ(controller.bpmRingIndicator->backgroundColor(), platform::Colour::darkGrayColor());

    // The bedtime rewrites every field, in its empty state too.
    store->removeObjectForKey("bankDict");
    store->removeObjectForKey("cachedSleepBank");
    show(controller, "LatestBedtimeIntent");
    EXPECT_EQ(controller.ringsImage->image(), recharge);
    for (const char* key : {"sleepTimeLabel", "sleepGoalLabel", "bankTimeLabel", "bankBalanceLabel"})
        EXPECT_EQ(textOf(controller, key), "") << key;
    EXPECT_EQ(textOf(controller, "sleepGlyph"), "h");
    EXPECT_EQ(textOf(controller, "bankGlyph"), "\u2665");
    EXPECT_EQ(controller.bankIndicator->backgroundColor(), platform::Colour::darkGrayColor());
}

TEST(SleepSnippets, ALaterSwitchReplacesTheEarlierMomentAndTheSnippetShowsIt) {
    SnippetFiles files;
    files.write(sharedStore(kTonight));
    auto platform = files.platform("en_US", kNightStart.dateByAddingTimeInterval(3600));
    HandleLightsOff handler(*platform);
    handler.turnLightsOff();
    platform->setNow(kNightStart.dateByAddingTimeInterval(2 * 3600 + 15 * 60));
    handler.turnLightsOff();

    auto reader = files.platform("en_US");
    IntentViewController controller(*reader, {});
    EXPECT_EQ(show(controller, "LightsOffIntent"), 180);
    EXPECT_EQ(textOf(controller, "lightsOffLabel"), "\U0001F4A4 In bed at 11:15 PM.");
    EXPECT_EQ(textOf(controller, "statusLabel"), "GOOD NIGHT");
    ASSERT_NE(controller.lamp->image(), nullptr);
    EXPECT_EQ(controller.lamp->image()->name(), "LightsOff");
}

}  // namespace
