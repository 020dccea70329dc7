// A view record printed without its card or images reports every image's
// size and scale without drawing a single picture.
#include "cli/SnippetCard.h"
#include "demo/DemoData.h"
#include "intents/Intents.h"
#include "platform/graphics/Image.h"

#include <gtest/gtest.h>

#include <string>

using namespace velmorant;

namespace {

// The snippet of `intent` on the demo night, as the program shows it.
cli::SnippetCard show(std::string_view intent, const cli::SnippetOptions& options) {
    platform::Platform platform({.now = platform::Date::fromUnix(1709676600),  // 2024-03-05 22:10 UTC
                                 .timeZoneId = "Europe/London",
                                 .resourceDir = VELMORANT_TEST_RESOURCE_DIR});
    demo::installDemoStores(platform);
    return cli::showSnippet(platform, intent, options);
}

}  // namespace

TEST(ShowWithoutPictures, TheRecordAloneDrawsNoPictureAndTheCardDrawsThem) {
    for (std::string_view intent : intents::kIntentTypeNames) {
        const std::uint64_t before = platform::Image::drawingsOnDemand();
        const cli::SnippetCard record = show(intent, {.width = 390});
        EXPECT_EQ(platform::Image::drawingsOnDemand(), before) << intent;
        // The same record with its card: then the card's pictures are drawn, and the record is unchanged.
        const cli::SnippetCard card = show(intent, {.width = 390, .pngInMemory = true});
        EXPECT_EQ(card.record, record.record) << intent;
        if (intent != "LightsOffIntent") {
            EXPECT_GT(platform::Image::drawingsOnDemand(), before) << intent;
        }
    }
}
