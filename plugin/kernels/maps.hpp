// kernels/maps.hpp: one element computed from one element
//
// Integers wrap in their width. Floating-point numbers are computed in their width, each step rounded, and stored as
// doubles. The loops are compiled for each processor target; `maps` gives those for the processor at hand.

#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"

namespace arrayfold {

/// Computes `out[i]` from `in[i]` for `count` elements, which do not overlap.
template <class T, class R = double>
using Map = void (*)(const T* in, R* out, std::size_t count);

/// The maps of elements of T. Only floating-point numbers have a sign and are classified.
template <class T>
struct Maps {
  /// The smallest integer stays itself.
  Map<T, std::conditional_t<std::is_same_v<T, float>, double, T>> magnitude;
  /// -1 or 1; zeros of both signs and NaN stay what they are.
  Map<T> sign;
  /// Of integers as doubles. The multiplication comes first: the other order rounds otherwise.
  Map<T> degrees, radians;
  /// Of integers in their own width.
  Map<T> square, cube;
  /// Of integers as doubles.
  Map<T> square_root;
  /// 1 where it holds, else 0.
  Map<T> is_nan, is_infinite, is_finite;
};

/// The maps of double, float, std::int32_t and std::int64_t for each target.
extern const ForElementTypes<Maps>* const maps_by_target[];

/// For the processor at hand.
template <class T>
const Maps<T>& maps() {
  return maps_by_target[target_index()]->of<T>();
}

}  // namespace arrayfold
