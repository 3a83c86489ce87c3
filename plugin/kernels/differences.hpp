// kernels/differences.hpp: elements minus their neighbours

#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"

namespace arrayfold {

template <class T>
struct Differences {
  /// Of `count` consecutive rows of `length` elements, at least one: each element but the first, minus the one before
  /// it. The results are consecutive rows, too, one element shorter. Integers wrap.
  void (*of_rows)(const T* rows, T* out, std::size_t length, std::size_t count);
};

/// For double, float, std::int32_t and std::int64_t for each target.
extern const ForElementTypes<Differences>* const differences_by_target[];

/// For the processor at hand.
template <class T>
const Differences<T>& differences() {
  return differences_by_target[target_index()]->of<T>();
}

}  // namespace arrayfold
