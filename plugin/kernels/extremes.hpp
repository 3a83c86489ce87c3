// kernels/extremes.hpp: the smallest and the largest of many elements
//
// The comparisons are strict: among equal elements, zeros of both signs included, the first one counts, and NaN neither
// beats anything nor is beaten. The loops are compiled for each processor target.

#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"

namespace arrayfold {

template <class T>
struct Extreme {
  /// The first of the elements' extremes that beats `start`; null when none does. A `start` of NaN is never beaten.
  const T* (*first)(const T* elements, std::size_t count, T start);

  /// The extreme of `start`, which is not NaN, and the elements. Blocks of 32 bytes are folded halves first, which
  /// decides between zeros of both signs; NaN is passed over.
  /// required: the elements behind the last whole block are read at their positions times `stride`.
  T (*by_blocks)(const T* elements, std::size_t count, std::size_t stride, T start);
};

template <class T>
struct Extremes {
  Extreme<T> smallest, largest;
};

/// The loops for double, float, std::int32_t and std::int64_t for each target.
extern const ForElementTypes<Extremes>* const extremes_by_target[];

/// For the processor at hand.
template <class T>
const Extremes<T>& extremes() {
  return extremes_by_target[target_index()]->of<T>();
}

}  // namespace arrayfold
