#include "intents/IntentViewController.h"

#include <gtest/gtest.h>

using namespace velmorant;
using intents::ExtensionContext;
using intents::IntentViewController;
using intents::Interaction;
using intents::InteractiveBehavior;
using intents::ParameterSet;
using intents::makeIntent;

namespace {

platform::PlatformOptions testOptions() {
    return {.now = platform::Date::fromUnix(1709416800), .timeZoneId = "UTC", .localeId = "en_US",
            .resourceDir = VELMORANT_TEST_RESOURCE_DIR};
}

TEST(IntentViewController, ShowsExactlyTheGroupAndPanelOfEachKind) {
    const struct { std::string_view intent; const char* container; const char* panel; double height; } cases[] = {
        {"LightsOffIntent", "lightsOffContainer", nullptr, 180},
        {"TimeAsleepIntent", "ringsContainer", "ringTextContainer", 420},
        {"ReadinessIntent", "ringsContainer", "ringTextContainer", 420},
        {"WristTempIntent", "ringsContainer", "ringTextContainer", 420},
        {"SleepFuelIntent", "ringsContainer", "ringTextContainer", 420},
        {"SleepSpO2Intent", "ringsContainer", "ringTextContainer", 420},
        {"RespirationIntent", "ringsContainer", "ringTextContainer", 420},
        {"SleepRingsIntent", "ringsContainer", "ringStatsContainer", 420},
        {"LatestBedtimeIntent", "ringsContainer", "ringTextContainer", 420},
        {"BedtimeStoryIntent", "textContainer", nullptr, 180},
    };
    platform::Platform platform(testOptions());
    ExtensionContext context;
    context.hostedViewMaximumAllowedSize = {350, 600};
    IntentViewController controller(platform, context);
    controller.viewDidLoad();
    // One controller for every request: each must start from a clean slate.
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.intent));
        std::optional<std::pair<ParameterSet, platform::Size>> shown;
        controller.configureViewForParameters({"title"}, Interaction{makeIntent(c.intent)}, InteractiveBehavior::None,
                                              &controller.extensionContext(),
                                              [&](bool ok, const ParameterSet& p, platform::Size s) {
                                                  EXPECT_TRUE(ok);
                                                  shown.emplace(p, s);
                                              });
        ASSERT_TRUE(shown);
        EXPECT_EQ(shown->first, ParameterSet{"title"});
        EXPECT_EQ(shown->second, (platform::Size{350, c.height}));
        for (const char* name : {"lightsOffContainer", "textContainer", "ringsContainer"})
            EXPECT_EQ(controller.views().view(name)->isHidden(), std::string_view(name) != c.container) << name;
        for (const char* name : {"ringTextContainer", "ringStatsContainer"})
            EXPECT_EQ(controller.views().view(name)->isHidden(), !c.panel || std::string_view(name) != c.panel) << name;
    }
}

TEST(IntentViewController, UnknownIntentSaysItIsConfusedAndNoCompletionIsNeeded) {
    platform::Platform platform(testOptions());
    IntentViewController controller(platform, {});
    controller.configureViewForParameters({}, Interaction{makeIntent("NotAnIntent")}, InteractiveBehavior::None,
                                          nullptr, nullptr);
    EXPECT_EQ(controller.textLabel->text(), "I am so confused.");
    controller.configureViewForParameters({}, Interaction{makeIntent("SleepRingsIntent")}, InteractiveBehavior::None,
                                          nullptr, nullptr);
    EXPECT_FALSE(controller.ringStatsContainer->isHidden());
}

}  // namespace
