#pragma once

// The demo stores live in their own library (src/demo), shared with the
// tests, the fuzzer and the benchmarks; the program uses them from here.
#include "demo/DemoData.h"

namespace velmorant::cli {

using demo::DemoStores;
using demo::installDemoStores;
using demo::makeDemoStores;

}  // namespace velmorant::cli
