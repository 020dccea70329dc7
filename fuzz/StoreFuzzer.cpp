// libFuzzer entry: hostile bytes as the two preference stores.
#include "StoreHarness.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto problems = velmorant::fuzz::checkStoreInput({data, size});
    if (problems.empty()) return 0;
    for (const std::string& p : problems) std::fprintf(stderr, "store fuzzer: %s\n", p.c_str());
    std::abort();
}
