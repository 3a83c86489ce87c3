// reduce/median.hpp: the element in the middle of all
//
// The elements are partitioned at the middle, as the array library does. A long array needs no partition as a whole: a
// sample gives two values that almost surely bracket the median, and one pass counts the elements around the bracket
// and gathers those inside it; only the gathered ones are partitioned. The whole array is partitioned where the
// partition's own arrangement could show in the result, with NaN or with zeros of both signs, and where the sample
// misled.

#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <type_traits>

#include "array/scratch.hpp"
#include "array/storage.hpp"
#include "kernels/brackets.hpp"

namespace arrayfold {

/// The elements of ranks (n - 1) / 2 and n / 2: one and the same where the count is odd.
template <class T>
struct Middle {
  T low;
  T high;
};

/// The ranks around the middle of `count` elements.
struct MiddleRanks {
  std::size_t low;
  std::size_t high;
};
constexpr MiddleRanks middle_ranks(std::size_t count) { return {(count - 1) / 2, count / 2}; }

/// Partitions at the higher rank first, then the elements before it at the lower one. NaN violates the ordering that
/// std::nth_element requires; libstdc++ does not read out of bounds for it.
template <class T>
Middle<T> partition_middle(T* elements, std::size_t count, const MiddleRanks& ranks) {
  std::nth_element(elements, elements + ranks.high, elements + count);
  if (ranks.low != ranks.high) std::nth_element(elements, elements + ranks.low, elements + ranks.high);
  return {elements[ranks.low], elements[ranks.high]};
}

template <class T>
Middle<T> middle_of_copy(const T* elements, std::size_t count) {
  const Scratch<T> copy(count);
  std::copy_n(elements, count, copy.data());
  return partition_middle(copy.data(), count, middle_ranks(count));
}

// ---- Long arrays

/// Two elements between which the middle is expected, by a sample of evenly strided elements: about three standard
/// errors of the sample's middle on both sides. The sample's size makes the work on the sample about the same as the
/// work inside the bracket. Nothing when there is a NaN in the sample.
template <class T>
std::optional<Bracket<T>> sampled_bracket(const T* elements, std::size_t count) {
  const double root = std::cbrt(static_cast<double>(count));
  const auto size = static_cast<std::size_t>(1.5 * root * root);
  const Scratch<T> sample(size);
  for (std::size_t i = 0; i < size; ++i) sample[i] = elements[i * (count / size)];
  if (std::any_of(sample.data(), sample.data() + size, [](T x) { return x != x; })) return std::nullopt;
  const auto reach = static_cast<std::size_t>(1.5 * std::sqrt(static_cast<double>(size)));
  const auto [low, high] = partition_middle(sample.data(), size, {size / 2 - reach, size / 2 + reach});
  return Bracket<T>{low, high};
}

/// The middle by a bracket; nothing where the whole has to be partitioned.
template <class T>
std::optional<Middle<T>> middle_in_bracket(const T* elements, std::size_t count) {
  constexpr std::size_t block = 1024;
  const auto bracket = sampled_bracket(elements, count);
  if (!bracket) return std::nullopt;
  const std::size_t room = count / 2 + block;
  const Scratch<T> gathered(room);
  T* const inside = gathered.data();
  BracketCounts counts;
  const auto& loops = bracket_loops<T>();
  for (std::size_t first = 0; first < count; first += block) {
    if (room - counts.inside < block) return std::nullopt;
    loops.count(elements + first, std::min(block, count - first), *bracket, counts, inside + counts.inside);
  }
  const MiddleRanks ranks = middle_ranks(count);
  if (counts.any_nan || ranks.low < counts.below || ranks.high >= counts.at_most_high) return std::nullopt;

  std::size_t unsorted = counts.inside;
  const auto at = [&](std::size_t rank) {
    if (rank < counts.at_most_low) return bracket->low;
    if (rank >= counts.at_most_low + counts.inside) return bracket->high;
    rank -= counts.at_most_low;
    std::nth_element(inside, inside + rank, inside + unsorted);
    unsorted = rank + 1;
    return inside[rank];
  };
  Middle<T> middle;
  middle.high = at(ranks.high);
  middle.low = ranks.low == ranks.high ? middle.high : at(ranks.low);
  if constexpr (std::is_floating_point_v<T>)
    if (middle.low == 0 && middle.high == 0 && bracket_loops<T>().any_negative_zero(elements, count))
      return std::nullopt;
  return middle;
}

/// The median in the element's own type: the middle element, or the half of the sum of the two around the middle.
/// Integers wrap in the sum and are halved toward zero. Without elements it is NaN, and 0 for integers.
template <class T>
T median_of(const xarray_of<T>& array) {
  constexpr std::size_t minimum_for_bracket = 512;
  const auto& elements = array.storage();
  const std::size_t count = elements.size();
  if (count == 0) return std::numeric_limits<T>::quiet_NaN();  // 0 for integers
  std::optional<Middle<T>> middle;
  if (count >= minimum_for_bracket) middle = middle_in_bracket(elements.data(), count);
  if (!middle) middle = middle_of_copy(elements.data(), count);
  return count % 2 != 0 ? middle->low : static_cast<T>(static_cast<T>(middle->low + middle->high) / T{2});
}

}  // namespace arrayfold
