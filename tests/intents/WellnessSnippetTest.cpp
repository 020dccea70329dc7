#include "SnippetChecks.h"

#include <gtest/gtest.h>

using namespace velmorant;
using namespace velmorant::testing;

namespace {

const Tint kHrv = fromRecord("hrvIndicatorColour");
const Tint kWaking = fromRecord("wakingIndicatorColour");
const Tint kTempRating = fromRecord("ratingColour");

std::vector<std::pair<const char*, Tint>> rows(Tint upper, Tint lower) {
    return {{"sleepIndicator", upper}, {"bankIndicator", lower}};
}

TEST(WellnessSnippets, FillEveryFieldFromTheStoreFileInEnglishAndGerman) {
    runCases({
        // Blood oxygen and respiration: fixed colours with data; the range glyph only without.
        {"SleepSpO2Intent", "en_US", Store::Tonight,
         panel({"AVG.", "O\u2082", "95.4%", "\u2466 95.1%", "RANGE", "", "90% - 99%", "\u2466 89% - 99%"}),
         rows(kWarm, kCyan), "drawn", true},
        {"SleepSpO2Intent", "de_DE", Store::Tonight,
         panel({"MITTEL", "O\u2082", "95,4%", "\u2466 95,1%", "BEREICH", "", "90% - 99%", "\u2466 89% - 99%"}),
         rows(kWarm, kCyan), "drawn", true},
        {"SleepSpO2Intent", "en_US", Store::Bare, panel({"AVG.", "O\u2082", "", "", "RANGE", "\u2B64", "", ""}),
         rows(kDarkGray, kDarkGray), nullptr},
        {"SleepSpO2Intent", "de_DE", Store::LastNight, panel({"MITTEL", "O\u2082", "", "", "BEREICH", "\u2B64", "", ""}),
         rows(kDarkGray, kDarkGray), nullptr},
        {"RespirationIntent", "en_US", Store::Tonight,
         panel({"AVG.", "R\u1D63", "14.3 BrPM", "\u2466 14.0", "RANGE", "", "12.1 - 17.8", "\u2466 11.8 - 18.2"}),
         rows(kWarm, kCyan), "drawn", true},
        {"RespirationIntent", "de_DE", Store::Tonight,
         panel({"MITTEL", "R\u1D63", "14,3 AZ/min", "\u2466 14,0", "BEREICH", "", "12,1 - 17,8", "\u2466 11,8 - 18,2"}),
         rows(kWarm, kCyan), "drawn", true},
        {"RespirationIntent", "de_DE", Store::Bare, panel({"MITTEL", "R\u1D63", "", "", "BEREICH", "\u2B64", "", ""}),
         rows(kDarkGray, kDarkGray), nullptr},
        // Wrist temperature: change and today above, only the baseline below, never a lower colour.
        {"WristTempIntent", "en_US", Store::Tonight,
         panel({"TEMPERATURE", "\u00B0", "0.31\u00B0\u2197", "35.92\u00B0", "BASELINE", "", "", "35.61\u00B0"}),
         rows(kTempRating, kClear), "drawn"},
        {"WristTempIntent", "de_DE", Store::Tonight,
         panel({"TEMPERATUR", "\u00B0", "0,31\u00B0\u2197", "35,92\u00B0", "BASISWERT", "", "", "35,61\u00B0"}),
         rows(kTempRating, kClear), "drawn"},
        {"WristTempIntent", "en_US", Store::LastNight,
         panel({"TEMPERATURE", "\u00B0", "", "", "BASELINE", "", "", ""}), rows(kDarkGray, kClear), nullptr},
        {"WristTempIntent", "de_DE", Store::Bare, panel({"TEMPERATUR", "\u00B0", "", "", "BASISWERT", "", "", ""}),
         rows(kDarkGray, kClear), nullptr},
        // Readiness and sleep fuel differ only in their record and lower heading.
        {"ReadinessIntent", "en_US", Store::Tonight,
         panel({"HRV", "h", "48 ms", "3 above baseline", "WAKING", "\u2665", "55 bpm", "2 below baseline"}),
         rows(kHrv, kWaking), "drawn"},
        {"ReadinessIntent", "de_DE", Store::Tonight,
         panel({"HRV", "h", "48 ms", "3 \u00FCber Basiswert", "AUFWACHEN", "\u2665", "55 S/min", "2 unter Basiswert"}),
         rows(kHrv, kWaking), "drawn"},
        {"ReadinessIntent", "en_US", Store::Bare, panel({"HRV", "h", "", "", "WAKING", "\u2665", "", ""}),
         rows(kDarkGray, kDarkGray), nullptr},
        {"ReadinessIntent", "de_DE", Store::Bare, panel({"HRV", "h", "", "", "AUFWACHEN", "\u2665", "", ""}),
         rows(kDarkGray, kDarkGray), nullptr},
        {"SleepFuelIntent", "en_US", Store::Tonight,
         panel({"HRV", "h", "44 ms", "3 above baseline", "BPM", "\u2665", "51 bpm", "1 below baseline"}),
         rows(kHrv, kWaking), "drawn"},
        {"SleepFuelIntent", "de_DE", Store::Tonight,
         panel({"HRV", "h", "44 ms", "3 \u00FCber Basiswert", "S/MIN", "\u2665", "51 S/min", "1 unter Basiswert"}),
         rows(kHrv, kWaking), "drawn"},
        {"SleepFuelIntent", "en_US", Store::LastNight, panel({"HRV", "h", "", "", "BPM", "\u2665", "", ""}),
         rows(kDarkGray, kDarkGray), nullptr},
        {"SleepFuelIntent", "de_DE", Store::Bare, panel({"HRV", "h", "", "", "S/MIN", "\u2665", "", ""}),
         rows(kDarkGray, kDarkGray), nullptr},
    });
}

// Labels are not cleared between requests: an empty state keeps the earlier
// picture and the small glyph font, and rewrites every text it uses.
TEST(WellnessSnippets, ASecondRequestKeepsThePictureAndGlyphFontAndRewritesTheTexts) {
    SnippetFiles files;
    files.write(storeFor(Store::Tonight));
    auto platform = files.platform("en_US");
    IntentViewController controller(*platform, {});
    const platform::Font firstLoaded = *controller.sleepGlyph->font();
    const platform::Font small = platform::Font::systemFontOfSize(13, platform::FontWeight::Regular);
    ASSERT_NE(firstLoaded, small);

    show(controller, "SleepSpO2Intent");
    const platform::ImagePtr gauge = controller.ringsImage->image();
    ASSERT_NE(gauge, nullptr);
    EXPECT_EQ(controller.sleepGlyph->font(), small);

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
    EXPECT_EQ(textOf(controller, "sleepHeadingLabel"), "TEMPERATURE");
    EXPECT_EQ(controller.bankIndicator->backgroundColor(), platform::Colour::clearColor());

    files.write(storeFor(Store::Tonight));
    show(controller, "RespirationIntent");
    EXPECT_NE(controller.ringsImage->image(), gauge);
    EXPECT_EQ(textOf(controller, "bankTimeLabel"), "12.1 - 17.8");
    EXPECT_EQ(textOf(controller, "bankGlyph"), "");
}

}  // namespace
