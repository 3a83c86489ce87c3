// kernels/vector_math.hpp: mathematical functions over many doubles at once
//
// On x86-64 these are the C library's own vector functions, for registers as wide as the processor's. On processors
// without vector instructions, on arm64, and with a C library older than 2.35 they are its scalar ones. The value of an
// element does not depend on its neighbours or its position: the remainder at the end is padded to one more register.
// Errors stay below 4 units in the last place; special values are those of the scalar functions.

#pragma once

#include <cstddef>

#include "kernels/dispatch.hpp"

namespace arrayfold {

/// Computes `out[i]` from `in[i]` for `count` doubles. The two may be the same memory.
using VectorFunction = void (*)(const double* in, double* out, std::size_t count);

struct VectorMath {
  VectorFunction exp, expm1, log, log1p, cbrt, sin, cos, tan, sinh, cosh, tanh;
};

/// The functions for each target.
extern const VectorMath* const vector_math_by_target[];

/// For the processor at hand.
inline const VectorMath& vector_math() { return *vector_math_by_target[target_index()]; }

}  // namespace arrayfold
