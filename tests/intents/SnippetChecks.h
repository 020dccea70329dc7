#pragma once

#include "SnippetStores.h"

#include "platform/graphics/Image.h"
#include "snippet_ui/SleepMetricsUI.h"

#include <gtest/gtest.h>

#include <utility>
#include <variant>
#include <vector>

namespace velmorant::testing {

// What an indicator's background must be: a fixed colour, or the record's colour under a key.
using Tint = std::variant<platform::Colour, const char*>;
inline Tint fromRecord(const char* key) { return key; }
inline const Tint kClear = platform::Colour::clearColor(), kDarkGray = platform::Colour::darkGrayColor();
inline const Tint kWarm = platform::Colour::colorWithHue(55.0 / 360, 0.05, 0.85, 1);
inline const Tint kCyan = platform::Colour::colorWithHue(193.0 / 360, 0.92, 0.5, 1);

using Texts = std::vector<std::pair<const char*, const char*>>;
using Tints = std::vector<std::pair<const char*, Tint>>;

// One request and everything it must show.
struct SnippetCase {
    std::string_view intent;
    const char* locale;
    Store store;
    Texts texts;
    Tints tints;
    // The picture `ringsImage` or `lamp` must show: "drawn", a resource name, or none for the first-loaded one.
    const char* image;
};

// `texts[i]` for `views[i]`, and the stars line every snippet empties.
template <std::size_t N>
Texts named(const char* const (&views)[N], const char* const (&texts)[N]) {
    Texts named{{"starsLabel", ""}};
    for (std::size_t i = 0; i < N; ++i) named.emplace_back(views[i], texts[i]);
    return named;
}

// The two-row panel's eight texts in a fixed order.
inline Texts panel(const char* const (&t)[8]) {
    static const char* const kViews[8] = {"sleepHeadingLabel", "sleepGlyph",  "sleepTimeLabel", "sleepGoalLabel",
                                          "bankHeadingLabel",  "bankGlyph",   "bankTimeLabel",  "bankBalanceLabel"};
    return named(kViews, t);
}

inline Tints rows(Tint upper, Tint lower) { return {{"sleepIndicator", upper}, {"bankIndicator", lower}}; }

inline platform::Colour expectedTint(const Tint& tint, platform::Platform& platform, std::string_view intent) {
    using platform::Colour;
    if (const auto* fixed = std::get_if<Colour>(&tint)) return *fixed;
    const char* key = std::get<const char*>(tint);
    snippet_ui::SleepMetricsUI ui(platform);
    const snippet_ui::SleepMetricsUI::Record record = intent == "ReadinessIntent" ? ui.requestReadiness()
                                        : intent == "SleepFuelIntent" ? ui.requestOctane()
                                        : intent == "WristTempIntent" ? ui.requestWristTemp()
                                        : intent == "SleepRingsIntent" ? ui.requestQuality()
                                                                       : snippet_ui::SleepMetricsUI::Record(ui.requestSleepBankRings());
    const platform::Value* value = record ? record->objectForKey(key) : nullptr;
    const auto colour = value ? value->colour() : std::nullopt;
    // A record colour is a rating, never the no-data grey.
    EXPECT_TRUE(colour && *colour != Colour::darkGrayColor()) << key;
    return colour.value_or(Colour::blackColor());
}

// Runs every case on a fresh controller over freshly written store files.
inline void runCases(const std::vector<SnippetCase>& cases) {
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.intent << " " << c.locale << " store " << static_cast<int>(c.store));
        SnippetFiles files;
        files.write(storeFor(c.store));
        auto platform = files.platform(c.locale);
        intents::IntentViewController controller(*platform, {});
        const bool lights = c.intent == "LightsOffIntent";
        const platform::View* picture = controller.views().view(lights ? "lamp" : "ringsImage");
        const platform::ImagePtr firstImage = picture->image();
        EXPECT_EQ(show(controller, c.intent), lights ? 180 : 420);
        for (const auto& [view, text] : c.texts) EXPECT_EQ(textOf(controller, view), text) << view;
        for (const auto& [view, tint] : c.tints)
            EXPECT_EQ(controller.views().view(view)->backgroundColor(), expectedTint(tint, *platform, c.intent)) << view;
        if (!c.image) {
            EXPECT_EQ(picture->image(), firstImage);
            continue;
        }
        ASSERT_NE(picture->image(), nullptr);
        if (std::string_view(c.image) != "drawn") {
            EXPECT_EQ(picture->image()->name(), c.image);
        } else {
            EXPECT_EQ(picture->image()->size(), (platform::Size{280, 280}));
            EXPECT_FALSE(picture->image()->name());
        }
    }
}

}  // namespace velmorant::testing
