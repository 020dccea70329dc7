#include "TempDir.h"
#include "cli/Gallery.h"
#include "cli/Program.h"
#include "demo/DemoData.h"
#include "review/Digest.h"
#include "review/GalleryReader.h"
#include "review/Picture.h"
#include "review/PixelCompare.h"
#include "review/Review.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <sstream>

namespace cli = velmorant::cli;
namespace platform = velmorant::platform;
namespace review = velmorant::review;
namespace fs = std::filesystem;
using json = nlohmann::json;

namespace {

struct Outcome {
    int status;
    std::string out, err;
};

Outcome runCli(const std::vector<std::string>& args) {
    std::ostringstream out, err;
    int status = cli::runProgram(args, out, err);
    return {status, out.str(), err.str()};
}

using StoreEdit = std::function<void(platform::PreferencesStore&)>;

// A gallery of the demo night at scale 1, drawn in this process, with the shared store edited first.
void drawGallery(const fs::path& dir, const StoreEdit& edit = {}, double scale = 1) {
    platform::Platform p({.now = platform::Date::fromUnix(1709676600), .timeZoneId = "Europe/London", .localeId = "en_US",
                          .scale = scale, .resourceDir = VELMORANT_TEST_RESOURCE_DIR});
    velmorant::demo::installDemoStores(p);
    if (edit) edit(*p.suiteNamed(platform::kAppGroupSuite));
    std::ostringstream progress;
    cli::writeGallery(p, {.dir = dir}, progress);
}

// Sets a number in the shared store's bank, at a path of dictionary keys.
platform::Dictionary withNumber(platform::Dictionary d, std::vector<std::string> path, double value) {
    if (path.size() == 1) {
        d.setObject(platform::Value(value), path[0]);
        return d;
    }
    const platform::Value* inner = d.objectForKey(path[0]);
    std::string key = path[0];
    path.erase(path.begin());
    d.setObject(platform::Value(withNumber(*inner->dictionary(), path, value)), key);
    return d;
}

StoreEdit setInStore(std::string top, std::vector<std::string> path, double value) {
    return [=](platform::PreferencesStore& store) {
        platform::Value dictionary = store.objectForKey(top);
        store.setObject(platform::Value(withNumber(*dictionary.dictionary(), path, value)), top);
    };
}

StoreEdit setInBank(std::vector<std::string> path, double value) { return setInStore("bankDict", std::move(path), value); }

std::string readFile(const fs::path& path) { return review::readBytes(path); }
void writeFile(const fs::path& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

// Rewrites a file of a gallery and, when `keepManifest` is false, its digest in the manifest,
// as a drawing that came out differently would.
void replaceInGallery(const fs::path& gallery, const std::string& file, const std::string& bytes, bool keepManifest = false) {
    writeFile(gallery / file, bytes);
    if (keepManifest) return;
    json manifest = json::parse(readFile(gallery / "manifest.json"));
    for (json& item : manifest["items"]) {
        if (item["picture"] == file) item["pictureDigest"] = review::sha256(bytes);
        if (item["record"] == file) item["recordDigest"] = review::sha256(bytes);
    }
    writeFile(gallery / "manifest.json", manifest.dump(1));
}

void editManifest(const fs::path& gallery, const std::function<void(json&)>& edit) {
    json manifest = json::parse(readFile(gallery / "manifest.json"));
    edit(manifest);
    writeFile(gallery / "manifest.json", manifest.dump(1));
}

// Every file below a folder with its bytes, for "nothing was written" checks.
std::map<std::string, std::string> snapshot(const fs::path& dir) {
    std::map<std::string, std::string> files;
    if (!fs::exists(dir)) return files;
    for (const auto& entry : fs::recursive_directory_iterator(dir))
        files[fs::relative(entry.path(), dir).string()] = entry.is_regular_file() ? readFile(entry.path()) : "";
    return files;
}

json reviewJson(const fs::path& gallery) { return json::parse(readFile(gallery / "review.json")); }

std::set<std::string> idsWith(const json& result, const std::string& status) {
    std::set<std::string> ids;
    for (const json& item : result["items"])
        if (item["status"] == status) ids.insert(item["id"]);
    return ids;
}

// One baseline for the whole suite; each test copies what it changes.
class Review : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        folder_ = new TempDir;
        drawGallery(baseline());
    }
    static void TearDownTestSuite() { delete folder_; }
    static fs::path baseline() { return folder_->path() / "baseline"; }
    fs::path copyOfBaseline(const std::string& name) {
        fs::path copy = tmp_.path() / name;
        fs::copy(baseline(), copy, fs::copy_options::recursive);
        return copy;
    }

