#include "RunProgram.h"
#include "cli/Gallery.h"
#include "cli/GalleryHtml.h"
#include "cli/IsoDate.h"
#include "demo/DemoData.h"
#include "intents/Intents.h"
#include "platform/text/Text.h"

#include <cstring>
#include <map>
#include <regex>
#include <set>

namespace cli = velmorant::cli;
namespace platform = velmorant::platform;

namespace {

// Every name in a folder, hidden ones included, for "nothing was written" checks.
std::set<std::string> listing(const fs::path& dir) {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(dir))
        names.insert(fs::relative(entry.path(), dir).string());
    return names;
}

std::string unescape(std::string text) {
    for (const auto& [entity, plain] :
         {std::pair{"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&#39;", "'"}, {"&amp;", "&"}})
        for (std::size_t at; (at = text.find(entity)) != std::string::npos;)
            text.replace(at, std::strlen(entity), plain);
    return text;
}

bool hasStagingLeftovers(const fs::path& dir) {
    for (const auto& entry : fs::directory_iterator(dir))
        if (entry.path().filename().string().find(".tmp-") != std::string::npos) return true;
    return false;
}

// One gallery drawn at a width other than the default, checked from its page.
TEST(Gallery, EveryPictureIsThereAtItsSizeWithItsWordsEveryLinkResolvesAndMirrorsAreListed) {
    TempDir tmp;
    const fs::path gallery = tmp.path() / "out" / "gallery";
    auto readJson = [&](const std::string& file) { return json::parse(readFile(gallery / file)); };
    Outcome outcome = run({"gallery", gallery.string(), "--width", "320", "--locale", "en_US"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, (gallery / "index.html").string() + "\n");
    EXPECT_EQ(outcome.errLines(), 5) << outcome.err;
    EXPECT_FALSE(hasStagingLeftovers(gallery.parent_path()));
    EXPECT_TRUE(fs::exists(gallery / std::string(cli::kGalleryMarker)));

    const std::string html = readFile(gallery / "index.html");
    for (const char* absent : {"http:", "https:", "src=\"/", "href=\"/", "<script", "<link", "@import", "url("})
        EXPECT_EQ(html.find(absent), std::string::npos) << absent;
    static const std::regex href(R"re(href="([^"#][^"]*)")re");
    for (auto it = std::sregex_iterator(html.begin(), html.end(), href); it != std::sregex_iterator(); ++it)
        EXPECT_TRUE(fs::exists(gallery / unescape((*it)[1]))) << (*it)[1];

    // Cards are as wide as asked, short for lights-off and unknown; widget pictures keep their own square.
    static const std::regex img(R"re(<img src="(\w+)/(\w+)\.png" width="(\d+)" height="(\d+)" alt="([^"]*)")re");
    std::map<std::string, int> perSection;
    for (auto it = std::sregex_iterator(html.begin(), html.end(), img); it != std::sregex_iterator(); ++it) {
        const std::string section = (*it)[1], name = (*it)[2], file = section + "/" + name + ".png";
        const int width = std::stoi((*it)[3]), height = std::stoi((*it)[4]);
        SCOPED_TRACE(file);
        ++perSection[section];
        if (section == "widgets") {
            EXPECT_EQ(width, height);
        } else {
            EXPECT_EQ(width, 320);
            EXPECT_EQ(height, name == "LightsOffIntent" || name == "UnknownIntent" ? 180 : 420);
            json view = readJson(section + "/" + name + ".json");
            EXPECT_EQ(view["accessibility"], unescape((*it)[5]));
            EXPECT_EQ(view["size"]["height"], height);
            if (section == "snippets" && name != "UnknownIntent") {  // the demo shows data the empty store does not
                EXPECT_NE(view["accessibility"], readJson("empty/" + name + ".json")["accessibility"]);
            }
        }
        Png png = readPng(gallery / file);
        EXPECT_EQ(png.width, width * 3u);
        EXPECT_EQ(png.height, height * 3u);
        EXPECT_FALSE(png.description.empty());
        EXPECT_EQ(png.description, unescape((*it)[5]));
    }
    EXPECT_EQ(perSection, (std::map<std::string, int>{{"empty", 9}, {"snippets", 10}, {"widgets", 10}}));

    json mirrors = readJson("mirrors.json");
    EXPECT_EQ(mirrors["night"]["Swift-averageSpO2RangeLabel"], "90% - 99%");
    EXPECT_EQ(mirrors["empty"]["Swift-averageSpO2Label"], "--");
    // The sleep-bank mirror always says it has data, even with an empty store.
    EXPECT_EQ(mirrors["empty"]["Swift-HasData"], "1");
    EXPECT_EQ(mirrors["order"].size(), 7u);
}

TEST(GalleryFolder, OnlyAMissingEmptyOrEarlierGalleryIsReplaced) {
    enum class Before { Missing, Empty, EarlierGallery, OtherFiles, ForeignMarker, File, LinkToGallery };
    struct Case {
        Before before;
        std::vector<std::string> extra;
        const char* mention;  // empty when the gallery is made
    };
    const Case cases[] = {
        {Before::Missing, {}, ""},
        {Before::Empty, {}, ""},
        {Before::EarlierGallery, {}, ""},
        {Before::OtherFiles, {}, "is not a gallery made by velmorant-snippet"},
        {Before::ForeignMarker, {}, "is not a gallery made by velmorant-snippet"},
        {Before::File, {}, "exists and is not a folder"},
        {Before::LinkToGallery, {}, "is a symbolic link"},
        {Before::Missing, {"--width", "90"}, "--width must be a number from 300 to 600"},
        {Before::Missing, {"--now", "tonight"}, "--now must be an ISO 8601 date"},
        {Before::Missing, {"elsewhere"}, "exactly one DIR"},
        {Before::Missing, {"--png", "x.png"}, "--png does not apply to gallery"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(int(c.before)) + " " + c.mention);
        TempDir tmp;
        fs::path dir = c.before == Before::Missing ? tmp.path() / "a" / "b" / "gallery" : tmp.path() / "gallery";
        if (c.before == Before::Empty || c.before == Before::OtherFiles || c.before == Before::ForeignMarker)
            fs::create_directory(dir);
        if (c.before == Before::EarlierGallery) {
            ASSERT_EQ(run({"gallery", dir.string(), "--scale", "1"}).status, 0);
        }
        if (c.before == Before::EarlierGallery || c.before == Before::OtherFiles)
            std::ofstream(dir / "stale.txt") << "left from before";
        if (c.before == Before::ForeignMarker) std::ofstream(dir / std::string(cli::kGalleryMarker)) << "other\n";
        if (c.before == Before::File) std::ofstream(dir) << "a file";
        if (c.before == Before::LinkToGallery) {
            ASSERT_EQ(run({"gallery", (tmp.path() / "real").string(), "--scale", "1"}).status, 0);
            fs::create_directory_symlink(tmp.path() / "real", dir);
        }
        std::set<std::string> before = listing(tmp.path());
        std::vector<std::string> args = {"gallery", dir.string(), "--scale", "1"};
        args.insert(args.end(), c.extra.begin(), c.extra.end());
        Outcome outcome = run(args);
        if (*c.mention == '\0') {
            EXPECT_EQ(outcome.status, 0) << outcome.err;
            EXPECT_TRUE(fs::exists(dir / "index.html"));
            EXPECT_FALSE(fs::exists(dir / "stale.txt"));
            EXPECT_FALSE(hasStagingLeftovers(dir.parent_path()));
        } else {
            EXPECT_EQ(outcome.status, 2);
            EXPECT_NE(outcome.err.find(c.mention), std::string::npos) << outcome.err;
            EXPECT_EQ(outcome.errLines(), 1) << outcome.err;
            EXPECT_EQ(outcome.out, "");
            EXPECT_EQ(listing(tmp.path()), before);
        }
    }
}

TEST(GalleryFolder, GermanGallerySpeaksGerman) {
    TempDir tmp;
    ASSERT_EQ(run({"gallery", (tmp.path() / "g").string(), "--scale", "1", "--locale", "de_DE"}).status, 0);
    std::string said = json::parse(readFile(tmp.path() / "g" / "snippets" / "SleepRingsIntent.json"))["accessibility"];
    std::string html = readFile(tmp.path() / "g" / "index.html");
    EXPECT_NE(html.find("lang=\"de-DE\""), std::string::npos);
    EXPECT_NE(html.find("alt=\"" + platform::escapeHtml(said) + "\""), std::string::npos);
    EXPECT_EQ(said.find("Quality"), std::string::npos) << said;
}

// Items drawn on several threads, each on a platform of its own, come out as
// drawn on one: same locale, zone, instant and stores, every file the same bytes.
TEST(Gallery, DrawnOnSeveralThreadsEveryFileIsAsDrawnOnOne) {
    TempDir tmp;
    auto draw = [&](std::size_t threads) {
        platform::Platform p({.timeZoneId = "America/New_York", .localeId = "de_DE", .scale = 1,
                              .resourceDir = VELMORANT_TEST_RESOURCE_DIR});
        p.setNow(*cli::parseIsoDate("2024-03-06T07:30:00", p.timeZone()));
        velmorant::demo::installDemoStores(p);
        std::ostringstream progress;
        fs::path dir = tmp.path() / std::to_string(threads);
        cli::writeGallery(p, {.dir = dir, .threads = threads}, progress);
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::recursive_directory_iterator(dir))
            if (entry.is_regular_file()) files[fs::relative(entry.path(), dir).string()] = readFile(entry.path());
        return std::pair{files, progress.str()};
    };
    const auto [alone, aloneProgress] = draw(1);
    const auto [together, togetherProgress] = draw(3);
    EXPECT_EQ(alone.size(), 52u);
    EXPECT_EQ(together.size(), alone.size());
    for (const auto& [name, bytes] : alone) EXPECT_TRUE(together.count(name) && together.at(name) == bytes) << name;
    EXPECT_EQ(togetherProgress, aloneProgress);
}

// The demo night follows the clock: at any hour every snippet has something to show that an empty store does not.
TEST(DemoNight, EverySnippetHasDataAtAnyHour) {
    const std::pair<const char*, const char*> cases[] = {
        {"2024-03-05T21:00:00", "Europe/London"},  // the night's first second
        {"2024-03-06T20:59:59", "Europe/London"},  // the night's last second
        {"2024-03-31T03:30:00", "Europe/London"},  // the night the clocks go forward
    };
    for (const auto& [when, zone] : cases) {
        SCOPED_TRACE(std::string(when) + " " + zone);
        platform::Platform platform({.timeZoneId = zone, .localeId = "en_US", .scale = 1,
                                     .resourceDir = VELMORANT_TEST_RESOURCE_DIR});
        auto now = cli::parseIsoDate(when, platform.timeZone());
        ASSERT_TRUE(now);
        platform.setNow(*now);
        velmorant::demo::installDemoStores(platform);
        std::vector<std::string> withData;
        for (std::string_view intent : velmorant::intents::kIntentTypeNames)
            withData.push_back(cli::showSnippet(platform, intent, 390).spoken);
        auto shared = platform.suiteNamed(platform::kAppGroupSuite);
        for (const auto& [key, value] : shared->dictionaryRepresentation()) shared->removeObjectForKey(key);
        for (std::size_t i = 0; i < std::size(velmorant::intents::kIntentTypeNames); ++i)
            EXPECT_NE(withData[i], cli::showSnippet(platform, velmorant::intents::kIntentTypeNames[i], 390).spoken)
                << velmorant::intents::kIntentTypeNames[i];
    }
}

TEST(GalleryHtml, TextsAreEscapedForContentAndAttributes) {
    cli::GalleryPage page;
    page.snippets.push_back({"snippets/A\".png", "", "<b>", "A", "say \"hi\" & <go>", {390, 420}});
    std::string html = cli::galleryHtml(page);
    for (const char* escaped :
         {"src=\"snippets/A&quot;.png\"", "alt=\"say &quot;hi&quot; &amp; &lt;go&gt;\"", ">&lt;b&gt;<"})
        EXPECT_NE(html.find(escaped), std::string::npos) << escaped;
    EXPECT_EQ(html.find("<b>"), std::string::npos);
}

}  // namespace
