// kernels/conversion.hpp: from reals to elements

#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

namespace arrayfold {

/// `x` without its fraction. NaN and what the type cannot hold give its smallest value, as the processor does.
template <class Integer>
constexpr Integer truncated(double x) {
  using Limits = std::numeric_limits<Integer>;
  // Both bounds are exact doubles; 32 bits also hold what lies within one below the smallest value.
  constexpr double beyond = -2.0 * static_cast<double>(Limits::min() / 2);
  constexpr double lowest = static_cast<double>(Limits::min());
  const bool fits = sizeof(Integer) < 8 ? x > lowest - 1.0 : x >= lowest;
  return fits && x < beyond ? static_cast<Integer>(x) : Limits::min();
}

/// A real as an element: integers without its fraction.
template <class T>
constexpr T stored_as(double x) {
  if constexpr (std::is_integral_v<T>)
    return truncated<T>(x);
  else
    return static_cast<T>(x);
}

}  // namespace arrayfold
