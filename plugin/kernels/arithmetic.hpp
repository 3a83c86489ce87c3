// kernels/arithmetic.hpp: operations on two elements
//
// Integers wrap in their width; their division is the processor's, with its fault. Floating-point numbers follow IEEE
// 754. The loops are compiled for each processor target; `arithmetic` gives those for the processor at hand.

#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"

namespace arrayfold {

/// One operation on elements of T with results of R: out[i] = left[i] op right[i], where an operand advances with the
/// result or repeats its first element, which is read for no results, too. The results may be stored over an operand,
/// each over its own element; otherwise they overlap none.
template <class T, class R>
struct Operation {
  using Loop = void (*)(const T* left, const T* right, R* out, std::size_t count);

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
  /// Whether two runs of elements are equal: NaN equals nothing, zeros of both signs are equal.
  bool (*are_equal)(const T* left, const T* right, std::size_t count);
};

/// The operations on double, float, std::int32_t and std::int64_t for each target.
extern const ForElementTypes<Arithmetic>* const arithmetic_by_target[];

/// For the processor at hand.
template <class T>
const Arithmetic<T>& arithmetic() {
  return arithmetic_by_target[target_index()]->of<T>();
}

}  // namespace arrayfold
