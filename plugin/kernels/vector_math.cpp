// kernels/vector_math.cpp: the C library's vector functions, for AVX2 and AVX-512

#include "kernels/vector_math.hpp"

#include <cmath>
#include <cstring>

#include "kernels/lanes.hpp"

#if defined(__x86_64__) && defined(__GLIBC__) && defined(__GLIBC_PREREQ)
#if __GLIBC_PREREQ(2, 35)
#define ARRAYFOLD_HAS_VECTOR_LIBRARY
#endif
#endif

#ifdef ARRAYFOLD_HAS_VECTOR_LIBRARY

#include <immintrin.h>

// The names are the C library's: d stands for AVX2, e for AVX-512.
#define ARRAYFOLD_DECLARE(name)     \
  __m256d _ZGVdN4v_##name(__m256d); \
  __attribute__((target("avx512f"))) __m512d _ZGVeN8v_##name(__m512d);
extern "C" {
ARRAYFOLD_DECLARE(exp)
ARRAYFOLD_DECLARE(expm1)
ARRAYFOLD_DECLARE(log)
ARRAYFOLD_DECLARE(log1p)
ARRAYFOLD_DECLARE(cbrt)
ARRAYFOLD_DECLARE(sin)
ARRAYFOLD_DECLARE(cos)
ARRAYFOLD_DECLARE(tan)
ARRAYFOLD_DECLARE(sinh)
ARRAYFOLD_DECLARE(cosh)
ARRAYFOLD_DECLARE(tanh)
}
#undef ARRAYFOLD_DECLARE

namespace arrayfold {
namespace {

using Avx2Function = __m256d (*)(__m256d);

/// Calls `run(in, out)` for whole vectors, and for the remainder in a vector padded with its last element.
template <std::size_t lanes, class Run>
inline __attribute__((always_inline)) void over_vectors(const double* in, double* out, std::size_t count, Run run) {
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) run(in + i, out + i);
  const std::size_t left = count - i;
  if (left == 0) return;
  double padded[lanes];
  for (std::size_t lane = 0; lane < lanes; ++lane) padded[lane] = in[i + (lane < left ? lane : left - 1)];
  run(padded, padded);
  std::memcpy(out + i, padded, left * sizeof(double));
}

template <Avx2Function function>
void on_avx2(const double* in, double* out, std::size_t count) {
  over_vectors<4>(in, out, count,
                  [](const double* from, double* to) { _mm256_storeu_pd(to, function(_mm256_loadu_pd(from))); });
}

}  // namespace

// The AVX-512 loop stands in a function of its own target: only there may its vectors be named.
#define ARRAYFOLD_VECTOR_FUNCTION(name)                                                                               \
  __attribute__((target("avx512f"))) static void on_avx512_##name(const double* in, double* out, std::size_t count) { \
    std::size_t i = 0;                                                                                                \
    for (; i + 8 <= count; i += 8) _mm512_storeu_pd(out + i, _ZGVeN8v_##name(_mm512_loadu_pd(in + i)));               \
    const auto left = static_cast<unsigned>(count - i);                                                               \
    if (left == 0) return;                                                                                            \
    const auto lanes = static_cast<__mmask8>((1u << left) - 1);                                                       \
    const __m512d padding = _mm512_set1_pd(in[count - 1]);                                                            \
    _mm512_mask_storeu_pd(out + i, lanes, _ZGVeN8v_##name(_mm512_mask_loadu_pd(padding, lanes, in + i)));             \
  }                                                                                                                   \
  void vector_##name(const double* in, double* out, std::size_t count) {                                              \
    if (has_avx512()) return on_avx512_##name(in, out, count);                                                        \
    on_avx2<&_ZGVdN4v_##name>(in, out, count);                                                                        \
  }

#else

namespace arrayfold {

#define ARRAYFOLD_VECTOR_FUNCTION(name)                                  \
  void vector_##name(const double* in, double* out, std::size_t count) { \
    for (std::size_t i = 0; i < count; ++i) out[i] = std::name(in[i]);   \
  }

#endif

ARRAYFOLD_VECTOR_FUNCTION(exp)
ARRAYFOLD_VECTOR_FUNCTION(expm1)
ARRAYFOLD_VECTOR_FUNCTION(log)
ARRAYFOLD_VECTOR_FUNCTION(log1p)
ARRAYFOLD_VECTOR_FUNCTION(cbrt)
ARRAYFOLD_VECTOR_FUNCTION(sin)
ARRAYFOLD_VECTOR_FUNCTION(cos)
ARRAYFOLD_VECTOR_FUNCTION(tan)
ARRAYFOLD_VECTOR_FUNCTION(sinh)
ARRAYFOLD_VECTOR_FUNCTION(cosh)
ARRAYFOLD_VECTOR_FUNCTION(tanh)

}  // namespace arrayfold
