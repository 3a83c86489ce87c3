// kernels/lanes.hpp: whether the processor's registers hold eight doubles
//
// The module is built for registers of four. What gains from eight stands in functions of a target of their own, and
// asks here at its head: the answer is a few bits that the compiler's runtime holds.

#pragma once

namespace arrayfold {

#ifdef __x86_64__

/// The attribute of functions for registers of eight doubles. Not every compiler takes the whole register by itself.
#ifdef __clang__
#define ARRAYFOLD_EIGHT_LANES __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl"), min_vector_width(512)))
#else
#define ARRAYFOLD_EIGHT_LANES __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,prefer-vector-width=512")))
#endif

#else
#define ARRAYFOLD_EIGHT_LANES
#endif

// ARRAYFOLD_FOUR_LANES is defined where four lanes are to be measured or tested on a processor that has eight.
inline bool has_eight_lanes() {
#if defined(__x86_64__) && !defined(ARRAYFOLD_FOUR_LANES)
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
         __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
#else
  return false;
#endif
}

}  // namespace arrayfold
