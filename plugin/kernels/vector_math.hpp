// kernels/vector_math.hpp: mathematical functions over many numbers at once
//
// The functions are the module's own. Errors stay below 1 unit in the last place where the processor fuses products and
// sums, and the bits of a value are then the same on each of these processors; elsewhere errors stay below 1.5. Those
// of powers of ten stay below 0.51. Sine, cosine and tangent of magnitudes beyond 1e5 are those of the C library, and
// so are powers of ten beyond 10^290 and below 10^-290. The value of an element does not depend on its neighbours or
// its position. Special values are those of the C library's functions.

#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/dispatch.hpp"

namespace arrayfold {

/// Computes `out[i]` from `in[i]`, as a double, for `count` numbers. The two may be the same memory.
template <class T>
using VectorFunction = void (*)(const T* in, double* out, std::size_t count);

/// A function of each type of numbers.
struct VectorFunctions {
  VectorFunction<double> of_doubles;
  VectorFunction<std::int32_t> of_ints;
  VectorFunction<std::int64_t> of_int64s;

  void operator()(const double* in, double* out, std::size_t count) const { of_doubles(in, out, count); }
  void operator()(const std::int32_t* in, double* out, std::size_t count) const { of_ints(in, out, count); }
  void operator()(const std::int64_t* in, double* out, std::size_t count) const { of_int64s(in, out, count); }
};

struct VectorMath {
  VectorFunctions exp, exp10, expm1, log, log1p, cbrt, sin, cos, tan, sinh, cosh, tanh;
};

/// The functions for each target.
extern const VectorMath* const vector_math_by_target[];

/// For the processor at hand.
inline const VectorMath& vector_math() { return *vector_math_by_target[target_index()]; }

}  // namespace arrayfold
