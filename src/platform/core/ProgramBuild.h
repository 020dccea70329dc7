#pragma once

#include <string>

namespace velmorant::platform {

// The GNU build id the linker gave the running program (raw bytes), or empty
// when it has none. A rebuilt program with other code has another.
std::string programBuildId();

}  // namespace velmorant::platform
