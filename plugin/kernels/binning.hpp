// kernels/binning.hpp: elements counted in bins, or placed among edges

#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"

namespace arrayfold {

/// At least one bin, all of equal width, from `low` to `high`.
struct EqualBins {
  double low;
  double high;
  std::size_t count;
};

/// The loop of `count_by_bin`. Null for integers.
template <class T>
struct BinCounts {
  void (*add)(const T* elements, std::size_t size, const EqualBins& bins, std::int64_t times, std::int64_t* counts);
};

extern const ForElementTypes<BinCounts>* const bin_counts_by_target[];

/// Adds `times` to the count of each element's bin; the last bin includes the upper bound. One more count follows the
/// bins: that of NaN and of the elements outside the bounds. For double and float.
template <class T>
void count_by_bin(const T* elements, std::size_t size, const EqualBins& bins, std::int64_t times,
                  std::int64_t* counts) {
  bin_counts_by_target[target_index()]->of<T>().add(elements, size, bins, times, counts);
}

/// The place of each of `size` elements among `count` edges, at least one, that ascend: how many of them come before
/// the first one greater than the element, compared in the type common to both.
template <class T, class Edge>
using Placing = void (*)(const T* elements, std::size_t size, const Edge* edges, std::size_t count, double* places);

template <class Edge>
struct Placings {
  Placing<double, Edge> doubles;
  Placing<float, Edge> floats;
};

extern const ForElementTypes<Placings>* const placings_by_target[];

/// For double, float, std::int32_t and std::int64_t.
template <class Edge>
const Placings<Edge>& placings() {
  return placings_by_target[target_index()]->of<Edge>();
}

}  // namespace arrayfold
