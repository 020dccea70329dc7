// Every drawing of the drawing benchmark, with its inputs, against a picture
// kept beside this file: a faster way of drawing must not change what is seen.
// Compared premultiplied (as drawn), each channel within 3 of 255 levels.
// VELMORANT_WRITE_REFERENCES=1 writes the pictures instead of comparing.
#include "demo/DemoData.h"
#include "snippet_ui/SleepMetricsUI.h"

#include "platform/graphics/detail/ImageSurface.h"
#include "platform/graphics/PngWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace velmorant::testing {
using snippet_ui::SleepMetricsUI;

namespace {

using platform::Dictionary;
using platform::Value;

constexpr int kTolerance = 3;
const std::filesystem::path kFolder = std::filesystem::path(VELMORANT_TEST_SOURCE_DIR) / "snippet_ui" / "reference";

// The benchmark's world: the demo night, seen at 07:30 UTC the morning after.
std::unique_ptr<platform::Platform> demoPlatform(double scale) {
    platform::PlatformOptions options;
    options.timeZoneId = "UTC";
    options.localeId = "en_US";
    options.now = platform::Date::fromUnix(1709623800);
    options.scale = scale;
    options.resourceDir = VELMORANT_TEST_RESOURCE_DIR;
    auto platform = std::make_unique<platform::Platform>(std::move(options));
    demo::installDemoStores(*platform);
    return platform;
}

struct Picture {
    const char* name;
    std::function<platform::ImagePtr(SleepMetricsUI&)> draw;
};

const Picture kPictures[] = {
    {"spo2-gauge",
     [](SleepMetricsUI& ui) {
         return ui.drawSpO2GaugeWithSize(280, Dictionary{{"averageSpO2", Value(95.4)}, {"minSpO2", Value(90.0)},
                                                         {"maxSpO2", Value(99.0)}, {"averageSpO27", Value(95.3)},
                                                         {"minSpO27", Value(89.0)}, {"maxSpO27", Value(99.0)}});
     }},
    {"resp-rate-gauge",
     [](SleepMetricsUI& ui) {
         return ui.drawRespRateGaugeWithSize(
             280, Dictionary{{"averageRespRate", Value(14.2)}, {"minRespRate", Value(12.1)},
                             {"maxRespRate", Value(17.8)}, {"averageRespRate7", Value(14.6)},
                             {"minRespRate7", Value(11.9)}, {"maxRespRate7", Value(18.3)}});
     }},
    {"consistency-gauge",
     [](SleepMetricsUI& ui) {
         return ui.drawConsistencyGaugeWithSize(
             280, Dictionary{{"bedTrend", Value(-1260.0)}, {"starsLabel", Value("★★★⭒")}});
     }},
    {"wrist-temp-gauge",
     [](SleepMetricsUI& ui) {
         return ui.drawWristTempGaugeWithSize(
             280, Dictionary{{"wristTempScore", Value(4.3)}, {"wristTempDifLabel", Value("+0.3°")}});
     }},
    {"readiness", [](SleepMetricsUI& ui) { return ui.drawReadiRingsWithSize(280, 78, "★★★★⭒", 2); }},
    {"bed-clock",
     [](SleepMetricsUI& ui) {
         return ui.drawTheBedClockWithSize(280, platform::Date::fromUnix(1709593200),
                                           platform::Date::fromUnix(1709622000));
     }},
    {"sleep-rings",
     [](SleepMetricsUI& ui) { return ui.drawSleepRingsWithSize(280, 0.92f, 0.74f, 0.61f, 1.3f, 0.856f, false); }},
    {"sleep-rings-accessory",
     [](SleepMetricsUI& ui) { return ui.drawSleepRingsWithSize(260, 0.92f, 0.74f, 0.61f, 1.3f, 0.856f, false); }},
    {"recharge", [](SleepMetricsUI& ui) { return ui.drawTheRechargeWithSize(280, 0.93f, 0.78f); }},
    {"recharge-accessory", [](SleepMetricsUI& ui) { return ui.drawTheRechargeWithSize(200, 0.93f, 0.78f); }},
};

// The largest difference of any premultiplied channel between two ARGB32 bitmaps; -1 when their sizes differ.
int largestDifference(cairo_surface_t* a, cairo_surface_t* b) {
    const int width = cairo_image_surface_get_width(a), height = cairo_image_surface_get_height(a);
    if (width != cairo_image_surface_get_width(b) || height != cairo_image_surface_get_height(b)) return -1;
    cairo_surface_flush(a);
    cairo_surface_flush(b);
    int largest = 0;
    for (int y = 0; y < height; ++y) {
        const unsigned char* rowA =
            cairo_image_surface_get_data(a) + static_cast<size_t>(y) * cairo_image_surface_get_stride(a);
        const unsigned char* rowB =
            cairo_image_surface_get_data(b) + static_cast<size_t>(y) * cairo_image_surface_get_stride(b);
        for (int i = 0; i < 4 * width; ++i) largest = std::max(largest, std::abs(rowA[i] - rowB[i]));
    }
    return largest;
}

class ReferencePicturesTest : public ::testing::TestWithParam<double> {};

TEST_P(ReferencePicturesTest, EveryDrawingLooksAsItDid) {
    const double scale = GetParam();
    const bool write = std::getenv("VELMORANT_WRITE_REFERENCES") != nullptr;
    const std::unique_ptr<platform::Platform> platform = demoPlatform(scale);
    for (const Picture& picture : kPictures) {
        // Drawn three times: directly, then with the layers that do not depend
        // on the data drawn and kept, then from the kept layers; each time by a
        // new object, as each card has its own, while the platform keeps the layers.
        for (int round = 0; round < 3; ++round) {
            SleepMetricsUI ui(*platform);
            const platform::ImagePtr image = picture.draw(ui);
            ASSERT_TRUE(image) << picture.name;
            const std::filesystem::path path = kFolder / (std::string(picture.name) + "@" +
                                                          std::to_string(static_cast<int>(scale)) + "x.png");
            if (write) {
                ASSERT_TRUE(platform::writePng(*image, path, {.compressionLevel = 3})) << path;
                break;
            }
            platform::SurfacePtr kept(cairo_image_surface_create_from_png(path.c_str()));
            ASSERT_EQ(cairo_surface_status(kept.get()), CAIRO_STATUS_SUCCESS) << "cannot read " << path;
            const int difference = largestDifference(cairoSurface(*image), kept.get());
            EXPECT_GE(difference, 0) << picture.name << " at scale " << scale << ": size changed";
            EXPECT_LE(difference, kTolerance) << picture.name << " at scale " << scale << ", round " << round;
            RecordProperty(std::string(picture.name) + "@" + std::to_string(static_cast<int>(scale)), difference);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Scales, ReferencePicturesTest, ::testing::Values(3.0, 1.0),
                         [](const auto& info) { return "scale" + std::to_string(static_cast<int>(info.param)); });

}  // namespace
}  // namespace velmorant::testing
