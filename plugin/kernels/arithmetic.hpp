// kernels/arithmetic.hpp: operations on two elements
//
// Integers wrap in their width; their division is the processor's, with its fault. Floating-point numbers follow IEEE
// 754. The loops are compiled for each processor target; `arithmetic` gives those for the processor at hand.

#pragma once

#include <cstddef>
#include <cstdint>

namespace arrayfold {

/// Consecutive rows of results and how the operands move between them.
struct OperandRows {
  std::size_t length;        // of a row, in elements
  std::size_t count;         // of rows
  std::size_t left_stride;   // from one row of the left operand to the next
  std::size_t right_stride;  // from one row of the right operand to the next
};

/// One operation on elements of T with results of R. In a row an operand either advances with the result, or repeats
/// its first element. The results may be stored over an operand, element by element; otherwise they overlap none.
template <class T, class R>
struct Operation {
  using Loop = void (*)(const T* left, const T* right, R* out, const OperandRows& rows);

  Loop both_advance;
  Loop left_advances;
  Loop right_advances;
};

/// The operations on elements of T. Only integers have a remainder.
template <class T>
struct Arithmetic {
  Operation<T, T> sum, difference, product, quotient, remainder;
  Operation<T, bool> less_equal, greater_equal, less, greater;
  /// The smaller and the larger element: the right one where the comparison fails, as with NaN or two zeros.
  Operation<T, double> minimum, maximum;
};

/// For double, float, std::int32_t and std::int64_t.
template <class T>
const Arithmetic<T>& arithmetic();

/// Whether two runs of elements are equal: NaN equals nothing, zeros of both signs are equal.
bool all_equal(const double* left, const double* right, std::size_t count);
bool all_equal(const float* left, const float* right, std::size_t count);

}  // namespace arrayfold
