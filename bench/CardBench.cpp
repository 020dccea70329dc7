// The card's cost: from the store files to PNG bytes as a server pays it per
// card (BM_cardPng, one row per intent; target under 8 ms at scale 3), drawing
// the views, and writing the PNG with the chosen encoder settings against the
// others and against Cairo's own writer (the size each makes is reported as
// "bytes"). The program's whole-process targets (`show INTENT --png FILE`
// under 20 ms at scale 3, `show` under 10 ms) are measured with hyperfine;
// these show where that time goes.
#include "BenchSupport.h"
#include "cli/SnippetCard.h"
#include "demo/DemoData.h"
#include "intents/IntentViewController.h"
#include "platform/graphics/detail/ImageSurface.h"
#include "platform/graphics/PngWriter.h"
#include "platform/views/ViewRenderer.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

using namespace velmorant;
using intents::ExtensionContext;
using intents::IntentViewController;
using intents::Interaction;
using intents::InteractiveBehavior;
using intents::ParameterSet;
using intents::kIntentTypeNames;
using intents::makeIntent;

namespace {

// One snippet, shown as the program shows it, with the demo data.
struct Snippet {
    platform::Platform platform{[] {
        platform::PlatformOptions options;
        options.timeZoneId = "UTC";
        options.now = platform::Date::fromUnix(1709416800);
        return options;
    }()};
    std::unique_ptr<IntentViewController> controller;
    platform::Size size;

    explicit Snippet(std::string_view intent) {
        demo::installDemoStores(platform);
        controller = std::make_unique<IntentViewController>(platform, ExtensionContext{});
        controller->configureViewForParameters({}, Interaction{makeIntent(intent)}, InteractiveBehavior::None, nullptr,
                                               [&](bool, const ParameterSet&, platform::Size s) { size = s; });
    }
    platform::ImagePtr card() {
        return platform::renderCard(controller->views(), size, platform.screenScale(), platform.fonts());
    }
};

// The demo stores written as files once, as `demo --prefs DIR` writes them.
const std::filesystem::path& demoStoreFolder() {
    static const std::filesystem::path dir = [] {
        std::string pattern = (std::filesystem::temp_directory_path() / "velmorant-bench-stores-XXXXXX").string();
        std::filesystem::path made = ::mkdtemp(pattern.data());
        platform::PlatformOptions options;
        options.timeZoneId = "UTC";
        options.now = platform::Date::fromUnix(1709623800);
        options.preferencesDir = made;
        platform::Platform platform(std::move(options));
        demo::installDemoStores(platform);
        std::atexit([] { std::filesystem::remove_all(demoStoreFolder()); });
        return made;
    }();
    return dir;
}

// One card from the store files to PNG bytes in memory, with the renderer's
// fonts and artwork already set up, as a server draws every card after its first.
void BM_cardPng(benchmark::State& state, std::string intent) {
    cli::CardRenderer renderer(3);
    cli::CardRequest request{.intent = intent,
                             .preferencesDir = demoStoreFolder(),
                             .now = platform::Date::fromUnix(1709623800),
                             .timeZoneId = "UTC",
                             .localeId = "en_US"};
    std::size_t bytes = renderer.render(request).png.size();
    bench::timeEach(state, [&] { return renderer.render(request).png.size(); });
    state.counters["bytes"] = static_cast<double>(bytes);
}
[[maybe_unused]] const bool cardPngRegistered = [] {
    for (std::string_view intent : kIntentTypeNames)
        benchmark::RegisterBenchmark(("BM_cardPng/" + std::string(intent)).c_str(), BM_cardPng, std::string(intent))
            ->Unit(benchmark::kMillisecond);
    return true;
}();

void BM_RenderCard(benchmark::State& state, const char* intent) {
    Snippet snippet(intent);
    for (auto _ : state) benchmark::DoNotOptimize(snippet.card());
}
BENCHMARK_CAPTURE(BM_RenderCard, SleepSpO2, "SleepSpO2Intent")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_RenderCard, SleepRings, "SleepRingsIntent")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_RenderCard, LightsOff, "LightsOffIntent")->Unit(benchmark::kMillisecond);

// What `show --png` spends on the card: drawn and written band by band.
void BM_WriteCardPng(benchmark::State& state, const char* intent) {
    Snippet snippet(intent);
    auto file = std::filesystem::temp_directory_path() / "velmorant-bench-card.png";
    for (auto _ : state)
        platform::writeCardPng(snippet.controller->views(), snippet.size, 3, snippet.platform.fonts(), file, "");
    state.counters["bytes"] = static_cast<double>(std::filesystem::file_size(file));
    std::filesystem::remove(file);
}
BENCHMARK_CAPTURE(BM_WriteCardPng, SleepSpO2, "SleepSpO2Intent")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_WriteCardPng, LightsOff, "LightsOffIntent")->Unit(benchmark::kMillisecond);

