#include "demo/DemoData.h"
#include "intents/IntentViewController.h"
#include "platform/views/Accessibility.h"
#include "platform/graphics/Image.h"
#include "platform/views/ViewLayout.h"
#include "platform/views/ViewRenderer.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace velmorant;
using intents::ExtensionContext;
using intents::IntentViewController;
using intents::Interaction;
using intents::InteractiveBehavior;
using intents::ParameterSet;
using intents::makeIntent;
using platform::Point;
using platform::Rect;
using platform::Rgba;

namespace {

const char* const kIntents[] = {"LightsOffIntent", "TimeAsleepIntent", "ReadinessIntent", "WristTempIntent",
                                "SleepFuelIntent", "SleepSpO2Intent", "RespirationIntent", "LatestBedtimeIntent",
                                "SleepRingsIntent", "UnknownIntent"};

// One snippet shown with the demo data (or none) and drawn as the program draws it.
struct Card {
    platform::Platform platform;
    std::unique_ptr<IntentViewController> controller;
    platform::Size size;
    platform::ImagePtr image;

    Card(std::string_view intent, double width, bool demoData = true)
        : platform({.now = platform::Date::fromUnix(1709676600),  // 2024-03-05 22:10 UTC
                    .timeZoneId = "Europe/London",
                    .resourceDir = VELMORANT_TEST_RESOURCE_DIR}) {
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

// Checks one card: its size, its light texts, the rings picture, and nothing drawn in a panel outside its views.
void checkCard(const Card& card, double width) {
    const platform::Image& image = *card.image;
    const auto layout = card.layout();
    EXPECT_EQ(image.pixelWidth(), std::lround(width * 3));
    EXPECT_EQ(image.pixelHeight(), std::lround(card.size.height * 3));
    EXPECT_EQ(card.size.height, card.views().isShown(*card.views().view("ringsContainer")) ? 420 : 180);
    for (const auto& view : card.views().views()) {
        if (!card.views().isShown(*view)) continue;
        // Light texts leave light pixels in their frame (glyphs on indicators are dark).
        if (!view->text() || platform::spokenText(*view->text(), {}).empty() || !view->textColor() ||
            luminance(view->textColor()->rgba()) <= 0.5)
            continue;
        int bright = 0;
        eachPixel(image, layout.frameOf(view->name()), [&](Point p) { bright += luminance(image.pixelAt(p)) > 0.5; });
        EXPECT_GT(bright, 10) << view->name() << ": " << *view->text();
    }
    // The picture sits where the interface puts it: an opaque point of it near its centre shows unchanged.
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
    // Between the views of a panel there is only the panel: no text ran out of its frame.
    for (const char* panelName : {"ringTextContainer", "ringStatsContainer"}) {
        const platform::View& panel = *card.views().view(panelName);
        if (!card.views().isShown(panel)) continue;
        Rect p = layout.frameOf(panelName);
        std::vector<Rect> children;
        for (const auto& view : card.views().views())
            if (view->parent() == panelName && card.views().isShown(*view))
                children.push_back(layout.frameOf(view->name()));
        double r = panel.layer().cornerRadius();
        int stray = 0;
        eachPixel(image, {p.x + r, p.y + 1, p.width - 2 * r, p.height - 2}, [&](Point at) {
            for (const Rect& c : children)
                if (at.x >= c.x && at.x < c.x + c.width && at.y >= c.y && at.y < c.y + c.height) return;
            stray += difference(image.pixelAt(at), image.pixelAt({p.x + r, at.y})) > 3.0 / 255;
        });
        EXPECT_EQ(stray, 0) << panelName;
    }
}

TEST(Card, EveryIntentWithAndWithoutDataIsLaidOutAtEveryHostWidth) {
    for (bool demoData : {true, false})
        for (const char* intent : kIntents)
            for (double width : {300.0, 600.0}) {
                SCOPED_TRACE(std::string(intent) + " at " + std::to_string(int(width)) + (demoData ? "" : " empty"));
                Card card(intent, width, demoData);
                ASSERT_TRUE(card.image);
                checkCard(card, width);
            }
}

}  // namespace
