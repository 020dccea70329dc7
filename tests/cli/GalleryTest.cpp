#include "TempDir.h"
#include "cli/Gallery.h"
#include "cli/GalleryHtml.h"
#include "cli/IsoDate.h"
#include "cli/Program.h"
#include "demo/DemoData.h"
#include "intents/Intents.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

using velmorant::cli::runProgram;
using json = nlohmann::json;
namespace fs = std::filesystem;
namespace cli = velmorant::cli;
namespace platform = velmorant::platform;

namespace {

struct Outcome {
    int status;
    std::string out, err;
};

Outcome run(std::vector<std::string> args) {
    std::ostringstream out, err;
    int status = runProgram(args, out, err);
    return {status, out.str(), err.str()};
}

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Every name in a folder, hidden ones included, for "nothing was written" checks.
std::set<std::string> listing(const fs::path& dir) {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(dir)) names.insert(fs::relative(entry.path(), dir).string());
    return names;
}

std::string unescape(std::string text) {
    const std::pair<const char*, const char*> entities[] = {
        {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&#39;", "'"}, {"&amp;", "&"}};
    for (const auto& [entity, plain] : entities)
        for (std::size_t at; (at = text.find(entity)) != std::string::npos;) text.replace(at, std::strlen(entity), plain);
    return text;
}

struct Png {
    int width = 0, height = 0;
    std::string description;
};

std::uint32_t bigEndian(const std::string& bytes, std::size_t at) {
    return (std::uint32_t(std::uint8_t(bytes[at])) << 24) | (std::uint32_t(std::uint8_t(bytes[at + 1])) << 16) |
           (std::uint32_t(std::uint8_t(bytes[at + 2])) << 8) | std::uint32_t(std::uint8_t(bytes[at + 3]));
}

// The header's size and the text stored under "Description" (tEXt or uncompressed iTXt).
Png readPng(const fs::path& path) {
    std::string bytes = readFile(path);
    Png png;
    if (bytes.size() < 24 || bytes.compare(1, 3, "PNG") != 0) return png;
    png.width = static_cast<int>(bigEndian(bytes, 16));
    png.height = static_cast<int>(bigEndian(bytes, 20));
    for (std::size_t at = 8; at + 8 <= bytes.size();) {
        std::size_t length = bigEndian(bytes, at);
        std::string type = bytes.substr(at + 4, 4), data = bytes.substr(at + 8, length);
        if ((type == "iTXt" || type == "tEXt") && data.starts_with(std::string("Description") + '\0')) {
            std::size_t text = 12;
            if (type == "iTXt") {
                text = data.find('\0', data.find('\0', 14) + 1) + 1;  // after language and translated keyword
            }
            png.description = data.substr(text);
        }
        at += 12 + length;
    }
    return png;
}

struct Picture {
    std::string src, alt;
    int width, height;
};

std::vector<Picture> picturesOf(const std::string& html) {
    static const std::regex img(R"re(<img src="([^"]+)" width="(\d+)" height="(\d+)" alt="([^"]*)")re");
    std::vector<Picture> pictures;
    for (auto it = std::sregex_iterator(html.begin(), html.end(), img); it != std::sregex_iterator(); ++it)
        pictures.push_back({unescape((*it)[1]), unescape((*it)[4]), std::stoi((*it)[2]), std::stoi((*it)[3])});
    return pictures;
}

bool hasStagingLeftovers(const fs::path& dir) {
    for (const auto& entry : fs::directory_iterator(dir))
        if (entry.path().filename().string().find(".tmp-") != std::string::npos) return true;
    return false;
}

const std::vector<std::string> kPinned = {"--now", "2024-03-05T22:10:00", "--tz", "Europe/London", "--locale", "en_US"};

// One gallery drawn at a width other than the default, shared by the content tests.
class GalleryContents : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        dir_ = new TempDir;
        std::vector<std::string> args = {"gallery", (dir_->path() / "out" / "gallery").string(), "--width", "320"};
        args.insert(args.end(), kPinned.begin(), kPinned.end());
        outcome_ = new Outcome(run(args));
    }
    static void TearDownTestSuite() {
        delete outcome_;
        delete dir_;
    }
    static fs::path gallery() { return dir_->path() / "out" / "gallery"; }
    static json readJson(const std::string& file) { return json::parse(readFile(gallery() / file)); }

    static TempDir* dir_;
    static Outcome* outcome_;
};
TempDir* GalleryContents::dir_ = nullptr;
Outcome* GalleryContents::outcome_ = nullptr;

