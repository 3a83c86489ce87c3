// kernels/folds.hpp: many elements folded into one number, or into one a row
//
// Folds of floating-point numbers have an order, because each step rounds; it is the same on every processor. Integers
// wrap, in whatever order. The loops are compiled for each processor target; `folds` gives those for the processor at
// hand.

#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"

namespace arrayfold {

/// Folds each of `rows` consecutive rows of `length` elements, floating-point numbers strictly from left to right.
template <class T, class R>
using RowFold = void (*)(const T* elements, std::size_t rows, std::size_t length, R* folded);

/// The type of a sum by blocks.
/// required: of 32-bit floating-point numbers it is kept in 64 bits, their blocks in 32.
template <class T>
using BlockSum = std::conditional_t<std::is_same_v<T, float>, double, T>;

template <class T>
struct Folds {
  RowFold<T, T> sum, product;
  RowFold<T, double> sum_of_squares;
  /// The sum of the squared distances from a number.
  void (*sum_of_squared_distances)(const T* elements, std::size_t rows, std::size_t length, double from,
                                   double* folded);
  /// The sum of the squared distances of one row from its mean: both passes in one call. 0 without elements.
  double (*sum_of_squared_deviations)(const T* elements, std::size_t length);

  /// The sum in the order of a scan: blocks of 32 bytes are folded halves first.
  /// required: the elements behind the last whole block are read at their positions times `stride`.
  BlockSum<T> (*sum_by_blocks)(const T* elements, std::size_t count, std::size_t stride);

  /// The sum of neighbours, added in their own type, each sum halved.
  double (*trapezoids)(const T* elements, std::size_t count);

  /// How many elements are 0, of either sign.
  std::size_t (*count_of_zeros)(const T* elements, std::size_t count);

  /// Whether there is neither NaN nor an infinity. Null for integers.
  bool (*are_finite)(const T* elements, std::size_t count);
};

/// The loops for double, float, std::int32_t and std::int64_t for each target.
extern const ForElementTypes<Folds>* const folds_by_target[];

/// For the processor at hand.
template <class T>
const Folds<T>& folds() {
  return folds_by_target[target_index()]->of<T>();
}

}  // namespace arrayfold