    TempDir tmp_;

private:
    static inline TempDir* folder_ = nullptr;
};

TEST_F(Review, SameInputsDrawnTwiceAreIdenticalInOneProcessAndInTwo) {
    fs::path again = tmp_.path() / "again";
    drawGallery(again);
    Outcome same = runCli({"review", again.string(), baseline().string()});
    EXPECT_EQ(same.status, 0) << same.err;
    EXPECT_EQ(same.out, "review: 0 changed, 0 added, 0 removed, 30 unchanged\n");

    std::vector<std::string> drawn;
    for (const char* name : {"first", "second"}) {
        fs::path dir = tmp_.path() / name;
        std::string command = std::string(VELMORANT_CLI_PATH) + " gallery " + dir.string() +
                              " --scale 1 --now 2024-03-05T22:10:00 --tz Europe/London --locale en_US 2>/dev/null >/dev/null";
        ASSERT_EQ(std::system(command.c_str()), 0);
    }
    Outcome twice = runCli({"review", (tmp_.path() / "second").string(), (tmp_.path() / "first").string()});
    EXPECT_EQ(twice.status, 0) << twice.out << twice.err;
    // The other program drew those: its build is an input, so against this one's gallery everything is explained.
    Outcome otherProgram = runCli({"review", (tmp_.path() / "second").string(), baseline().string()});
    EXPECT_EQ(otherProgram.status, 0) << otherProgram.out;
}

