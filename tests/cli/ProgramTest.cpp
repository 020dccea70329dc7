#include "cli/Arguments.h"
#include "cli/Program.h"
#include "platform/Canvas.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
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
        {{"show", "SleepSpO2Intent", "--width", "-5"}, "--width must be a number from 300 to 600 (points), not \"-5\""},
        {{"show", "SleepSpO2Intent", "--width=", "--png", "x.png"}, "--width must be a number from 300 to 600"},
        {{"show", "SleepSpO2Intent", "--width=320x"}, "not \"320x\""},
        {{"show", "SleepSpO2Intent", "--scale=0.5"}, "--scale must be a number from 1 to 16"},
        {{"show", "SleepSpO2Intent", "--colour=red"}, "unknown option --colour"},
        {{"call", "FormatTools.formattedTimeInterval", "--width=320"}, "--width does not apply to call"},
        {{"call", "FormatTools.dateForDate", "2024-03-05T10:00:00", "7", "30"},
         "\"dateForDate\" of FormatTools is ambiguous: name one of dateForDate:withHour:withMin:, "
         "dateForDate:withYear:withMonth:withDay:withHour:withMin:"},
        {{"call", "FormatTools.noSuchThing"}, "unknown operation \"noSuchThing\""},
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

TEST(Program, OptionValuesMayFollowAnEqualsSign) {
    const std::vector<std::string> forms[] = {
        {"show", "SleepSpO2Intent", "--width=320", "--tz=Europe/London", "--now=2024-03-05T22:10:00"},
        {"show", "SleepSpO2Intent", "--width", "320", "--tz", "Europe/London", "--now", "2024-03-05T22:10:00"},
        {"show", "SleepSpO2Intent", "--width=320", "--locale=en_US=x", "--locale=en_US"},  // split at the first "="; the later option wins
    };
    for (const auto& args : forms) {
        Outcome r = run(args);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(json::parse(r.out)["size"]["width"], 320);
    }
}

TEST(Program, PictureSizeBounds) {
    using velmorant::cli::checkPictureSize;
    using velmorant::cli::readScale;
    using velmorant::cli::readWidth;
    using velmorant::cli::UsageError;
    const int limit = velmorant::platform::Canvas::kMaxPixels;
    struct Case {
        const char* width;
        const char* scale;
        bool fits;
    };
    const Case cases[] = {
        {"300", "1", true},   {"600", "3", true},       {"512", "16", true},  {"513", "16", false},
        {"600", "13.65", true}, {"600", "13.66", false}, {"299.9", "3", false}, {"600.1", "1", false},
        {"390", "0.99", false}, {"390", "16.01", false}, {"390", "nan", false}, {"inf", "1", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.width) + " x " + c.scale);
        bool fits = true;
        try {
            double width = readWidth(c.width), scale = readScale(c.scale);
            checkPictureSize(width, scale);
            EXPECT_LE(width * scale, limit);
        } catch (const UsageError&) {
            fits = false;
        }
        EXPECT_EQ(fits, c.fits);
    }
    // The help text states the same bounds.
    std::string help = run({"show", "--help"}).out;
    for (const char* bound : {"300 to 600", "8192 pixels", "512 at scale 16"})
        EXPECT_NE(help.find(bound), std::string::npos) << bound;
    EXPECT_NE(run({"--help"}).out.find("1 to 16"), std::string::npos);
    EXPECT_EQ(limit, 8192);
}

TEST(Program, TooLargeAPictureWritesNothing) {
    fs::path dir = freshDir("large");
    const std::vector<std::string> tooLarge[] = {
        {"--width", "10000", "--scale", "16"},
        {"--width", "600", "--scale", "16"},
        {"--width=513", "--scale=16"},
    };
    for (const auto& size : tooLarge) {
        std::vector<std::string> args = {"show", "SleepRingsIntent", "--png", (dir / "card.png").string(), "--images",
                                         (dir / "images").string()};
        args.insert(args.end(), size.begin(), size.end());
        Outcome r = run(args);
        EXPECT_EQ(r.status, 2) << r.err;
        EXPECT_TRUE(r.out.empty());
        EXPECT_FALSE(fs::exists(dir)) << "written before the size was checked";
    }
    Outcome r = run({"show", "SleepRingsIntent", "--width", "600", "--scale", "16"});
    EXPECT_NE(r.err.find("9600 pixels wide; a picture can be at most 8192"), std::string::npos) << r.err;
}

TEST(Program, ImagesAreWrittenWhereTheRecordSays) {
    fs::path dir = freshDir("images");
    std::size_t files = 0;
    for (const char* intent : {"LightsOffIntent", "SleepRingsIntent"}) {
        Outcome r = run({"show", intent, "--images", (dir / intent).string(), "--scale", "1"});
        ASSERT_EQ(r.status, 0) << r.err;
        const json record = json::parse(r.out);
        for (const auto& [name, view] : record["views"].items()) {
            const json::json_pointer where("/image/image/file");
            if (!view.contains(where)) continue;
            fs::path file = view[where].get<std::string>();
            SCOPED_TRACE(file.string());
            EXPECT_EQ(file.parent_path(), dir / intent);
            ASSERT_TRUE(fs::exists(file));
            std::string magic(8, '\0');
            std::ifstream(file, std::ios::binary).read(magic.data(), 8);
            EXPECT_EQ(magic, "\x89PNG\r\n\x1a\n");
            EXPECT_GT(fs::file_size(file), 100u);
            ++files;
        }
    }
    EXPECT_GE(files, 2u);
    fs::remove_all(dir);
}

}  // namespace
