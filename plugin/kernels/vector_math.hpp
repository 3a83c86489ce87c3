// kernels/vector_math.hpp: mathematical functions over many doubles at once
//
// On x86-64 these are the C library's own vector functions, for AVX2 or AVX-512; elsewhere its scalar ones. The value
// of an element does not depend on its neighbours or its position: the remainder at the end is padded to one more
// vector. Errors stay below 4 units in the last place; special values are those of the scalar functions.

#pragma once

#include <cstddef>

namespace arrayfold {

/// Computes `out[i]` from `in[i]` for `count` doubles. The two may be the same memory.
using VectorFunction = void (*)(const double* in, double* out, std::size_t count);

void vector_exp(const double* in, double* out, std::size_t count);
void vector_expm1(const double* in, double* out, std::size_t count);
void vector_log(const double* in, double* out, std::size_t count);
void vector_log1p(const double* in, double* out, std::size_t count);
void vector_cbrt(const double* in, double* out, std::size_t count);
void vector_sin(const double* in, double* out, std::size_t count);
void vector_cos(const double* in, double* out, std::size_t count);
void vector_tan(const double* in, double* out, std::size_t count);
void vector_sinh(const double* in, double* out, std::size_t count);
void vector_cosh(const double* in, double* out, std::size_t count);
void vector_tanh(const double* in, double* out, std::size_t count);

}  // namespace arrayfold
