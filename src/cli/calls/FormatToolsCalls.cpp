#include "cli/CallRegistry.h"

namespace velmorant::cli {

void registerFormatToolsCalls(CallRegistry& registry) {}

}  // namespace velmorant::cli
