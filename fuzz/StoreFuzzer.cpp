// libFuzzer entry: hostile bytes as the two preference stores, mutated half of
// the time by a mutator that knows property lists.
#include "StoreHarness.h"
#include "StoreMutator.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

void failOn(const std::vector<std::string>& problems) {
    if (problems.empty()) return;
    for (const std::string& p : problems) std::fprintf(stderr, "store fuzzer: %s\n", p.c_str());
    std::abort();
}

}  // namespace

// Everything runs once on empty stores here, so that inputs whose stores are
// all refused can stop after the reader.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    failOn(velmorant::fuzz::checkStoreInput({}));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    failOn(velmorant::fuzz::checkStoreInput({data, size}, true));
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed) {
    std::mt19937 random(seed);
    if (random() % 2 == 0) {
        auto mutated = velmorant::fuzz::mutateStoreInput({data, size}, random);
        if (mutated && mutated->size() <= maxSize) {
            std::copy(mutated->begin(), mutated->end(), data);
            return mutated->size();
        }
    }
    return LLVMFuzzerMutate(data, size, maxSize);
}