TEST_F(GalleryContents, PrintsTheIndexPathAndOneProgressLinePerSection) {
    ASSERT_EQ(outcome_->status, 0) << outcome_->err;
    EXPECT_EQ(outcome_->out, (gallery() / "index.html").string() + "\n");
    std::istringstream lines(outcome_->err);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) EXPECT_TRUE(line.starts_with("gallery: ")) << line;
    EXPECT_EQ(count, 5);
    EXPECT_FALSE(hasStagingLeftovers(gallery().parent_path()));
}

TEST_F(GalleryContents, EveryPictureIsThereAtItsSizeWithItsAlternativeText) {
    ASSERT_EQ(outcome_->status, 0) << outcome_->err;
    std::string html = readFile(gallery() / "index.html");
    std::map<std::string, Picture> pictures;
    for (const Picture& p : picturesOf(html)) pictures[p.src] = p;

    struct Expected {
        const char* file;
        int points[2];  // as shown: card width x height, or a widget picture's side
    };
    const Expected expected[] = {
        {"snippets/LightsOffIntent.png", {320, 180}},       {"snippets/TimeAsleepIntent.png", {320, 420}},
        {"snippets/ReadinessIntent.png", {320, 420}},       {"snippets/WristTempIntent.png", {320, 420}},
        {"snippets/SleepFuelIntent.png", {320, 420}},       {"snippets/SleepSpO2Intent.png", {320, 420}},
        {"snippets/RespirationIntent.png", {320, 420}},     {"snippets/LatestBedtimeIntent.png", {320, 420}},
        {"snippets/SleepRingsIntent.png", {320, 420}},      {"snippets/UnknownIntent.png", {320, 180}},
        {"empty/LightsOffIntent.png", {320, 180}},          {"empty/TimeAsleepIntent.png", {320, 420}},
        {"empty/ReadinessIntent.png", {320, 420}},          {"empty/WristTempIntent.png", {320, 420}},
        {"empty/SleepFuelIntent.png", {320, 420}},          {"empty/SleepSpO2Intent.png", {320, 420}},
        {"empty/RespirationIntent.png", {320, 420}},        {"empty/LatestBedtimeIntent.png", {320, 420}},
        {"empty/SleepRingsIntent.png", {320, 420}},
        {"widgets/swiftSleepRingsImage.png", {280, 280}},   {"widgets/swiftSleepRingsAccessoryImage.png", {260, 260}},
        {"widgets/swiftSleepBankImage.png", {220, 220}},    {"widgets/swiftSleepBankAccessoryImage.png", {200, 200}},
        {"widgets/swiftBedtimeImage.png", {220, 220}},      {"widgets/swiftReadinessImage.png", {220, 220}},
        {"widgets/swiftOctaneImage.png", {220, 220}},       {"widgets/swiftSpO2Image.png", {220, 220}},
        {"widgets/swiftRespRateImage.png", {220, 220}},     {"widgets/swiftWristTempImage.png", {220, 220}},
    };
    EXPECT_EQ(pictures.size(), std::size(expected));
    for (const Expected& e : expected) {
        SCOPED_TRACE(e.file);
        ASSERT_TRUE(pictures.contains(e.file));
        const Picture& shown = pictures[e.file];
        EXPECT_EQ(shown.width, e.points[0]);
        EXPECT_EQ(shown.height, e.points[1]);
        Png png = readPng(gallery() / e.file);
        EXPECT_EQ(png.width, e.points[0] * 3);
        EXPECT_EQ(png.height, e.points[1] * 3);
        EXPECT_FALSE(shown.alt.empty());
        EXPECT_EQ(png.description, shown.alt);
        std::string record = std::string(e.file).replace(std::string(e.file).size() - 4, 4, ".json");
        if (!std::string(e.file).starts_with("widgets/")) {
            json view = readJson(record);
            EXPECT_EQ(view["accessibility"], shown.alt);
            EXPECT_EQ(view["size"]["height"], e.points[1]);
            EXPECT_TRUE(view["success"].get<bool>());
        }
    }
}

TEST_F(GalleryContents, PageReadsWithoutANetworkOrScripts) {
    ASSERT_EQ(outcome_->status, 0) << outcome_->err;
    std::string html = readFile(gallery() / "index.html");
    for (const char* absent : {"http:", "https:", "src=\"/", "href=\"/", "<script", "<link", "@import", "url("})
        EXPECT_EQ(html.find(absent), std::string::npos) << absent;
    for (const char* heading : {">Snippets</h2>", ">Empty state</h2>", ">Widget images</h2>", ">Widget mirrors</h2>"})
        EXPECT_NE(html.find(heading), std::string::npos) << heading;
    static const std::regex href(R"re(href="([^"#][^"]*)")re");
    for (auto it = std::sregex_iterator(html.begin(), html.end(), href); it != std::sregex_iterator(); ++it)
        EXPECT_TRUE(fs::exists(gallery() / unescape((*it)[1]))) << (*it)[1];
    EXPECT_TRUE(fs::exists(gallery() / std::string(cli::kGalleryMarker)));
}

