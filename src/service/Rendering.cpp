#include "Rendering.h"

#include "StoreReading.h"
#include "cli/Gallery.h"
#include "cli/IsoDate.h"
#include "cli/detail/ValueJson.h"
#include "cli/WidgetPictures.h"
#include "intents/Intents.h"
#include "platform/graphics/DrawingTime.h"
#include "platform/graphics/FontSystem.h"
#include "platform/graphics/Image.h"
#include "platform/graphics/PngWriter.h"
#include "platform/text/Text.h"
#include "platform/views/ViewRenderer.h"

#include <algorithm>
#include <chrono>
#include <mutex>

namespace velmorant::service {
using intents::kIntentTypeNames;
using snippet_ui::SleepMetricsUI;

namespace {

using Clock = std::chrono::steady_clock;

// Times the stages of one render and stops it when a stage ends past the deadline.
class StageTimer {
public:
    StageTimer(Metrics& metrics, const RenderDeadline& deadline) : metrics_(metrics), deadline_(deadline) {}
    // Records the time since the last mark as `stage`.
    void mark(Stage stage) {
        auto now = Clock::now();
        metrics_.timeStage(stage, std::chrono::duration<double>(now - last_).count());
        restart(now);
        // A finished result is sent even when late: dropping it would waste the whole render.
        if (stage != Stage::Encoding) check(stage);
    }
    // Records the time since the last mark split in two: the time canvases
    // were open is drawing, the rest is filling the records.
    void markRecordsAndDrawing() {
        markSplit(Stage::Records, Stage::Drawing, platform::drawingSecondsOnThisThread() - drawingAtLast_);
        check(Stage::Drawing);
    }
    // Records the time since the last mark as the card drawn and encoded band
    // by band: the bands' encoding is the encoding stage, the rest the card.
    void markCardAndEncoding(double encodingSeconds) { markSplit(Stage::Card, Stage::Encoding, encodingSeconds); }
    // Between bands of the card: false once the deadline has passed.
    bool cardInTime() const { return !deadline_.passed(Stage::Card); }
    // The card stopped between bands: everything since the last mark was the card.
    [[noreturn]] void stopInCard() {
        mark(Stage::Card);
        throw late(Stage::Card);
    }

private:
    void markSplit(Stage rest, Stage part, double partSeconds) {
        auto now = Clock::now();
        double total = std::chrono::duration<double>(now - last_).count();
        double inPart = std::clamp(partSeconds, 0.0, total);
        metrics_.timeStage(rest, total - inPart);
        metrics_.timeStage(part, inPart);
        restart(now);
    }
    void restart(Clock::time_point now) {
        last_ = now;
        drawingAtLast_ = platform::drawingSecondsOnThisThread();
    }
    void check(Stage done) const {
        if (deadline_.passed(done)) throw late(done);
    }
    static DeadlinePassed late(Stage done) {
        return DeadlinePassed(std::string("the render passed its deadline (stopped after the ") + stageName(done) + " stage)");
    }

