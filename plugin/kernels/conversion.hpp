// kernels/conversion.hpp: from floating-point numbers to integers

#pragma once

#include <cstdint>
#include <limits>

namespace arrayfold {

/// `x` without its fraction. NaN and what the type cannot hold give its smallest value, as the processor does.
template <class Integer>
constexpr Integer truncated(double x) {
  using Limits = std::numeric_limits<Integer>;
  // Both bounds are exact doubles; types of fewer than 64 bits also hold what lies within one below the smallest value.
  constexpr double beyond = 2.0 * static_cast<double>(Limits::max() / 2 + 1);
  constexpr double lowest = static_cast<double>(Limits::min());
  const bool fits = sizeof(Integer) < 8 ? x > lowest - 1.0 : x >= lowest;
  return fits && x < beyond ? static_cast<Integer>(x) : Limits::min();
}

}  // namespace arrayfold