TEST_F(GalleryContents, DemoSnippetsShowDataTheEmptyStoreDoesNot) {
    ASSERT_EQ(outcome_->status, 0) << outcome_->err;
    for (const char* intent : {"LightsOffIntent", "TimeAsleepIntent", "ReadinessIntent", "WristTempIntent",
                               "SleepFuelIntent", "SleepSpO2Intent", "RespirationIntent", "LatestBedtimeIntent",
                               "SleepRingsIntent"}) {
        SCOPED_TRACE(intent);
        EXPECT_NE(readJson(std::string("snippets/") + intent + ".json")["accessibility"],
                  readJson(std::string("empty/") + intent + ".json")["accessibility"]);
    }
}

TEST_F(GalleryContents, MirrorsHoldTheWidgetKeysWithAndWithoutData) {
    ASSERT_EQ(outcome_->status, 0) << outcome_->err;
    json mirrors = readJson("mirrors.json");
    struct Case {
        const char* store;
        const char* key;
        json value;
    };
    const Case cases[] = {
        {"night", "Swift-HasData", "1"},
        {"night", "Swift-averageSpO2RangeLabel", "90% - 99%"},
        {"night", "Swift-averageSpO2RangeLabelCompact", "90-99"},
        {"night", "Swift-sleepTimeLabel", "7h 36m"},
        {"empty", "Swift-averageSpO2Label", "--"},
        {"empty", "Swift-averageRespRateLabel", "--"},
        {"empty", "Swift-hrvDifLabel", ""},
        // The sleep-bank mirror always says it has data, even with an empty store.
        {"empty", "Swift-HasData", "1"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.store) + " " + c.key);
        ASSERT_TRUE(mirrors[c.store].contains(c.key));
        EXPECT_EQ(mirrors[c.store][c.key], c.value);
    }
    for (const auto& store : {mirrors["night"], mirrors["empty"]})
        for (const auto& [key, value] : store.items()) EXPECT_TRUE(key.starts_with("Swift-")) << key;
    EXPECT_EQ(mirrors["order"].size(), 7u);
}