// A store value changes exactly the items that show it, and the record says which field and how.
TEST_F(Review, StoreChangesReportTheItemsThatShowThemAndWhy) {
    struct Case {
        const char* what;
        StoreEdit edit;
        std::set<std::string> changed;
        const char* field;
    };
    const Case cases[] = {
        {"blood oxygen 95.4 → 97.4", setInBank({"spO2Dict", "averageSpO2"}, 97.4),
         {"snippets/SleepSpO2Intent", "widgets/swiftSpO2Image", "mirrors"}, "sleepTimeLabel text \"95.4%\" → \"97.4%\""},
        {"wrist temperature 35.92 → 35.97, one character of a label", setInBank({"wristTempTodayValue"}, 35.97),
         {"snippets/WristTempIntent", "widgets/swiftWristTempImage"}, "sleepGoalLabel text \"35.92°\" → \"35.97°\""},
        {"sleep 7h 36m → 7h 40m: three cards, their widget pictures and mirrors, nothing else",
         setInStore("watchTrackDict", {"rawSleepTime"}, 27600),
         {"snippets/TimeAsleepIntent", "snippets/LatestBedtimeIntent", "snippets/SleepRingsIntent",
          "widgets/swiftSleepRingsImage", "widgets/swiftSleepRingsAccessoryImage", "widgets/swiftSleepBankImage",
          "widgets/swiftSleepBankAccessoryImage", "widgets/swiftBedtimeImage", "mirrors"},
         "sleepTimeLabel text \"7h 36m\" → \"7h 40m\""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        fs::path changed = tmp_.path() / "changed";
        fs::remove_all(changed);
        drawGallery(changed, c.edit);
        Outcome outcome = runCli({"review", changed.string(), baseline().string()});
        EXPECT_EQ(outcome.status, 1) << outcome.err;
        EXPECT_NE(outcome.out.find("inputs differ: store\n"), std::string::npos) << outcome.out;
        json result = reviewJson(changed);
        EXPECT_EQ(idsWith(result, "changed"), c.changed);
        std::string words;
        for (const json& item : result["items"])
            for (const json& f : item["fields"]) words += f["words"].get<std::string>() + "\n";
        EXPECT_NE(words.find(c.field), std::string::npos) << words;
        for (const json& item : result["items"])
            if (item["status"] == "changed" && item["id"] != "mirrors") {
                EXPECT_GT(item["changedPixels"], 0) << item["id"];
                EXPECT_NE(item["accept"].get<std::string>().find(item["id"].get<std::string>()), std::string::npos);
            }
        std::string html = readFile(changed / "review.html");
        for (const std::string& id : c.changed) EXPECT_NE(html.find("data-id=\"" + id + "\" data-status=\"changed\""), std::string::npos) << id;
        EXPECT_EQ(html.find("://"), std::string::npos);
    }
}

// One pixel more red in one picture, with nothing else different: found, boxed and, the inputs being
// the same, not reproducible. An allowance of one pixel lets it through but still lists it.
TEST_F(Review, OnePixelIsFoundAndWithTheSameInputsIsNotReproducible) {
    fs::path changed = copyOfBaseline("changed");
    const std::string file = "widgets/swiftReadinessImage.png";
    review::Picture picture = review::decodePng(readFile(changed / file), file);
    const std::uint32_t x = picture.width / 2, y = picture.height / 3;
    std::uint8_t* p = picture.rgba.data() + 4 * (std::size_t(y) * picture.width + x);
    p[0] = static_cast<std::uint8_t>(p[0] < 128 ? 255 : 0), p[3] = 255;
    replaceInGallery(changed, file, review::encodePng(picture));

    Outcome outcome = runCli({"review", changed.string(), baseline().string()});
    EXPECT_EQ(outcome.status, 3) << outcome.err;
    EXPECT_EQ(outcome.out, "review: not reproducible (same inputs, different results): 1 changed, 0 added, 0 removed, 29 unchanged\n");
    json item, result = reviewJson(changed);
    for (const json& i : result["items"])
        if (i["id"] == "widgets/swiftReadinessImage") item = i;
    EXPECT_EQ(item["changedPixels"], 1);
    EXPECT_EQ(item["box"], (json{{"left", x}, {"top", y}, {"right", x + 1}, {"bottom", y + 1}}));
    EXPECT_NE(readFile(changed / "review.html").find("Difference: 1 pixels changed"), std::string::npos);

    Outcome allowed = runCli({"review", changed.string(), baseline().string(), "--allowed-pixels", "1"});
    EXPECT_EQ(allowed.status, 0);
    EXPECT_NE(allowed.out.find("1 within the allowed pixels"), std::string::npos) << allowed.out;
}

TEST_F(Review, BadInputIsOneLineExitTwoAndWritesNothing) {
    struct Case {
        const char* what;
        std::function<void(const fs::path& newer, const fs::path& base)> damage;
        const char* mention;
    };
    const std::string png = "widgets/swiftSpO2Image.png", record = "snippets/SleepSpO2Intent.json";
    const Case cases[] = {
        {"not a gallery", [](auto&, auto& b) { fs::remove_all(b); fs::create_directory(b); writeFile(b / "x.txt", "x"); },
         "not a gallery made by velmorant-snippet"},
        {"no such folder", [](auto&, auto& b) { fs::remove_all(b); }, "no such gallery folder"},
        {"made before manifests", [](auto&, auto& b) { fs::remove(b / "manifest.json"); }, "earlier version"},
        {"broken manifest", [](auto&, auto& b) { writeFile(b / "manifest.json", "{\"format\": 1,"); }, "not readable JSON"},
        {"missing picture", [&](auto&, auto& b) { fs::remove(b / png); }, "is missing"},
        {"truncated picture", [&](auto&, auto& b) { fs::resize_file(b / png, 300); }, "is damaged"},
        {"truncated picture, manifest made to match",
         [&](auto&, auto& b) { replaceInGallery(b, png, readFile(b / png).substr(0, 300)); }, "not a readable PNG"},
        {"broken record, manifest made to match",
         [&](auto&, auto& b) { replaceInGallery(b, record, "{\"views\": {"); }, "is not readable JSON"},
        {"different scale", [](auto&, auto& b) { fs::remove_all(b); drawGallery(b, {}, 2); }, "scale 1, the baseline with 2"},
        {"different width", [](auto&, auto& b) { editManifest(b, [](json& m) { m["options"]["width"] = 320; }); },
         "width 390, the baseline with 320"},
        {"another manifest format", [](auto&, auto& b) { editManifest(b, [](json& m) { m["format"] = 2; }); },
         "another version"},
        {"a manifest naming a file outside", [](auto& n, auto&) {
             editManifest(n, [](json& m) { m["items"][0]["record"] = "../base/manifest.json"; }); }, "outside the gallery"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TempDir tmp;
        fs::path newer = tmp.path() / "new", base = tmp.path() / "base";
        fs::copy(baseline(), newer, fs::copy_options::recursive);
        fs::copy(baseline(), base, fs::copy_options::recursive);
        replaceInGallery(newer, "widgets/swiftSpO2Image.png", readFile(baseline() / "widgets/swiftReadinessImage.png"));
        c.damage(newer, base);
        auto before = snapshot(tmp.path());
        for (std::vector<std::string> args : {std::vector<std::string>{"review", newer.string(), base.string()},
                                              {"accept", newer.string(), base.string()}}) {
            Outcome outcome = runCli(args);
            EXPECT_EQ(outcome.status, 2) << args[0];
            EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
            EXPECT_NE(outcome.err.find(c.mention), std::string::npos) << outcome.err;
            EXPECT_EQ(outcome.out, "");
            EXPECT_EQ(snapshot(tmp.path()), before) << args[0];
        }
    }
}

TEST_F(Review, BadOptionsOrBaselineLeaveTheGalleryUndrawn) {
    const fs::path dir = tmp_.path() / "out";
    const std::string base = baseline().string();
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"--scale", "2", "--against", base}, "cannot be compared"},
        {{"--against", dir.string()}, "no such gallery folder"},
        {{"--against", base, "--threshold", "1.5"}, "--threshold must be a number from 0 to 1"},
        {{"--against", base, "--allowed-pixels", "-1"}, "--allowed-pixels must be a whole number"},
        {{"--threshold", "0.2"}, "need --against BASELINE"},
    };
    for (const auto& [extra, mention] : cases) {
        SCOPED_TRACE(mention);
        std::vector<std::string> args = {"gallery", dir.string(), "--scale", "1"};
        args.insert(args.end(), extra.begin(), extra.end());
        Outcome outcome = runCli(args);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_NE(outcome.err.find(mention), std::string::npos) << outcome.err;
        EXPECT_FALSE(fs::exists(dir));
    }
}

