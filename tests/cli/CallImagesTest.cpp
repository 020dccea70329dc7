#include "cli/Program.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

using velmorant::cli::runProgram;
using json = nlohmann::json;
namespace fs = std::filesystem;

struct Outcome {
    int status;
    std::string out, err;
};

// The demo night in New York, the morning after.
Outcome call(std::vector<std::string> args) {
    args.insert(args.begin(), "call");
    args.insert(args.end(), {"--tz", "America/New_York", "--now", "2024-03-05T07:30:00"});
    std::ostringstream out, err;
    int status = runProgram(args, out, err);
    return {status, out.str(), err.str()};
}

fs::path freshDir(const std::string& name) {
    fs::path dir = fs::temp_directory_path() / ("velmorant-call-" + name + "-" + std::to_string(::getpid()));
    fs::remove_all(dir);
    return dir;
}

// The pixel width a PNG file says it has (its header), or 0 for anything else.
unsigned pngWidth(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    unsigned char header[24] = {};
    if (!in.read(reinterpret_cast<char*>(header), sizeof header)) return 0;
    if (header[1] != 'P' || header[2] != 'N' || header[3] != 'G') return 0;
    return header[16] << 24 | header[17] << 16 | header[18] << 8 | header[19];
}

TEST(CallImages, EveryImageOfTheResultIsWrittenAndNamed) {
    struct Case {
        std::vector<std::string> args;
        std::string imageKey;  // where the image sits in the result; empty when it is the result
        std::string file;
        unsigned pixels;
    };
    const Case cases[] = {
        {{"SleepMetricsUI.drawSpO2GaugeWithSize:withDict:", "280", R"({"averageSpO2":95.4,"minSpO2":90,"maxSpO2":99})",
          "--scale", "3"},
         "", "drawSpO2GaugeWithSize.png", 840},
        {{"SleepMetricsUI.requestSpO2", "--scale", "1"}, "ringsImage", "ringsImage.png", 280},
        {{"SleepMetricsUI.swiftSleepBankAccessoryImage", "--scale", "2"}, "", "swiftSleepBankAccessoryImage.png", 400},
        {{"SleepMetricsUI.drawTheBedClockWithSize:withBedtime:withWaketime:", "100", "2024-03-05T22:30:00", "nil",
          "--scale", "1"},
         "", "drawTheBedClockWithSize.png", 100},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args[0]);
        fs::path dir = freshDir("images");
        std::vector<std::string> args = c.args;
        args.insert(args.end(), {"--images", dir.string()});
        Outcome r = call(args);
        ASSERT_EQ(r.status, 0) << r.err;
        json result = json::parse(r.out);
        json image = c.imageKey.empty() ? result["image"] : result[c.imageKey]["image"];
        EXPECT_EQ(image["file"], (dir / c.file).string());
        EXPECT_EQ(pngWidth(dir / c.file), c.pixels);
        fs::remove_all(dir);
    }
}

TEST(CallImages, WithoutImagesOrWithBadInputNothingIsWritten) {
    fs::path dir = freshDir("none");
    Outcome colour = call({"SleepMetricsUI.gaugeBkg", "--images", dir.string()});
    EXPECT_EQ(colour.status, 0);
    EXPECT_FALSE(fs::exists(dir));

    for (const char* size : {"0", "-3", "1e6", "nil"}) {
        Outcome r = call({"SleepMetricsUI.drawTheRechargeWithSize:withSleepPercent:withBankPercent:", size, "0.5",
                          "0.5", "--images", dir.string()});
        EXPECT_EQ(r.status, 2) << size;
        EXPECT_NE(r.err.find("size must be a number above 0"), std::string::npos) << r.err;
        EXPECT_TRUE(r.out.empty());
        EXPECT_FALSE(fs::exists(dir)) << size;
    }
    // Without --images an image is described, not written.
    Outcome plain = call({"SleepMetricsUI.swiftSpO2Image"});
    EXPECT_FALSE(json::parse(plain.out)["image"].contains("file"));
}

TEST(CallImages, ArgumentsReachTheOperation) {
    const struct {
        std::vector<std::string> args;
        json expected;
    } cases[] = {
        {{"SleepMetricsUI.getShadowForPercent:", "0.5"}, {{"width", -1}, {"height", 1}}},
        {{"SleepMetricsUI.radians:", "180"}, 3.141592653589793},
        {{"SleepMetricsUI.getVelmorantConfigValueForKey:", "requiredHours"}, 8},
        {{"SleepMetricsUI.requestSpO2ForSwift"}, nullptr},
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
