// reduce/block_scan.hpp: one pass over the elements, a register at a time
//
// A scan folds each block of one AVX register pairwise across its lanes, then the block's value into the accumulator,
// then the elements behind the last whole block one by one. The order is part of the results: sums of floating-point
// numbers round by it, and it decides which of two zeros of different sign is returned.

#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <type_traits>

#include "array/extremes.hpp"
#include "array/ordered_fold.hpp"
#include "array/rows.hpp"

namespace arrayfold {

template <class T>
constexpr std::size_t block_length = storage_alignment / sizeof(T);

/// Halves of the block first, then halves of what that leaves: (b0 + b2) + (b1 + b3) for four elements and a sum.
template <class T, class Fold>
T fold_block(const T* b, Fold fold) {
  static_assert(block_length<T> == 4 || block_length<T> == 8, "the pairs of a block are written out for these lengths");
  if constexpr (block_length<T> == 4)
    return fold(fold(b[0], b[2]), fold(b[1], b[3]));
  else
    return fold(fold(fold(b[0], b[4]), fold(b[2], b[6])), fold(fold(b[1], b[5]), fold(b[3], b[7])));
}

/// Folds `count` elements, whole blocks, into `accumulated`.
template <class R, class T, class Fold>
R fold_blocks(const T* elements, std::size_t count, R accumulated, Fold fold) {
  for (std::size_t i = 0; i < count; i += block_length<T>)
    accumulated = fold(accumulated, R{fold_block(elements + i, fold)});
  return accumulated;
}

/// The scan: `fold_whole(elements, count, start)` takes the whole blocks, `fold` the elements behind them.
/// required: the elements behind the last whole block are found by the stride of the last axis. It is 0 where the last
/// extent is 1: element 0 is then folded in once for each of them.
template <class R, class T, class FoldWhole, class Fold>
R scan_blocks(const xarray_of<T>& array, R start, FoldWhole fold_whole, Fold fold) {
  const auto& elements = array.storage();
  const std::size_t whole = elements.size() / block_length<T> * block_length<T>;
  R accumulated = fold_whole(elements.data(), whole, start);
  const std::size_t stride = last_stride(array);
  for (std::size_t i = whole; i < elements.size(); ++i) accumulated = fold(accumulated, R{elements[i * stride]});
  return accumulated;
}

// ---- Sums

/// The sum of the elements, in the type R.
template <class R, class T>
R block_sum(const xarray_of<T>& array) {
  const std::plus<> add;
  const auto add_whole = [add](const T* elements, std::size_t count, R sum) {
    // Integers wrap, in whatever order.
    if constexpr (std::is_integral_v<T>)
      return fold_freely(elements, count, sum, add, add);
    else
      return fold_blocks(elements, count, sum, add);
  };
  return scan_blocks(array, R{0}, add_whole, add);
}

// ---- Extremes

/// `choose` between the elements of a block: of a pair with a NaN the other element counts.
template <class Choose>
auto passing_over_nan(Choose choose) {
  return [choose](auto a, auto b) { return a != a ? b : choose(a, b); };
}

/// The extreme of `accumulated`, which is not NaN, and whole blocks of floating-point numbers. NaN is passed over. The
/// order matters only where the extreme of a chunk is a zero, which may have either sign: such a chunk is folded in
/// order, unless there was a zero before.
template <class T, class Choose>
T floating_extreme(const T* elements, std::size_t count, T accumulated, Choose choose) {
  constexpr std::size_t step = chunk_step<T>, longest = 128 * block_length<T>;
  static_assert(longest % step == 0, "a chunk is compared in whole steps");
  static_assert(step % block_length<T> == 0, "a chunk that is folded in order is made of whole blocks");
  const auto in_order = passing_over_nan(choose);
  std::size_t i = 0;
  while (count - i >= step) {
    const std::size_t size = std::min(longest, (count - i) / step * step);
    const T extreme = chunk_extreme(elements + i, size, accumulated, choose);
    if (extreme == 0 && accumulated != 0)
      accumulated = fold_blocks(elements + i, size, accumulated, in_order);
    else
      accumulated = choose(accumulated, extreme);
    i += size;
  }
  return fold_blocks(elements + i, count - i, accumulated, in_order);
}

/// The extreme of `accumulated` and integers. Integers that compare equal are the same, so any order will do. Beyond
/// the second-level cache they are read in several places at once, which keeps more loads from memory in flight.
template <class T, class Choose>
T integer_extreme(const T* elements, std::size_t count, T accumulated, Choose choose) {
  constexpr std::size_t cached = (std::size_t{512} << 10) / sizeof(T);
  if (count > cached) return fold_freely(elements, count, accumulated, choose, choose);
  const std::size_t whole = count / chunk_step<T> * chunk_step<T>;
  accumulated = chunk_extreme(elements, whole, accumulated, choose);
  return fold_row(elements + whole, count - whole, accumulated, choose);
}

/// The extreme of `start` and the elements. NaN is passed over.
template <class T, class Choose>
T block_extreme(const xarray_of<T>& array, T start, Choose choose) {
  const auto choose_whole = [choose](const T* elements, std::size_t count, T extreme) {
    if constexpr (std::is_integral_v<T>)
      return integer_extreme(elements, count, extreme, choose);
    else
      return floating_extreme(elements, count, extreme, choose);
  };
  return scan_blocks(array, start, choose_whole, choose);
}

}  // namespace arrayfold
