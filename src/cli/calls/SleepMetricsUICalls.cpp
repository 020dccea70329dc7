#include "cli/CallRegistry.h"

namespace velmorant::cli {

void registerSleepMetricsUICalls(CallRegistry& registry) {}

}  // namespace velmorant::cli
