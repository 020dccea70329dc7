#include "cli/Program.h"

#include <malloc.h>

#include <algorithm>
#include <iostream>

namespace {

// A one-shot command draws a card in bands and layers of a few megabytes each.
// With glibc's defaults every such buffer is a fresh mapping, faulted in page by
// page and unmapped again when freed (a fifth of the process's page faults); kept
// in the heap instead, the next buffer reuses pages already touched. The process
// ends soon after, so memory held back from the system costs nothing. The
// long-running service keeps the defaults.
void keepLargeBuffersInHeap() {
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 64 << 20);
    mallopt(M_TOP_PAD, 16 << 20);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    if (std::find(args.begin(), args.end(), "serve") == args.end()) keepLargeBuffersInHeap();
    return velmorant::cli::runProgram(args, std::cout, std::cerr);
}
