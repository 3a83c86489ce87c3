// kernels/conversion.hpp: numbers of one type as numbers of another

#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"

namespace arrayfold {

/// `x` without its fraction. NaN and what the type cannot hold give its smallest value, as the processor does.
template <class Integer>
constexpr Integer truncated(double x) {
  using Limits = std::numeric_limits<Integer>;
  // Both bounds are exact doubles; types of fewer than 64 bits also hold what lies within one below the smallest value.
  constexpr Integer half_of_beyond = Limits::max() / 2 + 1;
  constexpr auto beyond = 2.0 * static_cast<double>(half_of_beyond);
  constexpr auto lowest = static_cast<double>(Limits::min());
  const bool fits = sizeof(Integer) < 8 ? x > lowest - 1.0 : x >= lowest;
  return fits && x < beyond ? static_cast<Integer>(x) : Limits::min();
}

/// Loops that convert `count` numbers, which do not overlap: from floating-point numbers to integers as `truncated`
/// does, else as a cast does, which keeps the lower half of a 64-bit integer. The other pointers are null.
template <class From>
struct Conversions {
  template <class To>
  using Loop = void (*)(const From* in, To* out, std::size_t count);

  Loop<double> to_double;
  Loop<std::int32_t> to_int32;
  Loop<std::int64_t> to_int64;
};

/// The conversions from double, float, std::int32_t and std::int64_t for each target.
extern const ForElementTypes<Conversions>* const conversions_by_target[];

/// Converts on the processor at hand.
template <class From, class To>
void convert(const From* in, To* out, std::size_t count) {
  const auto& conversions = conversions_by_target[target_index()]->of<From>();
  if constexpr (std::is_same_v<To, double>)
    conversions.to_double(in, out, count);
  else if constexpr (std::is_same_v<To, std::int32_t>)
    conversions.to_int32(in, out, count);
  else
    conversions.to_int64(in, out, count);
}

}  // namespace arrayfold
