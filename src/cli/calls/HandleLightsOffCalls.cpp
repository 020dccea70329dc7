#include "cli/CallRegistry.h"
#include "intents/HandleLightsOff.h"

namespace velmorant::cli {
using intents::HandleLightsOff;

void registerHandleLightsOffCalls(CallRegistry& registry) {
    registry.add("HandleLightsOff", "turnLightsOff", {}, [](platform::Platform& p, const CallArgs&) -> CallResult {
        HandleLightsOff handler(p);
        return CallResult(handler.turnLightsOff());
    });
}

}  // namespace velmorant::cli
