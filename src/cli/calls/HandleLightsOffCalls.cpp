#include "cli/CallRegistry.h"

namespace velmorant::cli {

void registerHandleLightsOffCalls(CallRegistry& registry) {}

}  // namespace velmorant::cli
