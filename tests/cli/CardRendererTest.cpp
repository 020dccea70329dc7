#include "RunProgram.h"
#include "cli/SnippetCard.h"

#include <stdexcept>

using velmorant::cli::CardRenderer;
using velmorant::cli::CardRequest;

namespace {

// 2024-03-05 22:10 London, the instant `run` pins.
constexpr double kNow = 1709676600;

CardRequest request(const std::string& intent, const fs::path& stores) {
    return {.intent = intent,
            .preferencesDir = stores,
            .now = velmorant::platform::Date::fromUnix(kNow),
            .timeZoneId = "Europe/London",
            .localeId = "en_US"};
}

// One renderer draws card after card (its fonts and artwork kept between
// them) exactly as the program draws each alone, from store files or from
// the same stores given as bytes.
TEST(CardRenderer, DrawsEveryCardAsTheProgramDoesWhateverWasDrawnBefore) {
    TempDir dir;
    ASSERT_EQ(run({"demo", "--prefs", dir.path().string()}).status, 0);
    CardRenderer renderer(3, VELMORANT_TEST_RESOURCE_DIR);
    // The artwork pictures first, so later cards reuse what earlier ones drew.
    for (const char* intent : {"SleepSpO2Intent", "TimeAsleepIntent", "SleepSpO2Intent", "LightsOffIntent", "UnknownIntent"}) {
        fs::path file = dir.path() / "card.png";
        Outcome shown = run({"show", intent, "--prefs", dir.path().string(), "--png", file.string()});
        ASSERT_EQ(shown.status, 0) << shown.err;
        auto fromFiles = renderer.render(request(intent, dir.path()));
        EXPECT_EQ(fromFiles.json + "\n", shown.out) << intent;
        EXPECT_EQ(fromFiles.png, readFile(file)) << intent;

        CardRequest fromBytes = request(intent, {});
        fromBytes.sharedStore = readFile(dir.path() / "group.brumelkai.Velmorant.plist");
        fromBytes.standardStore = readFile(dir.path() / "standard.plist");
        EXPECT_EQ(renderer.render(fromBytes).png, fromFiles.png) << intent;
    }
}

TEST(CardRenderer, RefusesStoreBytesItCannotReadAndScalesItCannotDraw) {
    CardRenderer renderer(1, VELMORANT_TEST_RESOURCE_DIR);
    CardRequest damaged = request("SleepSpO2Intent", {});
    damaged.sharedStore = "bplist00 cut short";
    try {
        renderer.render(damaged);
        ADD_FAILURE() << "a damaged store was drawn from";
    } catch (const std::invalid_argument& e) {
        EXPECT_TRUE(std::string(e.what()).starts_with("shared store cannot be read")) << e.what();
    }
    // Without stores the card shows its empty state, and no picture when none is asked for.
    CardRequest noPicture = request("SleepSpO2Intent", {});
    noPicture.png = false;
    auto card = renderer.render(noPicture);
    EXPECT_TRUE(card.png.empty());
    EXPECT_EQ(json::parse(card.json).at("success"), true);
    for (double scale : {0.0, -1.0, 17.0}) EXPECT_THROW(CardRenderer{scale}, std::invalid_argument) << scale;
}

}  // namespace
