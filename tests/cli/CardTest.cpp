#include "demo/DemoData.h"
#include "cli/Program.h"
#include "intents/IntentViewController.h"
#include "platform/Accessibility.h"
#include "platform/CHandles.h"
#include "platform/Image.h"
#include "platform/ViewLayout.h"
#include "platform/ViewRenderer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <spng.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

using namespace velmorant;
using platform::Point;
using platform::Rect;
using platform::Rgba;

namespace {

const char* const kIntents[] = {"LightsOffIntent",  "TimeAsleepIntent",  "ReadinessIntent",
                                "WristTempIntent",  "SleepFuelIntent",   "SleepSpO2Intent",
                                "RespirationIntent", "LatestBedtimeIntent", "SleepRingsIntent",
                                "UnknownIntent"};

// One snippet shown with the demo data (or none) and drawn as the program draws it.
struct Card {
    platform::Platform platform;
    std::unique_ptr<IntentViewController> controller;
    platform::Size size;
    platform::ImagePtr image;

    Card(std::string_view intent, double width, bool demoData = true)
        : platform([] {
              platform::PlatformOptions options;
              options.now = platform::Date::fromUnix(1709676600);  // 2024-03-05 22:10 UTC
              options.timeZoneId = "Europe/London";
              options.localeId = "en_US";
              options.resourceDir = VELMORANT_TEST_RESOURCE_DIR;
              return options;
          }()) {
        if (demoData) demo::installDemoStores(platform);
        controller = std::make_unique<IntentViewController>(platform, ExtensionContext{{width, 420}});
        controller->configureViewForParameters({}, Interaction{makeIntent(intent)}, InteractiveBehavior::None,
                                               nullptr, [&](bool, const ParameterSet&, platform::Size s) { size = s; });
        image = platform::renderCard(views(), size, 3, platform.fonts());
    }
    const platform::ViewTree& views() const { return controller->views(); }
    platform::ViewLayout layout() const { return platform::ViewLayout(views(), size); }
};

double luminance(const Rgba& p) { return 0.2126 * p.r + 0.7152 * p.g + 0.0722 * p.b; }

double difference(const Rgba& a, const Rgba& b) {
    return std::max({std::fabs(a.r - b.r), std::fabs(a.g - b.g), std::fabs(a.b - b.b), std::fabs(a.a - b.a)});
}

// Calls `visit` with the centre of every device pixel in `r` (points).
template <typename Visit>
void eachPixel(const platform::Image& image, Rect r, Visit visit) {
    double s = image.scale();
    for (long y = std::lround(r.y * s); y < std::lround((r.y + r.height) * s); ++y)
        for (long x = std::lround(r.x * s); x < std::lround((r.x + r.width) * s); ++x)
            visit(Point{(x + 0.5) / s, (y + 0.5) / s});
}

int brightPixels(const platform::Image& image, Rect r) {
    int count = 0;
    eachPixel(image, r, [&](Point p) { count += luminance(image.pixelAt(p)) > 0.5; });
    return count;
}

bool contains(Rect r, Point p) { return p.x >= r.x && p.x < r.x + r.width && p.y >= r.y && p.y < r.y + r.height; }

// Checks one card: its size, every shown text and indicator, the picture and the panel.
void checkCard(const Card& card, double width) {
    const platform::Image& image = *card.image;
    const auto layout = card.layout();
    EXPECT_EQ(image.pixelWidth(), std::lround(width * 3));
    EXPECT_EQ(image.pixelHeight(), std::lround(card.size.height * 3));
    for (const auto& view : card.views().views()) {
        if (!card.views().isShown(*view)) continue;
        Rect frame = layout.frameOf(view->name());
        const std::string& name = view->name();
        // Light texts leave light pixels in their frame (glyphs on indicators are dark).
        bool lightText = view->textColor() && luminance(view->textColor()->rgba()) > 0.5;
        if (view->text() && !platform::spokenText(*view->text(), {}).empty() && lightText)
            EXPECT_GT(brightPixels(image, frame), 10) << name << " \"" << *view->text() << "\"";
        if (view->kind() == platform::ViewKind::Indicator && view->backgroundColor() &&
            view->backgroundColor()->alpha() == 1)
            EXPECT_LT(difference(image.pixelAt({frame.x + 3, frame.y + frame.height / 2}),
                                 view->backgroundColor()->rgba()),
                      0.02)
                << name;
    }
    // The picture sits where the interface puts it: an opaque point of it near
    // its centre shows on the card unchanged.
    const platform::View& rings = *card.views().view("ringsImage");
    if (card.views().isShown(rings) && rings.image()) {
        Rect frame = layout.frameOf("ringsImage");
        const platform::Image& picture = *rings.image();
        bool compared = false;
        for (double d = 0; d < 140 && !compared; d += 1) {
            Point inPicture{picture.size().width / 2 + d, picture.size().height / 2};
            Rgba p = picture.pixelAt(inPicture);
            if (p.a < 1) continue;
            Point onCard{frame.x + (frame.width - picture.size().width) / 2 + inPicture.x,
                         frame.y + (frame.height - picture.size().height) / 2 + inPicture.y};
            EXPECT_LT(difference(image.pixelAt(onCard), p), 0.02) << "ringsImage at +" << d;
            compared = true;
        }
        EXPECT_TRUE(compared);
    }
    for (const char* panelName : {"ringTextContainer", "ringStatsContainer"}) {
        const platform::View& panel = *card.views().view(panelName);
        if (!card.views().isShown(panel)) continue;
        Rect p = layout.frameOf(panelName);
        // Rounded corners let the card show through.
        EXPECT_LT(difference(image.pixelAt({p.x + 0.5, p.y + 0.5}), image.pixelAt({p.x - 1, p.y + 0.5})), 0.02);
        EXPECT_GT(difference(image.pixelAt({p.x + p.width / 2, p.y + 0.5}), image.pixelAt({p.x - 1, p.y + 0.5})),
                  0.02);
        // Between the views of the panel there is only the panel: no text ran out of its frame.
        std::vector<Rect> children;
        for (const auto& view : card.views().views())
            if (view->parent() == panelName && card.views().isShown(*view))
                children.push_back(layout.frameOf(view->name()));
        double r = panel.layer().cornerRadius();
        int stray = 0;
        eachPixel(image, {p.x + r, p.y + 1, p.width - 2 * r, p.height - 2}, [&](Point at) {
            for (const Rect& c : children)
                if (contains(c, at)) return;
            stray += difference(image.pixelAt(at), image.pixelAt({p.x + r, at.y})) > 3.0 / 255;
        });
        EXPECT_EQ(stray, 0) << panelName;
    }
}

TEST(Card, EveryIntentIsLaidOutAtEveryHostWidth) {
    for (const char* intent : kIntents) {
        for (double width : {300.0, 390.0, 600.0}) {
            SCOPED_TRACE(std::string(intent) + " at " + std::to_string(static_cast<int>(width)));
            Card card(intent, width);
            ASSERT_TRUE(card.image);
            checkCard(card, width);
        }
    }
}

TEST(Card, EmptyStatesAreDrawnAndSaidAsTheyShow) {
    struct Case {
        const char* intent;
        const char* said;
    };
    const Case cases[] = {
        {"SleepSpO2Intent", "Avg. no data. Range no data."},
        {"ReadinessIntent", "HRV no data. Waking no data."},
        {"LightsOffIntent", "Optionally use lights off to start sleeping. Confirm."},
        {"UnknownIntent", "I am so confused."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.intent);
        Card card(c.intent, 390, false);
        ASSERT_TRUE(card.image);
        checkCard(card, 390);
        platform::SpeechLanguage english{[](std::string_view key) { return std::string(key); }, "en_US"};
        EXPECT_EQ(platform::accessibilityText(card.views(), english), c.said);
    }
}

std::string descriptionOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    std::string png = bytes.str();
    std::unique_ptr<spng_ctx, platform::CRelease<spng_ctx_free>> ctx(spng_ctx_new(0));
    spng_set_png_buffer(ctx.get(), png.data(), png.size());
    std::uint32_t count = 0;
    if (spng_get_text(ctx.get(), nullptr, &count) != 0) return "";
    std::vector<spng_text> texts(count);
    spng_get_text(ctx.get(), texts.data(), &count);
    for (const auto& t : texts)
        if (std::string(t.keyword) == "Description") return std::string(t.text, t.length);
    return "";
}

TEST(Card, ShowSaysTheCardAndThePictureCarriesTheSameWords) {
    struct Case {
        const char* locale;
        const char* opening;
        const char* sevenDay;
    };
    const Case cases[] = {{"en_US", "Avg. ", ", 7-day "}, {"de_DE", "Mittel ", ", 7 Tage "}};
    auto dir = std::filesystem::temp_directory_path() / ("velmorant-card-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    for (const auto& c : cases) {
        auto file = dir / (std::string(c.locale) + ".png");
        std::ostringstream out, err;
        int status = cli::runProgram({"show", "SleepSpO2Intent", "--png", file.string(), "--locale", c.locale,
                                      "--tz", "Europe/London", "--now", "2024-03-05T22:10:00"},
                                     out, err);
        ASSERT_EQ(status, 0) << err.str();
        std::string said = nlohmann::json::parse(out.str()).at("accessibility");
        EXPECT_TRUE(said.starts_with(c.opening)) << said;
        EXPECT_NE(said.find(c.sevenDay), std::string::npos) << said;
        EXPECT_EQ(descriptionOf(file), said);
    }
    std::filesystem::remove_all(dir);
}

}  // namespace