// An item only the new gallery has is added, one only the baseline has is removed; accepting
// the card that holds both brings the baseline to the new gallery's items.
TEST_F(Review, AddedAndRemovedItemsAreReportedAndAcceptedByCard) {
    fs::path newer = copyOfBaseline("new"), base = copyOfBaseline("base");
    editManifest(newer, [](json& m) {
        auto& items = m["items"];
        items.erase(std::remove_if(items.begin(), items.end(), [](const json& i) { return i["id"] == "empty/SleepSpO2Intent"; }),
                    items.end());
    });
    editManifest(base, [](json& m) {
        auto& items = m["items"];
        items.erase(std::remove_if(items.begin(), items.end(), [](const json& i) { return i["id"] == "widgets/swiftSpO2Image"; }),
                    items.end());
    });
    Outcome outcome = runCli({"review", newer.string(), base.string()});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_NE(outcome.out.find("0 changed, 1 added, 1 removed, 28 unchanged"), std::string::npos) << outcome.out;
    json result = reviewJson(newer);
    EXPECT_EQ(idsWith(result, "added"), std::set<std::string>{"widgets/swiftSpO2Image"});
    EXPECT_EQ(idsWith(result, "removed"), std::set<std::string>{"empty/SleepSpO2Intent"});

    Outcome accepted = runCli({"accept", newer.string(), base.string(), "SleepSpO2Intent"});
    EXPECT_EQ(accepted.status, 0) << accepted.err;
    EXPECT_FALSE(fs::exists(base / "empty/SleepSpO2Intent.png"));
    EXPECT_TRUE(fs::exists(base / "widgets/swiftSpO2Image.png"));
    EXPECT_EQ(runCli({"review", newer.string(), base.string()}).status, 0);
}

TEST_F(Review, AcceptedItemsMakeTheBaselineAGalleryThatThenReviewsAsIdentical) {
    fs::path changed = tmp_.path() / "changed";
    drawGallery(changed, setInBank({"spO2Dict", "averageSpO2"}, 97.4));
    fs::path base = copyOfBaseline("base");

    Outcome one = runCli({"accept", changed.string(), base.string(), "widgets/swiftSpO2Image"});
    EXPECT_EQ(one.status, 0) << one.err;
    EXPECT_EQ(one.out, "accepted 1 item into " + base.string() + ": widgets/swiftSpO2Image\n");
    EXPECT_EQ(runCli({"review", changed.string(), base.string()}).status, 1);
    EXPECT_EQ(idsWith(reviewJson(changed), "changed"), (std::set<std::string>{"snippets/SleepSpO2Intent", "mirrors"}));

    Outcome unknown = runCli({"accept", changed.string(), base.string(), "widgets/nothing"});
    EXPECT_EQ(unknown.status, 2);

    Outcome rest = runCli({"accept", changed.string(), base.string()});
    EXPECT_EQ(rest.status, 0) << rest.err;
    EXPECT_EQ(rest.out, "accepted 2 items into " + base.string() + ": mirrors, snippets/SleepSpO2Intent\n");
    EXPECT_NO_THROW(review::readGallery(base));
    EXPECT_EQ(readFile(base / "index.html"), readFile(changed / "index.html"));
    EXPECT_EQ(readFile(base / "manifest.json"), readFile(changed / "manifest.json"));
    Outcome after = runCli({"review", changed.string(), base.string()});
    EXPECT_EQ(after.status, 0) << after.out;
    for (const auto& entry : fs::directory_iterator(tmp_.path()))
        EXPECT_EQ(entry.path().filename().string().find(".tmp-"), std::string::npos) << entry.path();
}

}  // namespace
