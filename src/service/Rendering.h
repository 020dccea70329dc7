#pragma once

#include "Metrics.h"
#include "RenderRequest.h"

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace velmorant::platform {
struct SharedResources;
}

namespace velmorant::service {

// What one render thread draws with. Pango's font map and layouts, the
// fontconfig set behind it and the line-height memo are not safe to share,
// so every worker owns one, with the artwork it has drawn; everything else a render uses (platform, stores,
// views, ICU formatters, Cairo surfaces, libplist trees) is made anew for
// each request on the worker's own stack. Fontconfig, Cairo, ICU and
// libplist keep only internally locked global state.
struct WorkerTools {
    std::shared_ptr<platform::SharedResources> shared;
};
std::unique_ptr<WorkerTools> makeWorkerTools();

struct RenderOutput {
    std::string contentType;
    std::string body;
};

// The known snippet intents and widget operations; anything else is 404.
bool isKnownIntent(std::string_view name);
bool isKnownWidget(std::string_view name);

// When a render must be done by. It is checked as each stage ends, so a render
// that runs late stops there and its worker moves on to the next request.
struct RenderDeadline {
    std::chrono::steady_clock::time_point at = std::chrono::steady_clock::time_point::max();
    // When set, decides instead of the clock whether the deadline has passed
    // once a stage is done (tests stop a render at a chosen stage this way).
    std::function<bool(Stage)> passedAfter;

    bool passed(Stage done) const;
};

// A render stopped because its deadline passed; the message names the last stage done.
class DeadlinePassed : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Draws what `task` asks for, from stores in memory; nothing is written
// anywhere. Throws BadRequest for a store, locale, zone or date the client
// got wrong, DeadlinePassed when a stage ends after `deadline`. Each stage's
// time goes to `metrics`.
RenderOutput render(const RenderTask& task, WorkerTools& tools, Metrics& metrics, const RenderDeadline& deadline);

// The shared and standard stores that `input` holds, as JSON
// ({"shared": {…}, "standard": {…}}), for the preview page.
std::string storesAsJson(const StoreInput& input, const RenderOptions& options);

}  // namespace velmorant::service
