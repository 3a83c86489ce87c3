// kernels/sort_keys.hpp: elements as integers that sort like them
//
// The vectorised sort takes integers. For a sort of positions an element and its position are packed into one unsigned
// number, the element's key in the upper bits: the numbers are ordered like the elements, and equal elements by
// position. Keys are unsigned and ordered like the elements; zeros of both signs have one key, NaN has none.

#pragma once

#include <cstddef>
#include <cstdint>

#include <hwy/base.h>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"

namespace arrayfold {

bool has_nan(const double* elements, std::size_t count);

/// True when all elements are comparable and those that compare equal have the same bits: neither NaN nor -0.
bool in_total_order(const double* elements, std::size_t count);

/// Inverts the value bits of negative numbers. As signed integers the bits are then ordered like the numbers; the
/// second turn brings the numbers back.
void turn_negatives(double* elements, std::size_t count);

/// The smallest and the largest key of some elements.
struct KeyRange {
  std::uint64_t low;
  std::uint64_t high;
};

/// How a key and a position share 64 bits: key - low, cut by its lowest `left_out` bits, above `position_width` bits.
struct KeyPacking {
  std::uint64_t low;
  int left_out;
  int position_width;

  std::uint64_t position_in(std::uint64_t number) const { return number & ((std::uint64_t{1} << position_width) - 1); }
};

template <class T>
struct SortKeys {
  /// Of at least one element.
  KeyRange (*range)(const T* elements, std::size_t count);
  void (*pack)(const T* elements, std::size_t count, const KeyPacking& packing, std::uint64_t* numbers);
  /// Into 128 bits, which hold the whole key.
  void (*pack_whole)(const T* elements, std::size_t count, hwy::uint128_t* numbers);
};

extern const ForElementTypes<SortKeys>* const sort_keys_by_target[];

/// For double, std::int32_t and std::int64_t.
template <class T>
const SortKeys<T>& sort_keys() {
  return sort_keys_by_target[target_index()]->of<T>();
}

/// The positions in packed numbers, each cut to its low 32 bits.
void unpack_positions(const std::uint64_t* numbers, std::size_t count, const KeyPacking& packing,
                      std::int32_t* positions);

}  // namespace arrayfold
