#include "intents/IntentResponses.h"
#include "intents/IntentViewController.h"

#include <gtest/gtest.h>

#include <optional>

using namespace velmorant;

namespace {

template <typename Response>
concept HasDictionary = requires(Response r) { r.dictionary(); };

platform::PlatformOptions testOptions() {
    platform::PlatformOptions options;
    options.now = platform::Date::fromUnix(1709416800);  // 2024-03-02 22:00 UTC
    options.timeZoneId = "UTC";
    options.localeId = "en_US";
    options.resourceDir = VELMORANT_TEST_RESOURCE_DIR;
    return options;
}

struct Shown {
    bool called = false;
    bool success = false;
    ParameterSet parameters;
    platform::Size size;
};

Shown configure(IntentViewController& controller, std::string_view intent, ParameterSet parameters = {}) {
    Shown shown;
    controller.configureViewForParameters(parameters, Interaction{makeIntent(intent)}, InteractiveBehavior::None,
                                          &controller.extensionContext(),
                                          [&](bool ok, const ParameterSet& p, platform::Size s) {
                                              shown = {true, ok, p, s};
                                          });
    return shown;
}

struct DispatchCase {
    std::string_view intent;
    const char* container;
    const char* panel;  // nullptr outside the rings group
    double height;
};

const char* const kContainers[] = {"lightsOffContainer", "textContainer", "ringsContainer"};
const char* const kPanels[] = {"ringTextContainer", "ringStatsContainer"};

TEST(IntentViewController, ShowsExactlyTheGroupAndPanelOfEachKind) {
    const DispatchCase cases[] = {
        {"LightsOffIntent", "lightsOffContainer", nullptr, 180},
        {"TimeAsleepIntent", "ringsContainer", "ringTextContainer", 420},
        {"ReadinessIntent", "ringsContainer", "ringTextContainer", 420},
        {"WristTempIntent", "ringsContainer", "ringTextContainer", 420},
        {"SleepFuelIntent", "ringsContainer", "ringTextContainer", 420},
        {"SleepSpO2Intent", "ringsContainer", "ringTextContainer", 420},
        {"RespirationIntent", "ringsContainer", "ringTextContainer", 420},
        {"LatestBedtimeIntent", "ringsContainer", "ringTextContainer", 420},
        {"SleepRingsIntent", "ringsContainer", "ringStatsContainer", 420},
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
        Shown shown = configure(controller, c.intent, {"title"});
        ASSERT_TRUE(shown.called);
        EXPECT_TRUE(shown.success);
        EXPECT_EQ(shown.parameters, ParameterSet{"title"});
        EXPECT_EQ(shown.size, (platform::Size{350, c.height}));
        for (const char* name : kContainers)
            EXPECT_EQ(controller.views().view(name)->isHidden(), std::string_view(name) != c.container) << name;
        for (const char* name : kPanels)
            EXPECT_EQ(controller.views().view(name)->isHidden(), !c.panel || std::string_view(name) != c.panel) << name;
    }
}

TEST(IntentViewController, UnknownIntentSaysItIsConfused) {
    platform::Platform platform(testOptions());
    IntentViewController controller(platform, {});
    configure(controller, "NotAnIntent");
    EXPECT_EQ(controller.textLabel->text(), "I am so confused.");
}

TEST(IntentViewController, WithoutACompletionTheSnippetIsStillFilled) {
    platform::Platform platform(testOptions());
    IntentViewController controller(platform, {});
    controller.configureViewForParameters({}, Interaction{makeIntent("SleepRingsIntent")}, InteractiveBehavior::None,
                                          nullptr, nullptr);
    EXPECT_FALSE(controller.ringsContainer->isHidden());
    EXPECT_FALSE(controller.ringStatsContainer->isHidden());
}

TEST(IntentViewController, TheUnconnectedQualityGlyphFieldStaysEmpty) {
    platform::Platform platform(testOptions());
    IntentViewController controller(platform, {});
    EXPECT_EQ(controller.qualityGlyphLabel, nullptr);
    ASSERT_NE(controller._qualityGlyphLabel, nullptr);
    EXPECT_EQ(controller._qualityGlyphLabel->name(), "qualityGlyphLabel");
    for (const auto& name : IntentViewController::outletNames()) EXPECT_NE(controller.views().view(name), nullptr);
}

TEST(IntentResponses, SuccessResponsesCarryCodeFourAndNoActivity) {
    auto spo2 = SleepSpO2IntentResponse::successIntentResponseWithResponse("Today's average SpO2 is 95.4%.");
    EXPECT_EQ(spo2->code(), 4);
    EXPECT_EQ(spo2->userActivity(), nullptr);
    EXPECT_EQ(spo2->response(), "Today's average SpO2 is 95.4%.");
    auto lights = LightsOffIntentResponse::initWithCode(5, std::make_shared<UserActivity>(UserActivity{"open"}));
    EXPECT_EQ(lights->code(), 5);
    EXPECT_EQ(lights->userActivity()->activityType, "open");
    lights->setCode(4);
    EXPECT_EQ(lights->code(), 4);
    static_assert(HasDictionary<ReadinessIntentResponse>);
    static_assert(!HasDictionary<LightsOffIntentResponse>);
}

}  // namespace