TEST(GalleryFolder, OnlyAMissingEmptyOrEarlierGalleryIsReplaced) {
    enum class Before { Missing, Empty, EarlierGallery, OtherFiles, ForeignMarker, File, LinkToGallery };
    struct Case {
        const char* what;
        Before before;
        std::vector<std::string> extra;
        int status;
        const char* mention;
    };
    const Case cases[] = {
        {"missing, with missing parents", Before::Missing, {}, 0, ""},
        {"an empty folder", Before::Empty, {}, 0, ""},
        {"an earlier gallery", Before::EarlierGallery, {}, 0, ""},
        {"someone's files", Before::OtherFiles, {}, 2, "is not a gallery made by velmorant-snippet"},
        {"a marker of another kind", Before::ForeignMarker, {}, 2, "is not a gallery made by velmorant-snippet"},
        {"a file", Before::File, {}, 2, "exists and is not a folder"},
        {"a link to a gallery", Before::LinkToGallery, {}, 2, "is a symbolic link"},
        {"a bad width", Before::Missing, {"--width", "90"}, 2, "--width must be a number from 300 to 600"},
        {"a bad locale", Before::Missing, {"--locale", "xx_YY"}, 2, "unknown locale"},
        {"a bad instant", Before::Missing, {"--now", "tonight"}, 2, "--now must be an ISO 8601 date"},
        {"a second folder", Before::Missing, {"elsewhere"}, 2, "exactly one DIR"},
        {"an option of another command", Before::Missing, {"--png", "x.png"}, 2, "--png does not apply to gallery"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TempDir tmp;
        fs::path dir = c.before == Before::Missing ? tmp.path() / "a" / "b" / "gallery" : tmp.path() / "gallery";
        switch (c.before) {
            case Before::Missing: break;
            case Before::Empty: fs::create_directory(dir); break;
            case Before::EarlierGallery:
                ASSERT_EQ(run({"gallery", dir.string(), "--scale", "1"}).status, 0);
                std::ofstream(dir / "stale.txt") << "left from before";
                break;
            case Before::OtherFiles:
                fs::create_directory(dir);
                std::ofstream(dir / "notes.txt") << "mine";
                break;
            case Before::ForeignMarker:
                fs::create_directory(dir);
                std::ofstream(dir / std::string(cli::kGalleryMarker)) << "something else\n";
                break;
            case Before::File: std::ofstream(dir) << "a file"; break;
            case Before::LinkToGallery:
                ASSERT_EQ(run({"gallery", (tmp.path() / "real").string(), "--scale", "1"}).status, 0);
                fs::create_directory_symlink(tmp.path() / "real", dir);
                break;
        }
        std::set<std::string> before = listing(tmp.path());
        std::vector<std::string> args = {"gallery", dir.string(), "--scale", "1"};
        args.insert(args.end(), c.extra.begin(), c.extra.end());
        Outcome outcome = run(args);
        EXPECT_EQ(outcome.status, c.status) << outcome.err;
        if (c.status == 0) {
            EXPECT_TRUE(fs::exists(dir / "index.html"));
            EXPECT_FALSE(fs::exists(dir / "stale.txt"));
            EXPECT_FALSE(hasStagingLeftovers(dir.parent_path()));
        } else {
            EXPECT_NE(outcome.err.find(c.mention), std::string::npos) << outcome.err;
            EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
            EXPECT_EQ(outcome.out, "");
            EXPECT_EQ(listing(tmp.path()), before);
        }
    }
}

TEST(GalleryFolder, GermanGallerySpeaksGerman) {
    TempDir tmp;
    std::vector<std::string> args = {"gallery", (tmp.path() / "g").string(), "--scale", "1", "--locale", "de_DE"};
    args.insert(args.end(), kPinned.begin(), kPinned.end() - 2);  // --now and --tz only
    ASSERT_EQ(run(args).status, 0);
    json german = json::parse(readFile(tmp.path() / "g" / "snippets" / "SleepRingsIntent.json"));
    std::string html = readFile(tmp.path() / "g" / "index.html");
    EXPECT_NE(html.find("lang=\"de-DE\""), std::string::npos);
    EXPECT_NE(html.find("alt=\"" + cli::escapeHtml(german["accessibility"].get<std::string>()) + "\""), std::string::npos);
    EXPECT_EQ(german["accessibility"].get<std::string>().find("Quality"), std::string::npos) << german["accessibility"];
}

// The demo night follows the clock: at any hour every snippet has something
// to show that an empty store does not.
TEST(DemoNight, EverySnippetHasDataAtAnyHour) {
    struct Case {
        const char* now;  // local time in the zone
        const char* zone;
    };
    const Case cases[] = {
        {"2024-03-05T21:00:00", "Europe/London"},  // the night's first second
        {"2024-03-05T21:30:00", "Europe/London"},  {"2024-03-05T23:59:59", "America/New_York"},
        {"2024-03-06T03:00:00", "Asia/Tokyo"},     {"2024-03-06T12:00:00", "Europe/London"},
        {"2024-03-06T20:59:59", "Europe/London"},  // the night's last second
        {"2024-03-31T03:30:00", "Europe/London"},  // the night the clocks go forward
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.now) + " " + c.zone);
        platform::Platform platform({.timeZoneId = c.zone, .localeId = "en_US", .scale = 1,
                                     .resourceDir = VELMORANT_TEST_RESOURCE_DIR});
        auto now = cli::parseIsoDate(c.now, platform.timeZone());
        ASSERT_TRUE(now);
        platform.setNow(*now);
        velmorant::demo::installDemoStores(platform);
        std::vector<std::string> withData;
        for (std::string_view intent : velmorant::kIntentTypeNames)
            withData.push_back(cli::showSnippet(platform, intent, 390).spoken);
        auto shared = platform.suiteNamed(platform::kAppGroupSuite);
        for (const auto& [key, value] : shared->dictionaryRepresentation()) shared->removeObjectForKey(key);
        for (std::size_t i = 0; i < std::size(velmorant::kIntentTypeNames); ++i)
            EXPECT_NE(withData[i], cli::showSnippet(platform, velmorant::kIntentTypeNames[i], 390).spoken)
                << velmorant::kIntentTypeNames[i];
    }
}

TEST(GalleryHtml, TextsAreEscapedForContentAndAttributes) {
    cli::GalleryPage page;
    page.snippets.push_back({"snippets/A\".png", "", "<b>", "A", "say \"hi\" & <go>", {390, 420}});
    std::string html = cli::galleryHtml(page);
    EXPECT_NE(html.find("src=\"snippets/A&quot;.png\""), std::string::npos);
    EXPECT_NE(html.find("alt=\"say &quot;hi&quot; &amp; &lt;go&gt;\""), std::string::npos);
    EXPECT_EQ(html.find("<b>"), std::string::npos);
    EXPECT_NE(html.find(">&lt;b&gt;<"), std::string::npos);
}

}  // namespace
