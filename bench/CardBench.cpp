// The card's cost: from the store files to PNG bytes as a server pays it per
// card (BM_cardPng, one row per intent; target under 8 ms at scale 3), drawing
// the views, and writing the PNG at the chosen compression level against the
// others and against zlib's default level (the size each makes is reported as
// "bytes"). The program's whole-process targets (`show INTENT --png FILE`
// under 20 ms at scale 3, `show` under 10 ms) are measured with hyperfine;
// these show where that time goes.
#include "BenchSupport.h"
#include "cli/SnippetCard.h"
#include "demo/DemoData.h"
#include "intents/IntentViewController.h"
#include "platform/graphics/detail/CHandles.h"
#include "platform/graphics/detail/ImageSurface.h"
#include "platform/graphics/PngWriter.h"
#include "platform/views/ViewRenderer.h"

#include <benchmark/benchmark.h>
#include <spng.h>

#include <algorithm>
#include <cstdint>
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
    const platform::PngOptions options{.compressionLevel = static_cast<int>(state.range(0))};
    std::size_t bytes = 0;
    for (auto _ : state) bytes = platform::encodePng(*card, options).size();
    state.counters["bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_EncodeCard)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

void BM_EncodeCardDefaults(benchmark::State& state) {
    static Snippet snippet("SleepRingsIntent");
    static platform::ImagePtr card = snippet.card();
    std::size_t bytes = 0;
    for (auto _ : state) bytes = platform::encodePng(*card).size();
    state.counters["bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_EncodeCardDefaults)->Unit(benchmark::kMillisecond);

// The size yardstick: the same pixels at zlib's default level (6) with
// adaptive row filters, as libspng writes by default (and libpng, so Cairo).
using SpngContext = std::unique_ptr<spng_ctx, platform::CRelease<spng_ctx_free>>;
struct FilePixels {
    spng_ihdr ihdr{};
    std::vector<std::uint8_t> bytes;
};
FilePixels filePixels(const platform::Image& image) {
    const std::string ours = platform::encodePng(image);
    SpngContext decoder(spng_ctx_new(0));
    spng_set_png_buffer(decoder.get(), ours.data(), ours.size());
    FilePixels pixels;
    std::size_t size = 0;
    spng_get_ihdr(decoder.get(), &pixels.ihdr);
    spng_decoded_image_size(decoder.get(), SPNG_FMT_PNG, &size);
    pixels.bytes.resize(size);
    spng_decode_image(decoder.get(), pixels.bytes.data(), size, SPNG_FMT_PNG, 0);
    return pixels;
}
std::string zlibDefaultPng(FilePixels& pixels) {
    SpngContext encoder(spng_ctx_new(SPNG_CTX_ENCODER));
    spng_set_option(encoder.get(), SPNG_ENCODE_TO_BUFFER, 1);
    spng_set_ihdr(encoder.get(), &pixels.ihdr);
    spng_encode_image(encoder.get(), pixels.bytes.data(), pixels.bytes.size(), SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE);
    std::size_t length = 0;
    int error = 0;
    void* buffer = spng_get_png_buffer(encoder.get(), &length, &error);
    std::string png(static_cast<const char*>(buffer), buffer ? length : 0);
    std::free(buffer);
    return png;
}

void BM_EncodeCardZlibDefault(benchmark::State& state) {
    static Snippet snippet("SleepRingsIntent");
    static FilePixels pixels = filePixels(*snippet.card());
    std::string png;
    for (auto _ : state) png = zlibDefaultPng(pixels);
    state.counters["bytes"] = static_cast<double>(png.size());
}
BENCHMARK(BM_EncodeCardZlibDefault)->Unit(benchmark::kMillisecond);

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

// Each level against zlib's default over every card: the time to encode all
// of them, and the worst card's size as a share of zlib's ("worst"; the chosen
// level must stay within 1.5).
void BM_EncodeEveryCard(benchmark::State& state) {
    const auto& cards = everyCard();
    const platform::PngOptions options{.compressionLevel = static_cast<int>(state.range(0))};
    std::size_t bytes = 0;
    for (auto _ : state) {
        bytes = 0;
        for (const auto& card : cards) bytes += platform::encodePng(*card, options).size();
    }
    double worst = 0, zlibBytes = 0;
    for (const auto& card : cards) {
        FilePixels pixels = filePixels(*card);
        double zlib = static_cast<double>(zlibDefaultPng(pixels).size());
        zlibBytes += zlib;
        worst = std::max(worst, static_cast<double>(platform::encodePng(*card, options).size()) / zlib);
    }
    state.counters["bytes"] = static_cast<double>(bytes);
    state.counters["zlibBytes"] = zlibBytes;
    state.counters["worst"] = worst;
}
BENCHMARK(BM_EncodeEveryCard)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

}  // namespace
