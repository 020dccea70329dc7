#include "cli/Program.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <sstream>

using velmorant::cli::runProgram;
using json = nlohmann::json;
namespace fs = std::filesystem;

namespace {

struct Outcome {
    int status;
    std::string out, err;
};

Outcome run(std::vector<std::string> args) {
    // Pin the zone and clock so runs do not depend on the machine.
    for (const char* pinned : {"--tz", "--now"}) {
        if (std::find(args.begin(), args.end(), pinned) == args.end())
            args.insert(args.end(), {pinned, std::string(pinned) == "--tz" ? "Europe/London" : "2024-03-05T22:10:00"});
    }
    std::ostringstream out, err;
    int status = runProgram(args, out, err);
    return {status, out.str(), err.str()};
}

fs::path freshDir(const char* name) {
    fs::path dir = fs::temp_directory_path() / ("velmorant-cli-" + std::string(name) + "-" + std::to_string(::getpid()));
    fs::remove_all(dir);
    return dir;
}

TEST(Program, BadInputGetsOneLineNamingTheProblem) {
    struct Case {
        std::vector<std::string> args;
        const char* mention;
    };
    const Case cases[] = {
        {{"frobnicate"}, "unknown command \"frobnicate\""},
        {{"show", "SleepSpO2Intent", "--colour", "red"}, "unknown option --colour"},
        {{"show"}, "exactly one INTENT"},
        {{"show", "SleepSpO2Intent", "--width", "-5"}, "--width must be a number above 0"},
        {{"call", "Nothing.at"}, "unknown class \"Nothing\""},
        {{"show", "SleepSpO2Intent", "--prefs", "/nonexistent/prefs"}, "--prefs /nonexistent/prefs: no such folder"},
        {{"show", "LightsOffIntent", "--locale", "xx_YY"}, "unknown locale \"xx_YY\""},
        {{"call", "FormatTools.formattedTimeInterval", "--png", "x.png"}, "--png does not apply to call"},
        {{"demo"}, "demo needs --prefs DIR"},
    };
    for (const auto& c : cases) {
        Outcome r = run(c.args);
        EXPECT_EQ(r.status, 2) << c.mention;
        EXPECT_NE(r.err.find(c.mention), std::string::npos) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_TRUE(r.out.empty());
    }
    Outcome badZone = run({"show", "LightsOffIntent", "--tz", "Mars/Olympus"});
    EXPECT_NE(badZone.err.find("unknown time zone \"Mars/Olympus\""), std::string::npos) << badZone.err;
}

TEST(Program, HelpTeachesEachCommand) {
    for (const char* command : {"show", "call", "demo"}) {
        Outcome r = run({command, "--help"});
        EXPECT_EQ(r.status, 0);
        EXPECT_NE(r.out.find(std::string("velmorant-snippet ") + command), std::string::npos) << r.out;
    }
    EXPECT_NE(run({"--help"}).out.find("Commands:"), std::string::npos);
}

TEST(Program, ShowPrintsTheViewRecordWithItsSize) {
    Outcome r = run({"show", "SleepSpO2Intent", "--width", "320"});
    ASSERT_EQ(r.status, 0) << r.err;
    json record = json::parse(r.out);
    EXPECT_EQ(record["success"], true);
    EXPECT_EQ(record["size"], json({{"width", 320}, {"height", 420}}));
    EXPECT_EQ(record["views"].size(), 34u);
    EXPECT_EQ(record["views"]["ringsContainer"]["hidden"], false);
    EXPECT_EQ(record["views"]["ringStatsContainer"]["hidden"], true);
    EXPECT_EQ(record["views"]["ringTextContainer"]["cornerRadius"], 12);

    json confused = json::parse(run({"show", "WhoKnowsIntent"}).out);
    EXPECT_EQ(confused["size"]["height"], 180);
    EXPECT_EQ(confused["views"]["textLabel"]["text"], "I am so confused.");
}

TEST(Program, DemoWritesStoresThatShowReadsBack) {
    fs::path dir = freshDir("demo");
    Outcome demo = run({"demo", "--prefs", dir.string()});
    ASSERT_EQ(demo.status, 0) << demo.err;
    EXPECT_TRUE(fs::exists(dir / "group.brumelkai.Velmorant.plist"));
    EXPECT_TRUE(fs::exists(dir / "standard.plist"));
    Outcome show = run({"show", "LightsOffIntent", "--prefs", dir.string()});
    EXPECT_EQ(show.status, 0) << show.err;
    EXPECT_EQ(json::parse(show.out)["size"]["height"], 180);
    fs::remove_all(dir);
}

TEST(Program, PngAndImagesAreWritten) {
    fs::path dir = freshDir("png");
    fs::create_directories(dir);
    Outcome r = run({"show", "LightsOffIntent", "--png", (dir / "card.png").string(), "--scale", "2"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_GT(fs::file_size(dir / "card.png"), 100u);
    fs::remove_all(dir);
}

}  // namespace
