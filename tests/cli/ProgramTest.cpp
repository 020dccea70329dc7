#include "RunProgram.h"
#include "cli/Arguments.h"

namespace {

TEST(Program, BadInputGetsOneLineNamingTheProblemAndWritesNothing) {
    TempDir tmp;
    const std::string png = (tmp.path() / "x.png").string();
    struct Case {
        std::vector<std::string> args;
        const char* mention;
    };
    const Case cases[] = {
        {{"frobnicate"}, "unknown command \"frobnicate\""},
        {{"show", "SleepSpO2Intent", "--colour", "red"}, "unknown option --colour"},
        {{"show"}, "exactly one INTENT"},
        {{"show", "SleepSpO2Intent", "--width", "-5"}, "--width must be a number from 300 to 600 (points), not \"-5\""},
        {{"show", "SleepSpO2Intent", "--width=", "--png", png}, "--width must be a number from 300 to 600"},
        {{"show", "SleepSpO2Intent", "--width=320x", "--png", png}, "not \"320x\""},
        {{"show", "SleepSpO2Intent", "--scale=0.5", "--png", png}, "--scale must be a number from 1 to 16"},
        {{"call", "FormatTools.formattedTimeInterval", "--width=320"}, "--width does not apply to call"},
        {{"call", "FormatTools.dateForDate", "2024-03-05T10:00:00", "7", "30"},
         "\"dateForDate\" of FormatTools is ambiguous: name one of dateForDate:withHour:withMin:, "
         "dateForDate:withYear:withMonth:withDay:withHour:withMin:"},
        {{"call", "FormatTools.noSuchThing"}, "unknown operation \"noSuchThing\""},
        {{"call", "Nothing.at"}, "unknown class \"Nothing\""},
        {{"show", "SleepSpO2Intent", "--prefs", "/nonexistent/prefs"}, "--prefs /nonexistent/prefs: no such folder"},
        {{"show", "LightsOffIntent", "--locale", "xx_YY", "--png", png}, "unknown locale \"xx_YY\""},
        {{"show", "LightsOffIntent", "--tz", "Mars/Olympus", "--png", png}, "unknown time zone \"Mars/Olympus\""},
        {{"demo"}, "demo needs --prefs DIR"},
    };
    for (const auto& c : cases) {
        Outcome r = run(c.args);
        EXPECT_EQ(r.status, 2) << c.mention;
        EXPECT_NE(r.err.find(c.mention), std::string::npos) << r.err;
        EXPECT_EQ(r.errLines(), 1) << r.err;
        EXPECT_TRUE(r.out.empty());
    }
    EXPECT_TRUE(fs::is_empty(tmp.path()));
}

TEST(Program, HelpTeachesEachCommand) {
    for (const char* command : {"show", "call", "demo", "gallery"})
        EXPECT_NE(run({command, "--help"}).out.find(std::string("velmorant-snippet ") + command), std::string::npos);
}

TEST(Program, VersionIsTheProjectsWhereverItStands) {
    for (const std::vector<std::string>& args : {std::vector<std::string>{"--version"}, {"show", "--version"}}) {
        Outcome r = run(args);
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.out, "velmorant-snippet " VELMORANT_VERSION "\n");
    }
}

TEST(Program, OptionValuesMayFollowAnEqualsSignAndTheLastOneWins) {
    const std::vector<std::string> forms[] = {
        {"show", "SleepSpO2Intent", "--width=320", "--tz=Europe/London", "--now=2024-03-05T22:10:00"},
        {"show", "SleepSpO2Intent", "--width=600", "--locale=en_US=x", "--locale=en_US", "--width=320"},
    };
    for (const auto& args : forms) {
        Outcome r = run(args);
        ASSERT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(json::parse(r.out)["size"], json({{"width", 320}, {"height", 420}}));
    }
}

TEST(Program, DemoWritesStoresThatShowReadsBack) {
    TempDir tmp;
    Outcome demo = run({"demo", "--prefs", tmp.path().string()});
    ASSERT_EQ(demo.status, 0) << demo.err;
    Outcome show = run({"show", "SleepSpO2Intent", "--prefs", tmp.path().string()});
    ASSERT_EQ(show.status, 0) << show.err;  // the demo's stores read back: an average is said
    EXPECT_TRUE(json::parse(show.out)["accessibility"].get<std::string>().starts_with("Avg. 9"));
}

TEST(Program, PictureSizeIsBoundedBeforeAnythingIsWritten) {
    using namespace velmorant::cli;
    const struct {
        const char *width, *scale;
        bool fits;
    } cases[] = {
        {"300", "1", true},     {"512", "16", true},     {"513", "16", false},   {"600", "13.65", true},
        {"600", "13.66", false}, {"299.9", "3", false},  {"600.1", "1", false},  {"390", "0.99", false},
        {"390", "16.01", false}, {"390", "nan", false},  {"inf", "1", false},
    };
    for (const auto& c : cases) {
        bool fits = true;
        try {
            checkPictureSize(readWidth(c.width), readScale(c.scale));
        } catch (const UsageError&) {
            fits = false;
        }
        EXPECT_EQ(fits, c.fits) << c.width << " x " << c.scale;
    }
    TempDir tmp;
    for (const auto& [width, pixels] : {std::pair{"513", "8208"}, {"600", "9600"}}) {
        Outcome r = run({"show", "SleepRingsIntent", "--png", (tmp.path() / "card.png").string(), "--images",
                         (tmp.path() / "images").string(), "--width=" + std::string(width), "--scale=16"});
        EXPECT_EQ(r.status, 2);
        EXPECT_NE(r.err.find(std::string(pixels) + " pixels wide; a picture can be at most 8192"), std::string::npos)
            << r.err;
        EXPECT_TRUE(r.out.empty());
        EXPECT_TRUE(fs::is_empty(tmp.path())) << "written before the size was checked";
    }
}

// The card and its pictures are written, the card carrying the words the record says.
TEST(Program, ShowWritesTheCardAndItsImages) {
    TempDir tmp;
    Outcome r = run({"show", "SleepRingsIntent", "--png", (tmp.path() / "card.png").string(), "--images",
                     (tmp.path() / "images").string(), "--scale", "2", "--width", "300", "--locale", "de_DE"});
    ASSERT_EQ(r.status, 0) << r.err;
    const json record = json::parse(r.out);
    Png card = readPng(tmp.path() / "card.png");
    EXPECT_EQ(card.width, 600u);
    EXPECT_EQ(card.height, 840u);
    EXPECT_EQ(card.description, record["accessibility"]);
    int images = 0;
    for (const auto& [name, view] : record["views"].items()) {
        if (!view.contains("/image/image/file"_json_pointer)) continue;
        fs::path file = view["/image/image/file"_json_pointer].get<std::string>();
        EXPECT_EQ(file.parent_path(), tmp.path() / "images");
        EXPECT_GT(readPng(file).width, 0u) << file;
        ++images;
    }
    EXPECT_GE(images, 1);
}

}  // namespace
