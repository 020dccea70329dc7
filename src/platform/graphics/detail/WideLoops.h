#pragma once

// Plain loops over whole rows, built once more for AVX2 so that they run twice
// as wide where the processor has it; the right build is picked at load time
// (not under ThreadSanitizer, which is not running yet when the pick is made).
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && !defined(__SANITIZE_THREAD__)
#define VELMORANT_WIDE_LOOPS __attribute__((target_clones("avx2", "default")))
#else
#define VELMORANT_WIDE_LOOPS
#endif

// Whether the processor runs AVX2, for the few loops written for it by hand
// (under `target("avx2")`, with a plain loop for the rest).
#if defined(__x86_64__)
#define VELMORANT_HAND_WIDE 1
inline const bool kRunsAvx2 = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
}();
#endif
