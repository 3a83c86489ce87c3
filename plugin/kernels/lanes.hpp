// kernels/lanes.hpp: whether the processor has AVX-512
//
// The module is built for AVX2. Loops that profit from AVX-512 are compiled for that target separately; callers ask
// here at run time. The answer costs a few loads: the compiler's runtime keeps it.

#pragma once

namespace arrayfold {

#ifdef __x86_64__

/// The attribute of functions for AVX-512. Compilers prefer half of its registers unless they are told otherwise.
#ifdef __clang__
#define ARRAYFOLD_AVX512 __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl"), min_vector_width(512)))
#else
#define ARRAYFOLD_AVX512 __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,prefer-vector-width=512")))
#endif

#else
#define ARRAYFOLD_AVX512
#endif

// ARRAYFOLD_AVX2_ONLY is defined where AVX2 is to be measured or tested on a processor that has AVX-512.
inline bool has_avx512() {
#if defined(__x86_64__) && !defined(ARRAYFOLD_AVX2_ONLY)
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
         __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
#else
  return false;
#endif
}

}  // namespace arrayfold
