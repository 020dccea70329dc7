#pragma once

#include "SnippetStores.h"

#include "platform/Image.h"
#include "snippet_ui/SleepMetricsUI.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace velmorant::testing {

// What an indicator's background must be: a fixed colour, or the record's colour under a key.
struct Tint {
    enum Kind { Clear, DarkGray, Warm, Cyan, Record } kind;
    const char* recordKey = nullptr;
};
inline constexpr Tint kClear{Tint::Clear}, kDarkGray{Tint::DarkGray}, kWarm{Tint::Warm}, kCyan{Tint::Cyan};
inline constexpr Tint fromRecord(const char* key) { return {Tint::Record, key}; }

// One request and everything it must show.
struct SnippetCase {
    std::string_view intent;
    const char* locale;
    Store store;
    std::vector<std::pair<const char*, const char*>> texts;
    std::vector<std::pair<const char*, Tint>> tints;
    // The picture `ringsImage` or `lamp` must show: "drawn", a resource name, or none for the first-loaded one.
    const char* image;
    // Whether the upper glyph is in the small regular type only data sets.
    bool smallGlyph = false;
};

// The two-row panel's texts in a fixed order, for tables that list all eight.
inline std::vector<std::pair<const char*, const char*>> panel(const char* const (&t)[8]) {
    static const char* const kViews[8] = {"sleepHeadingLabel", "sleepGlyph",  "sleepTimeLabel", "sleepGoalLabel",
                                          "bankHeadingLabel",  "bankGlyph",   "bankTimeLabel",  "bankBalanceLabel"};
    std::vector<std::pair<const char*, const char*>> texts;
    for (int i = 0; i < 8; ++i) texts.emplace_back(kViews[i], t[i]);
    texts.emplace_back("starsLabel", "");
    return texts;
}

// The record the snippet of `intent` is filled from, asked of a fresh object.
inline std::optional<platform::Dictionary> recordFor(platform::Platform& platform, std::string_view intent) {
    SleepMetricsUI ui(platform);
    if (intent == "ReadinessIntent") return ui.requestReadiness();
    if (intent == "SleepFuelIntent") return ui.requestOctane();
    if (intent == "WristTempIntent") return ui.requestWristTemp();
    if (intent == "SleepRingsIntent") return ui.requestQuality();
    if (intent == "TimeAsleepIntent") return ui.requestSleepBankRings();
    ADD_FAILURE() << "no record colours for " << intent;
    return std::nullopt;
}

inline platform::Colour expectedTint(const Tint& tint, platform::Platform& platform, std::string_view intent) {
    using platform::Colour;
    switch (tint.kind) {
        case Tint::Clear: return Colour::clearColor();
        case Tint::DarkGray: return Colour::darkGrayColor();
        case Tint::Warm: return Colour::colorWithHue(55.0 / 360, 0.05, 0.85, 1);
        case Tint::Cyan: return Colour::colorWithHue(193.0 / 360, 0.92, 0.5, 1);
        case Tint::Record: break;
    }
    auto record = recordFor(platform, intent);
    const platform::Value* value = record ? record->objectForKey(tint.recordKey) : nullptr;
    EXPECT_TRUE(value && value->colour()) << tint.recordKey;
    // A record colour is a rating, never the no-data grey.
    EXPECT_NE(value ? value->colour() : std::nullopt, Colour::darkGrayColor()) << tint.recordKey;
    return value && value->colour() ? *value->colour() : Colour::blackColor();
}

// Every text, indicator colour and picture a case names, as the controller left them.
inline void expectShows(IntentViewController& controller, platform::Platform& platform, const SnippetCase& c,
                        const platform::ImagePtr& firstLoadedImage) {
    for (const auto& [view, text] : c.texts) EXPECT_EQ(textOf(controller, view), text) << view;
    for (const auto& [view, tint] : c.tints)
        EXPECT_EQ(controller.views().view(view)->backgroundColor(), expectedTint(tint, platform, c.intent)) << view;
    const platform::View* picture = controller.views().view(c.intent == "LightsOffIntent" ? "lamp" : "ringsImage");
    if (!c.image) {
        EXPECT_EQ(picture->image(), firstLoadedImage);
    } else if (std::string_view(c.image) == "drawn") {
        ASSERT_NE(picture->image(), nullptr);
        EXPECT_EQ(picture->image()->size(), (platform::Size{280, 280}));
        EXPECT_FALSE(picture->image()->name());
    } else {
        ASSERT_NE(picture->image(), nullptr);
        EXPECT_EQ(picture->image()->name(), c.image);
    }
}

// Runs every case on a fresh controller over freshly written store files.
inline void runCases(const std::vector<SnippetCase>& cases) {
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.intent << " " << c.locale << " store " << static_cast<int>(c.store));
        SnippetFiles files;
        files.write(storeFor(c.store));
        auto platform = files.platform(c.locale);
        IntentViewController controller(*platform, {});
        const platform::Font firstLoaded = *controller.sleepGlyph->font();
        const platform::ImagePtr firstImage =
            controller.views().view(c.intent == "LightsOffIntent" ? "lamp" : "ringsImage")->image();
        EXPECT_EQ(show(controller, c.intent), c.intent == "LightsOffIntent" ? 180 : 420);
        expectShows(controller, *platform, c, firstImage);
        EXPECT_EQ(controller.sleepGlyph->font(),
                  c.smallGlyph ? platform::Font::systemFontOfSize(13, platform::FontWeight::Regular) : firstLoaded);
        if (c.intent == "LightsOffIntent") continue;
        const bool rings = c.intent == "SleepRingsIntent";
        EXPECT_EQ(controller.views().view(rings ? "ringStatsContainer" : "ringTextContainer")->layer().cornerRadius(), 12);
        const std::vector<const char*> indicators =
            rings ? std::vector<const char*>{"sleepRingIndicator", "qualityRingIndicator", "deepRingIndicator",
                                             "bpmRingIndicator"}
                  : std::vector<const char*>{"sleepIndicator", "bankIndicator"};
        for (const char* view : indicators) EXPECT_EQ(controller.views().view(view)->layer().cornerRadius(), 10) << view;
    }
}

}  // namespace velmorant::testing
