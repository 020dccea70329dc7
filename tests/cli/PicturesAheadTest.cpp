// A card whose pictures are drawn on a second thread is, to the byte, the card
// drawn on one; the second thread goes when no views come.
#include "TempDir.h"
#include "cli/PicturesAhead.h"
#include "cli/SnippetCard.h"
#include "demo/DemoData.h"
#include "intents/Intents.h"
#include "platform/graphics/Image.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <optional>
#include <string>

using namespace velmorant;
namespace fs = std::filesystem;

namespace {

std::unique_ptr<platform::Platform> demoPlatform() {
    auto platform = std::make_unique<platform::Platform>(
        platform::PlatformOptions{.now = platform::Date::fromUnix(1709676600),  // 2024-03-05 22:10 UTC
                                  .timeZoneId = "Europe/London",
                                  .resourceDir = VELMORANT_TEST_RESOURCE_DIR});
    demo::installDemoStores(*platform);
    return platform;
}

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The card of `intent` written to `png`, its pictures drawn ahead or not; with
// `images`, the record's images are written (so drawn on this thread) first.
std::string drawCard(std::string_view intent, const fs::path& png, bool ahead, bool images) {
    auto platform = demoPlatform();
    cli::SnippetOptions options{.width = 390, .pngFile = png};
    if (images) options.images = [](const platform::Image& image, const std::string&) {
        image.drawNow();
        return std::optional<std::string>("drawn");
    };
    std::optional<cli::PicturesAhead> pictures;
    if (ahead) options.picturesAhead = &pictures.emplace(*platform);
    cli::showSnippet(*platform, intent, options);
    return readFile(png);
}

}  // namespace

TEST(PicturesAhead, EveryCardIsTheCardDrawnOnOneThread) {
    TempDir out;
    for (std::string_view intent : intents::kIntentTypeNames) {
        for (bool images : {false, true}) {
            SCOPED_TRACE(std::string(intent) + (images ? " with its images" : ""));
            const std::string alone = drawCard(intent, out.path() / "alone.png", false, images);
            const std::string ahead = drawCard(intent, out.path() / "ahead.png", true, images);
            ASSERT_FALSE(alone.empty());
            EXPECT_TRUE(ahead == alone);
        }
    }
}

TEST(PicturesAhead, ItsThreadGoesWhenNoViewsCome) {
    auto platform = demoPlatform();
    // Given up before the views are filled, as when the stores cannot be read.
    { cli::PicturesAhead pictures(*platform); }
    // The platform's fonts, set up on the other thread meanwhile, serve this one afterwards.
    EXPECT_GT(platform->fonts().lineHeight(platform::Font::systemFontOfSize(17)), 0);
}
