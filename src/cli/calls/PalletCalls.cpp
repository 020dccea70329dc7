#include "cli/CallRegistry.h"

namespace velmorant::cli {

void registerPalletCalls(CallRegistry& registry) {}

}  // namespace velmorant::cli
