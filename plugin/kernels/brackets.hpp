// kernels/brackets.hpp: elements inside and around a bracket, for the search for the element in the middle
//
// The loops are compiled for each processor target; `bracket_loops` gives those for the processor at hand.

#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"

namespace arrayfold {

/// Two numbers, the higher one not below the lower one. Neither is NaN.
template <class T>
struct Bracket {
  T low;
  T high;
};

/// The numbers of elements around a bracket.
struct BracketCounts {
  std::size_t below = 0;
  std::size_t at_most_low = 0;
  std::size_t inside = 0;  // strictly: these are gathered
  std::size_t at_most_high = 0;
  bool any_nan = false;
};

template <class T>
struct BracketLoops {
  /// Adds elements to the counts. Those strictly inside the bracket are copied in their order to `gathered`, which has
  /// room for all of them and is undefined behind those copied.
  void (*count)(const T* elements, std::size_t count, const Bracket<T>& bracket, BracketCounts& counts, T* gathered);
  /// Whether there is a zero with a sign. Null for integers.
  bool (*any_negative_zero)(const T* elements, std::size_t count);
};

/// The loops for double, float, std::int32_t and std::int64_t for each target.
extern const ForElementTypes<BracketLoops>* const bracket_loops_by_target[];

/// For the processor at hand.
template <class T>
const BracketLoops<T>& bracket_loops() {
  return bracket_loops_by_target[target_index()]->of<T>();
}

}  // namespace arrayfold
