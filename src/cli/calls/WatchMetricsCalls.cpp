#include "cli/CallRegistry.h"
#include "intents/WatchMetrics.h"

namespace velmorant::cli {
using intents::WatchMetrics;

void registerWatchMetricsCalls(CallRegistry& registry) {
    // This machine has no paired watch, so the context is only kept.
    registry.add("WatchMetrics", "updateWatchContextWithDict:", {ParamType::Dictionary},
                 [](platform::Platform&, const CallArgs& a) -> CallResult {
                     platform::NoWatchConnectivity connectivity;
                     WatchMetrics watch(connectivity);
                     watch.updateWatchContextWithDict(a.dictionary(0).value_or(platform::Dictionary{}));
                     return CallResult();
                 });
}

}  // namespace velmorant::cli