    Metrics& metrics_;
    const RenderDeadline& deadline_;
    Clock::time_point last_ = Clock::now();
    double drawingAtLast_ = platform::drawingSecondsOnThisThread();
};

// Pictures are drawn when first read: read here, they count as drawing rather than as the card or its encoding.
void drawPictures(const platform::ViewTree& views) {
    for (const auto& view : views.views())
        if (platform::ImagePtr image = views.isShown(*view) ? views.shownImage(*view) : nullptr) image->drawNow();
}

const cli::WidgetEntry* findWidget(std::string_view name) {
    for (const auto& entry : cli::kWidgets)
        if (name == entry.operation) return &entry;
    return nullptr;
}

// The platform of one request: the worker's fonts, stores in memory.
std::unique_ptr<platform::Platform> makePlatform(const RenderOptions& options, WorkerTools* tools) {
    platform::PlatformOptions settings;
    settings.localeId = options.locale;
    settings.timeZoneId = options.timeZone;
    settings.scale = options.scale;
    if (tools) settings.shared = tools->shared;
    // In-memory stores have nothing to report.
    settings.diagnostics = [](std::string_view) {};
    std::unique_ptr<platform::Platform> platform;
    try {
        platform = std::make_unique<platform::Platform>(std::move(settings));
    } catch (const std::invalid_argument& e) {
        throw BadRequest(e.what());
    }
    if (!options.now.empty()) {
        auto now = cli::parseIsoDate(options.now, platform->timeZone());
        if (!now) throw BadRequest("now must be an ISO 8601 date such as 2024-03-05T22:10:00, not \"" + options.now + "\"");
        platform->setNow(*now);
    } else {
        platform->setNow(platform->now());
    }
    return platform;
}

void install(platform::Platform& platform, const demo::DemoStores& stores) {
    auto shared = platform.suiteNamed(platform::kAppGroupSuite);
    for (const auto& [key, value] : stores.shared) shared->setObject(value, key);
    auto standard = platform.standardUserDefaults();
    for (const auto& [key, value] : stores.standard) standard->setObject(value, key);
}

std::string pngBytes(const platform::Image& image, const std::string& description) {
    std::string error;
    std::string bytes = platform::encodePng(image, {.description = description}, &error);
    if (bytes.empty()) throw std::runtime_error("cannot encode the picture: " + error);
    return bytes;
}

// The card drawn and encoded a band at a time, as `show` writes it: smaller
// surfaces, each band compressed while its pixels are still in the cache. A
// late render stops between bands, except after the last: a finished picture is sent.
std::string cardPng(const platform::ViewTree& views, const cli::SnippetCard& filled, platform::Platform& platform,
                    StageTimer& timer) {
    double encoding = 0;
    bool stopped = false;
    std::string error;
    std::string bytes = platform::encodeCardPng(views, filled.size, platform.screenScale(), platform.fonts(), filled.spoken,
                                                &error, [&](const platform::CardBand& band) {
                                                    encoding += band.encodingSeconds;
                                                    stopped = band.rowsDone < band.rows && !timer.cardInTime();
                                                    return !stopped;
                                                });
    if (stopped) timer.stopInCard();
    if (bytes.empty()) throw std::runtime_error("cannot encode the picture: " + error);
    timer.markCardAndEncoding(encoding);
    return bytes;
}

}  // namespace

std::unique_ptr<WorkerTools> makeWorkerTools() {
    // Fontconfig's and ICU's first-use set-up (the host zone's name is read
    // into a static buffer, the root locale and case data made once) are made
    // one worker at a time.
    static std::mutex setUp;
    std::lock_guard lock(setUp);
    platform::prepareTextCasing();
    platform::Platform platform({.timeZoneId = "UTC"});
    auto tools = std::make_unique<WorkerTools>();
    tools->shared = std::make_shared<platform::SharedResources>();
    tools->shared->fonts = std::make_unique<platform::FontSystem>(platform.resourceDir() / "fonts" / "fonts.conf");
    return tools;
}

bool isKnownIntent(std::string_view name) {
    return std::find(std::begin(kIntentTypeNames), std::end(kIntentTypeNames), name) != std::end(kIntentTypeNames);
}

bool isKnownWidget(std::string_view name) { return findWidget(name) != nullptr; }

bool RenderDeadline::passed(Stage done) const {
    return passedAfter ? passedAfter(done) : Clock::now() > at;
}

RenderOutput render(const RenderTask& task, WorkerTools& tools, Metrics& metrics, const RenderDeadline& deadline) {
    StageTimer timer(metrics, deadline);
    auto platform = makePlatform(task.options, &tools);
    install(*platform, parseStores(task.stores, *platform));
    timer.mark(Stage::Store);

    if (task.product == Product::WidgetPng) {
        SleepMetricsUI ui(*platform);
        platform::ImagePtr image = (ui.*findWidget(task.name)->draw)();
        if (image) image->drawNow();
        timer.markRecordsAndDrawing();
        if (!image) throw BadRequest(task.name + " draws no picture from this store (it has no data for it)");
        RenderOutput output{"image/png", pngBytes(*image, "")};
        timer.mark(Stage::Encoding);
        return output;
    }
    RenderOutput output;
    cli::SnippetOptions snippet{.width = task.options.width};
    snippet.draw = [&](const platform::ViewTree& views, const cli::SnippetCard& filled) {
        if (task.product != Product::CardPng) return;
        drawPictures(views);
        timer.markRecordsAndDrawing();
        output = {"image/png", cardPng(views, filled, *platform, timer)};
    };
    cli::SnippetCard card = cli::showSnippet(*platform, task.name, snippet);
    if (task.product == Product::CardJson) {
        timer.markRecordsAndDrawing();
        output = {"application/json", card.record + "\n"};
        timer.mark(Stage::Encoding);
    }
    return output;
}

std::string storesAsJson(const StoreInput& input, const RenderOptions& options) {
    auto platform = makePlatform(options, nullptr);
    demo::DemoStores stores = parseStores(input, *platform);
    nlohmann::json out = {{"shared", cli::toJson(platform::Value(stores.shared))},
                          {"standard", cli::toJson(platform::Value(stores.standard))}};
    return out.dump() + "\n";
}

}  // namespace velmorant::service
