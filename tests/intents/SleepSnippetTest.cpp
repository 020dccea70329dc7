#include "SnippetChecks.h"

using namespace velmorant;
using intents::IntentViewController;
using snippet_ui::SleepMetricsUI;
using namespace velmorant::testing;

namespace {

// Headings, then results; the "R" of a stages record goes to a field the interface never connects.
Texts rings(const char* const (&t)[8]) {
    static const char* const kViews[9] = {
        "sleepRingHeadingLabel", "qualityRingHeadingLabel", "deepRingHeadingLabel", "bpmRingHeadingLabel",
        "sleepRingResultLabel",  "qualityRingResultLabel",  "deepRingResultLabel",  "bpmRingResultLabel",
        "qualityGlyphLabel"};
    return named(kViews, {t[0], t[1], t[2], t[3], t[4], t[5], t[6], t[7], "\u2605"});
}

Tints ringTints(bool data) {
    auto tint = [&](const char* key) { return data ? fromRecord(key) : kDarkGray; };
    return {{"sleepRingIndicator", tint("ringSleepColour")}, {"qualityRingIndicator", tint("ringQualityColour")},
            {"deepRingIndicator", tint("ringDeepColour")}, {"bpmRingIndicator", tint("ringBPMColour")}};
}

TEST(SleepSnippets, FillEveryFieldFromTheStoreFileInEnglishAndGerman) {
    runCases({
        {"LightsOffIntent", "en_US", Store::Switched,
         {{"lightsOffLabel", "\U0001F4A4 In bed at 10:45 PM."}, {"statusLabel", "GOOD NIGHT"}}, {}, "LightsOff"},
        {"LightsOffIntent", "de_DE", Store::Bare,
         {{"lightsOffLabel", "Mit \u201ELicht aus\u201C den Schlaf beginnen."}, {"statusLabel", "BEST\u00C4TIGEN"}}, {},
         "LightsOn"},
        {"TimeAsleepIntent", "en_US", Store::Tonight,
         panel({"TODAY", "\u263E", "7h 36m", "95% of goal", "SLEEP BANK", "7", "7h 36m", "5.0% debt"}),
         rows(fromRecord("sleepIndicatorColour"), fromRecord("bankIndicatorColour")), "drawn"},
        // No empty state: a fresh controller keeps the panel as first loaded.
        {"TimeAsleepIntent", "de_DE", Store::NoWatch, panel({"HEUTE", "", "", "", "SCHLAFKONTO", "", "", ""}), {},
         nullptr},
        {"LatestBedtimeIntent", "en_US", Store::Tonight,
         panel({"BED TIME", "\U0001F6CC", "13h 34m", "9:04 PM", "WAKE TIME", "\U0001F6CF", "23h 30m", "7:00 AM"}),
         rows(kClear, kClear), "drawn"},
        // Without a bedtime the readiness glyphs stand in.
        {"LatestBedtimeIntent", "de_DE", Store::Bare,
         panel({"SCHLAFENSZEIT", "h", "", "", "AUFWACHZEIT", "\u2665", "", ""}), rows(kDarkGray, kDarkGray), nullptr},
        {"SleepRingsIntent", "en_US", Store::Tonight,
         rings({"SLEEP", "QUALITY", "DEEP", "BPM", "7h 36m", "1h 30m", "1h 45m", "52"}), ringTints(true), "drawn"},
        {"SleepRingsIntent", "de_DE", Store::Stages,
         rings({"SCHLAF", "REM", "TIEFSCHLAF", "S/MIN", "7 Std., 36 Min.", "1 Std., 30 Min.", "1 Std., 45 Min.", "52"}),
         ringTints(true), "drawn"},
        {"SleepRingsIntent", "de_DE", Store::NoWatch,
         rings({"SCHLAF", "QUALIT\u00C4T", "TIEFSCHLAF", "S/MIN", "", "", "", ""}), ringTints(false), nullptr},
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
    EXPECT_EQ(controller.qualityGlyphLabel, nullptr);
    files.write(storeFor(Store::Tonight));
    show(controller, "SleepRingsIntent");
    EXPECT_EQ(textOf(controller, "qualityRingHeadingLabel"), "QUALITY");

    show(controller, "TimeAsleepIntent");
    const platform::ImagePtr recharge = controller.ringsImage->image();
    ASSERT_NE(recharge, nullptr);
    const platform::Dictionary bankRecord = SleepMetricsUI(*platform).requestSleepBankRings();

    // The watch's figures go: the sleep bank changes nothing, the rings empty their results.
    store->removeObjectForKey("watchTrackDict");
    show(controller, "TimeAsleepIntent");
    EXPECT_EQ(controller.ringsImage->image(), recharge);
    for (const char* key : {"sleepTimeLabel", "sleepGoalLabel", "bankTimeLabel", "bankBalanceLabel"})
        EXPECT_EQ(textOf(controller, key), *bankRecord.objectForKey(key)->string()) << key;
    show(controller, "SleepRingsIntent");
    EXPECT_EQ(controller.ringsImage->image(), recharge);
    EXPECT_EQ(textOf(controller, "sleepRingResultLabel"), "");
}

}  // namespace
