#include "cli/CallRegistry.h"

namespace velmorant::cli {

void registerGroupMetricsCalls(CallRegistry& registry) {}

}  // namespace velmorant::cli
