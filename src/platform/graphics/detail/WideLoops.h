#pragma once

// Plain loops over whole rows, built once more for AVX2 so that they run twice
// as wide where the processor has it; the right build is picked at load time
// (not under ThreadSanitizer, which is not running yet when the pick is made).
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && !defined(__SANITIZE_THREAD__)
#define VELMORANT_WIDE_LOOPS __attribute__((target_clones("avx2", "default")))
#else
#define VELMORANT_WIDE_LOOPS
#endif
