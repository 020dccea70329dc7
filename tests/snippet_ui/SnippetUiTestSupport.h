#pragma once

#include "demo/DemoData.h"
#include "snippet_ui/SleepMetricsUI.h"

#include "platform/graphics/Image.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace velmorant::testing {

using platform::Colour;
using platform::Dictionary;
using platform::Point;
using platform::Rgba;
using platform::Value;

// 2024-03-05 07:30 in New York.
inline constexpr platform::Date kMorning = platform::Date::fromUnix(1709641800);

// In-memory stores at a fixed instant, zone and locale, the project's own
// artwork and fonts, and the `SleepMetricsUI` `ui` on them; every diagnostic line is kept.
class SnippetUiTest : public ::testing::Test {
protected:
    void SetUp() override { start(); }

    // Starts afresh; `scale` is pixels per point of the drawn images; `demo` fills the stores with the demo night.
    void start(double scale = 2, const char* localeId = "en_US", platform::Date now = kMorning, bool demo = false) {
        ui.reset();
        reported.clear();
        platform::PlatformOptions options;
        options.now = now;
        options.timeZoneId = "America/New_York";
        options.localeId = localeId;
        options.scale = scale;
        options.resourceDir = VELMORANT_TEST_RESOURCE_DIR;
        options.diagnostics = [this](std::string_view line) { reported.emplace_back(line); };
        platform_ = std::make_unique<platform::Platform>(std::move(options));
        if (demo) demo::installDemoStores(*platform_);
        ui = std::make_unique<snippet_ui::SleepMetricsUI>(*platform_);
    }

    std::shared_ptr<platform::PreferencesStore> store() { return platform_->suiteNamed(platform::kAppGroupSuite); }
    void put(std::string_view key, Value value) { store()->setObject(std::move(value), key); }
    // A palette on the same stores, for the colours a picture should show.
    palette::Pallet pallet() { return palette::Pallet(*platform_); }

    static Rgba rgb(const Colour& colour) { return colour.rgba(); }
    // `top` laid over an opaque `bottom` with `top`'s alpha.
    static Rgba over(Rgba top, Rgba bottom) {
        auto mix = [&](double t, double b) { return t * top.a + b * (1 - top.a); };
        return {mix(top.r, bottom.r), mix(top.g, bottom.g), mix(top.b, bottom.b), 1};
    }
    // The point `radius` from `centre` at `angle` (radians from +x towards +y).
    static Point polar(Point centre, double radius, double angle) {
        return {centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle)};
    }

    // Whether the pixel under `point` has the colour `want`, each channel within
    // `tolerance`.
    static ::testing::AssertionResult pixelIs(const platform::Image& image, Point point, Rgba want,
                                              double tolerance = 0.03) {
        Rgba got = image.pixelAt(point);
        bool near = std::abs(got.r - want.r) <= tolerance && std::abs(got.g - want.g) <= tolerance &&
                    std::abs(got.b - want.b) <= tolerance && std::abs(got.a - want.a) <= tolerance;
        std::ostringstream text;
        text << "pixel at (" << point.x << ", " << point.y << ") is " << describe(got) << ", expected "
             << describe(want);
        return near ? ::testing::AssertionSuccess() << text.str() : ::testing::AssertionFailure() << text.str();
    }
    static std::string describe(Rgba c) {
        std::ostringstream text;
        text << "rgba(" << c.r << ", " << c.g << ", " << c.b << ", " << c.a << ")";
        return text.str();
    }

    std::vector<std::string> reported;
    std::unique_ptr<platform::Platform> platform_;
    std::unique_ptr<snippet_ui::SleepMetricsUI> ui;
};

}  // namespace velmorant::testing
