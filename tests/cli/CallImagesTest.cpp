#include "RunProgram.h"

namespace {

// The demo night in New York, the morning after.
Outcome call(std::vector<std::string> args) {
    args.insert(args.begin(), "call");
    args.insert(args.end(), {"--tz", "America/New_York", "--now", "2024-03-05T07:30:00"});
    return run(args);
}

TEST(CallImages, EveryImageOfTheResultIsWrittenAndNamed) {
    struct Case {
        std::vector<std::string> args;
        const char* where;  // the file's place in the result
        std::string file;
        unsigned pixels;
    };
    const Case cases[] = {
        {{"SleepMetricsUI.drawSpO2GaugeWithSize:withDict:", "280", R"({"averageSpO2":95.4,"minSpO2":90,"maxSpO2":99})",
          "--scale", "3"},
         "/image/file", "drawSpO2GaugeWithSize.png", 840},
        {{"SleepMetricsUI.requestSpO2", "--scale", "1"}, "/ringsImage/image/file", "ringsImage.png", 280},
        {{"SleepMetricsUI.swiftSleepBankAccessoryImage", "--scale=2"}, "/image/file",
         "swiftSleepBankAccessoryImage.png", 400},
    };
    for (Case c : cases) {
        SCOPED_TRACE(c.args[0]);
        TempDir tmp;
        c.args.insert(c.args.end(), {"--images", tmp.path().string()});
        Outcome r = call(c.args);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(json::parse(r.out)[json::json_pointer(c.where)], (tmp.path() / c.file).string());
        EXPECT_EQ(readPng(tmp.path() / c.file).width, c.pixels);
    }
}

TEST(CallImages, WithoutImagesOrWithBadInputNothingIsWritten) {
    TempDir tmp;
    const fs::path dir = tmp.path() / "images";
    EXPECT_EQ(call({"SleepMetricsUI.gaugeBkg", "--images", dir.string()}).status, 0);  // a colour, no picture
    for (const char* size : {"0", "-3", "1e6", "nil"}) {
        Outcome r = call({"SleepMetricsUI.drawTheRechargeWithSize:withSleepPercent:withBankPercent:", size, "0.5",
                          "0.5", "--images", dir.string()});
        EXPECT_EQ(r.status, 2) << size;
        EXPECT_NE(r.err.find("size must be a number above 0"), std::string::npos) << r.err;
        EXPECT_TRUE(r.out.empty());
    }
    EXPECT_TRUE(fs::is_empty(tmp.path()));
}

// With an empty store the sleep-bank widgets have nothing to draw: their result is null, not a crash.
TEST(CallImages, WidgetPicturesWithoutDataAreNull) {
    TempDir empty;
    for (const char* op : {"SleepMetricsUI.swiftSleepBankImage", "SleepMetricsUI.swiftSleepBankAccessoryImage"}) {
        Outcome r = call({op, "--prefs", empty.path().string()});
        ASSERT_EQ(r.status, 0) << op << ": " << r.err;
        EXPECT_EQ(json::parse(r.out), nullptr) << op;
    }
}

TEST(CallImages, ArgumentsReachTheOperation) {
    const struct {
        std::vector<std::string> args;
        json expected;
    } cases[] = {
        {{"SleepMetricsUI.getShadowForPercent:", "0.5"}, {{"width", -1}, {"height", 1}}},
        {{"SleepMetricsUI.getVelmorantConfigValueForKey:", "requiredHours"}, 8},
        {{"SleepMetricsUI.requestSpO2ForSwift"}, nullptr},
        // Without --images an image is described, not written.
        {{"SleepMetricsUI.drawConsistencyGaugeWithSize:withDict:", "50", "nil"},
         {{"image", {{"width", 50}, {"height", 50}, {"scale", 3}}}}},
    };
    for (const auto& c : cases) {
        Outcome r = call(c.args);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(json::parse(r.out), c.expected) << c.args[0];
    }
}

}  // namespace
