#pragma once

#include "Metrics.h"
#include "RenderRequest.h"

#include <memory>
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

// Draws what `task` asks for, from stores in memory; nothing is written
// anywhere. Throws BadRequest for a store, locale, zone or date the client
// got wrong. Each stage's time goes to `metrics`.
RenderOutput render(const RenderTask& task, WorkerTools& tools, Metrics& metrics);

// The shared and standard stores that `input` holds, as JSON
// ({"shared": {…}, "standard": {…}}), for the preview page.
std::string storesAsJson(const StoreInput& input, const RenderOptions& options);

}  // namespace velmorant::service
