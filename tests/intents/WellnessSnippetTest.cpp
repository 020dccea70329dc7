#include "SnippetChecks.h"

using namespace velmorant;
using intents::IntentViewController;
using namespace velmorant::testing;

namespace {

const Tint kHrv = fromRecord("hrvIndicatorColour");
const Tint kWaking = fromRecord("wakingIndicatorColour");

TEST(WellnessSnippets, FillEveryFieldFromTheStoreFileInEnglishAndGerman) {
    const Tints noData = rows(kDarkGray, kDarkGray);
    runCases({
        // Blood oxygen and respiration: fixed colours with data; the range glyph only without.
        {"SleepSpO2Intent", "en_US", Store::Tonight,
         panel({"AVG.", "O\u2082", "95.4%", "\u2466 95.1%", "RANGE", "", "90% - 99%", "\u2466 89% - 99%"}),
         rows(kWarm, kCyan), "drawn"},
        {"SleepSpO2Intent", "de_DE", Store::LastNight, panel({"MITTEL", "O\u2082", "", "", "BEREICH", "\u2B64", "", ""}),
         noData, nullptr},
        {"RespirationIntent", "de_DE", Store::Tonight,
         panel({"MITTEL", "R\u1D63", "14,3 AZ/min", "\u2466 14,0", "BEREICH", "", "12,1 - 17,8", "\u2466 11,8 - 18,2"}),
         rows(kWarm, kCyan), "drawn"},
        {"RespirationIntent", "en_US", Store::Bare, panel({"AVG.", "R\u1D63", "", "", "RANGE", "\u2B64", "", ""}),
         noData, nullptr},
        // Wrist temperature: change and today above, only the baseline below, never a lower colour.
        {"WristTempIntent", "en_US", Store::Tonight,
         panel({"TEMPERATURE", "\u00B0", "0.31\u00B0\u2197", "35.92\u00B0", "BASELINE", "", "", "35.61\u00B0"}),
         rows(fromRecord("ratingColour"), kClear), "drawn"},
        {"WristTempIntent", "en_US", Store::LastNight,
         panel({"TEMPERATURE", "\u00B0", "", "", "BASELINE", "", "", ""}), rows(kDarkGray, kClear), nullptr},
        // Readiness and sleep fuel differ only in their record and lower heading.
        {"ReadinessIntent", "en_US", Store::Tonight,
         panel({"HRV", "h", "48 ms", "3 above baseline", "WAKING", "\u2665", "55 bpm", "2 below baseline"}),
         rows(kHrv, kWaking), "drawn"},
        {"ReadinessIntent", "de_DE", Store::Bare, panel({"HRV", "h", "", "", "AUFWACHEN", "\u2665", "", ""}), noData,
         nullptr},
        {"SleepFuelIntent", "de_DE", Store::Tonight,
         panel({"HRV", "h", "44 ms", "3 \u00FCber Basiswert", "S/MIN", "\u2665", "51 S/min", "1 unter Basiswert"}),
         rows(kHrv, kWaking), "drawn"},
        {"SleepFuelIntent", "en_US", Store::LastNight, panel({"HRV", "h", "", "", "BPM", "\u2665", "", ""}), noData,
         nullptr},
    });
}

// Labels are not cleared between requests: an empty state keeps the earlier
// picture and the small glyph font, and rewrites every text it uses.
TEST(WellnessSnippets, ASecondRequestKeepsThePictureAndGlyphFontAndRewritesTheTexts) {
    SnippetFiles files;
    files.write(storeFor(Store::Tonight));
    auto platform = files.platform("en_US");
    IntentViewController controller(*platform, {});
    const platform::Font small = platform::Font::systemFontOfSize(13, platform::FontWeight::Regular);
    ASSERT_NE(*controller.sleepGlyph->font(), small);
    show(controller, "SleepSpO2Intent");
    const platform::ImagePtr gauge = controller.ringsImage->image();
    ASSERT_NE(gauge, nullptr);

    // The main app files a night without these figures.
    platform->suiteNamed(platform::kAppGroupSuite)->removeObjectForKey("bankDict");
    for (std::string_view intent : {"SleepSpO2Intent", "ReadinessIntent", "WristTempIntent"}) {
        SCOPED_TRACE(std::string(intent));
        show(controller, intent);
        EXPECT_EQ(controller.ringsImage->image(), gauge);
        EXPECT_EQ(controller.sleepGlyph->font(), small);
        for (const char* view : {"sleepTimeLabel", "sleepGoalLabel", "bankTimeLabel", "bankBalanceLabel", "starsLabel"})
            EXPECT_EQ(textOf(controller, view), "") << view;
    }
    EXPECT_EQ(controller.bankIndicator->backgroundColor(), platform::Colour::clearColor());

    files.write(storeFor(Store::Tonight));
    show(controller, "RespirationIntent");
    EXPECT_NE(controller.ringsImage->image(), gauge);
    EXPECT_EQ(textOf(controller, "bankTimeLabel"), "12.1 - 17.8");
    EXPECT_EQ(textOf(controller, "bankGlyph"), "");
}

}  // namespace