void BM_EncodeCard(benchmark::State& state) {
    static Snippet snippet("SleepRingsIntent");
    static platform::ImagePtr card = snippet.card();
    platform::PngOptions options;
    options.compressionLevel = static_cast<int>(state.range(0));
    options.filter = static_cast<platform::PngFilter>(state.range(1));
    options.strategy = static_cast<platform::PngStrategy>(state.range(2));
    std::size_t bytes = 0;
    for (auto _ : state) bytes = platform::encodePng(*card, options).size();
    state.counters["bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_EncodeCard)
    ->ArgsProduct({{1, 3, 6},
                   {static_cast<int>(platform::PngFilter::None), static_cast<int>(platform::PngFilter::Sub),
                    static_cast<int>(platform::PngFilter::Up), static_cast<int>(platform::PngFilter::Adaptive)},
                   {static_cast<int>(platform::PngStrategy::Default), static_cast<int>(platform::PngStrategy::RunLength)}})
    ->Unit(benchmark::kMillisecond);

void BM_EncodeCardDefaults(benchmark::State& state) {
    static Snippet snippet("SleepRingsIntent");
    static platform::ImagePtr card = snippet.card();
    std::size_t bytes = 0;
    for (auto _ : state) bytes = platform::encodePng(*card).size();
    state.counters["bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_EncodeCardDefaults)->Unit(benchmark::kMillisecond);

cairo_status_t appendTo(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

std::string cairoPng(const platform::Image& image) {
    std::string png;
    cairo_surface_write_to_png_stream(cairoSurface(image), appendTo, &png);
    return png;
}

// Cairo's writer, as the card was written before: libpng's default level and adaptive filters.
void BM_EncodeCardWithCairo(benchmark::State& state) {
    static Snippet snippet("SleepRingsIntent");
    static platform::ImagePtr card = snippet.card();
    std::string png;
    for (auto _ : state) png = cairoPng(*card);
    state.counters["bytes"] = static_cast<double>(png.size());
}
BENCHMARK(BM_EncodeCardWithCairo)->Unit(benchmark::kMillisecond);

// Every card at scale 3 (the nine and an unknown intent), drawn once.
const std::vector<platform::ImagePtr>& everyCard() {
    static const std::vector<platform::ImagePtr> cards = [] {
        std::vector<platform::ImagePtr> out;
        for (const char* intent : {"LightsOffIntent", "TimeAsleepIntent", "ReadinessIntent", "WristTempIntent",
                                   "SleepFuelIntent", "SleepSpO2Intent", "RespirationIntent", "LatestBedtimeIntent",
                                   "SleepRingsIntent", "UnknownIntent"})
            out.push_back(Snippet(intent).card());
        return out;
    }();
    return cards;
}

// Settings against Cairo's writer over every card: the time to encode all of
// them, and the worst card's size as a share of Cairo's ("worst"; the chosen
// settings must stay within 1.5).
void BM_EncodeEveryCard(benchmark::State& state) {
    const auto& cards = everyCard();
    platform::PngOptions options;
    options.compressionLevel = static_cast<int>(state.range(0));
    options.filter = static_cast<platform::PngFilter>(state.range(1));
    options.strategy = static_cast<platform::PngStrategy>(state.range(2));
    options.windowBits = static_cast<int>(state.range(3));
    options.memLevel = static_cast<int>(state.range(4));
    std::size_t bytes = 0;
    for (auto _ : state) {
        bytes = 0;
        for (const auto& card : cards) bytes += platform::encodePng(*card, options).size();
    }
    double worst = 0, cairoBytes = 0;
    for (const auto& card : cards) {
        double cairo = static_cast<double>(cairoPng(*card).size());
        cairoBytes += cairo;
        worst = std::max(worst, static_cast<double>(platform::encodePng(*card, options).size()) / cairo);
    }
    state.counters["bytes"] = static_cast<double>(bytes);
    state.counters["cairoBytes"] = cairoBytes;
    state.counters["worst"] = worst;
}
BENCHMARK(BM_EncodeEveryCard)
    ->ArgsProduct({{1, 2},
                   {static_cast<int>(platform::PngFilter::None), static_cast<int>(platform::PngFilter::Sub),
                    static_cast<int>(platform::PngFilter::Up)},
                   {static_cast<int>(platform::PngStrategy::Default), static_cast<int>(platform::PngStrategy::HuffmanOnly),
                    static_cast<int>(platform::PngStrategy::RunLength)},
                   {15},
                   {8}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EncodeEveryCard)
    ->ArgsProduct({{1, 2, 3}, {static_cast<int>(platform::PngFilter::None)}, {static_cast<int>(platform::PngStrategy::Default)},
                   {13, 15}, {4, 6, 8, 9}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
