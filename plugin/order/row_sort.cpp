// order/row_sort.cpp: sorting one row of elements

#include "order/row_sort.hpp"

#include <algorithm>
#include <limits>
#include <numeric>
#include <type_traits>
#include <utility>

#include <hwy/contrib/sort/vqsort.h>

#include "array/scratch.hpp"
#include "kernels/conversion.hpp"
#include "kernels/dispatch.hpp"
#include "kernels/sort_keys.hpp"

namespace arrayfold {
namespace {

// For fewer elements the fixed cost of the vectorised sort exceeds its gain.
constexpr std::size_t minimum_for_vectors = 256;

/// Sorts integers of 64 or 128 bits, of which equal ones have the same bits. Highway's sort needs vector instructions:
/// without them its sort of 128 bits ends the process.
template <class Number>
void sort_numbers(Number* numbers, std::size_t count) {
  if (has_vectors())
    hwy::Sorter()(numbers, count, hwy::SortAscending());
  else
    std::sort(numbers, numbers + count);
}

void sort_by_vectors(std::int64_t* elements, std::size_t count) { sort_numbers(elements, count); }

// Doubles are sorted in place as integers. The vectorised sort for doubles itself loses elements beside an infinity.
void sort_by_vectors(double* elements, std::size_t count) {
  static_assert(sizeof(double) == sizeof(std::int64_t), "the bits of a double are sorted as an integer");
  turn_negatives(elements, count);
  sort_by_vectors(static_cast<std::int64_t*>(static_cast<void*>(elements)), count);
  turn_negatives(elements, count);
}

constexpr int digit_width = 11;
constexpr std::size_t digit_values = std::size_t{1} << digit_width;

/// Moves the elements to `out` in the order of one digit of `element - low`, the one above `shift` bits. Elements with
/// the same digit keep their order.
void move_by_digit(const std::int32_t* __restrict elements, std::size_t count, std::uint32_t low, int shift,
                   std::int32_t* __restrict out) {
  const auto digit_of = [=](std::int32_t element) {
    return (static_cast<std::uint32_t>(element) - low) >> shift & (digit_values - 1);
  };
  std::uint32_t places[digit_values] = {};
  for (std::size_t i = 0; i < count; ++i) ++places[digit_of(elements[i])];
  std::uint32_t first = 0;
  for (std::uint32_t& place : places) first += std::exchange(place, first);
  for (std::size_t i = 0; i < count; ++i) out[places[digit_of(elements[i])]++] = elements[i];
}

/// Sorts many elements that differ in two digits at most. False for others, which Highway sorts.
bool sorted_by_digits(std::int32_t* elements, std::size_t count) {
  constexpr std::size_t fewest = 4096, most = std::numeric_limits<std::uint32_t>::max();
  if (count < fewest || count > most) return false;
  const auto [low, high] = sort_keys<std::int32_t>().range(elements, count);
  if ((high - low) >> (2 * digit_width) != 0) return false;
  const auto lowest = static_cast<std::uint32_t>(low) ^ 0x80000000u;  // keys have the sign bit inverted
  const Scratch<std::int32_t> scratch(count);
  move_by_digit(elements, count, lowest, 0, scratch.data());
  move_by_digit(scratch.data(), count, lowest, digit_width, elements);
  return true;
}

// Others are sorted in twice the width: the 64-bit sort is several times as fast.
void sort_by_vectors(std::int32_t* elements, std::size_t count) {
  if (sorted_by_digits(elements, count)) return;
  const Scratch<std::int64_t> wide(count);
  convert(elements, wide.data(), count);
  sort_by_vectors(wide.data(), count);
  convert(wide.data(), elements, count);
}

/// True when a sort by vectors gives the bits that std::sort gives. Integers always are in such an order.
template <class T>
bool sorts_by_vectors(const T* elements, std::size_t count) {
  if (count < minimum_for_vectors) return false;
  if constexpr (std::is_integral_v<T>)
    return true;
  else
    return in_total_order(elements, count);
}

template <class T>
void sort_elements(T* elements, std::size_t count) {
  if (!sorts_by_vectors(elements, count))
    std::sort(elements, elements + count);
  else if (!std::is_sorted(elements, elements + count))  // the vectorised sort takes as long for sorted elements
    sort_by_vectors(elements, count);
}

// ---- Positions

/// `numbers` is sorted by its upper bits only. Sorts each group with equal upper bits by `before`. False if a group is
/// too large; the order of the numbers is then undefined.
template <class Alike, class Before>
bool sort_groups(std::uint64_t* numbers, std::size_t count, Alike alike, Before before) {
  constexpr std::size_t most = 256;
  for (std::size_t first = 0, end; first < count; first = end) {
    bool sorted = true;
    for (end = first + 1; end < count && alike(numbers[first], numbers[end]); ++end)
      sorted &= before(numbers[end - 1], numbers[end]);
    if (sorted) continue;
    if (end - first > most) return false;
    std::sort(numbers + first, numbers + end, before);
  }
  return true;
}

/// Sorts 64-bit numbers. False if too many elements differ only in the bits that were left out.
template <class T>
bool positions_by_short_numbers(const T* elements, std::size_t count, std::int32_t* positions) {
  const auto width_of = [](std::uint64_t x) { return x == 0 ? 0 : 64 - __builtin_clzll(x); };
  const auto& keys = sort_keys<T>();
  const auto [low, high] = keys.range(elements, count);
  const int position_width = width_of(count - 1);
  const KeyPacking packing{low, std::max(0, width_of(high - low) + position_width - 64), position_width};

  const Scratch<std::uint64_t> numbers(count);
  keys.pack(elements, count, packing, numbers.data());
  sort_numbers(numbers.data(), count);
  const auto alike = [&](std::uint64_t a, std::uint64_t b) { return (a ^ b) >> position_width == 0; };
  const auto before = [&](std::uint64_t a, std::uint64_t b) {
    const T x = elements[packing.position_in(a)], y = elements[packing.position_in(b)];
    return x < y || (x == y && a < b);
  };
  if (packing.left_out > 0 && !sort_groups(numbers.data(), count, alike, before)) return false;
  unpack_positions(numbers.data(), count, packing, positions);
  return true;
}

/// Sorts 128-bit numbers, which hold all bits of the element.
template <class T>
void positions_by_long_numbers(const T* elements, std::size_t count, std::int32_t* positions) {
  const Scratch<hwy::uint128_t> numbers(count);
  sort_keys<T>().pack_whole(elements, count, numbers.data());
  sort_numbers(numbers.data(), count);
  for (std::size_t i = 0; i < count; ++i) positions[i] = static_cast<std::int32_t>(numbers[i].lo);
}

template <class T, class Position>
void positions_by_comparison(const T* elements, std::size_t count, Position* positions) {
  std::iota(positions, positions + count, Position{0});
  std::sort(positions, positions + count, [=](Position a, Position b) { return elements[a] < elements[b]; });
}

/// Integers, and doubles without NaN, have keys.
template <class T>
bool have_keys(const T* elements, std::size_t count) {
  if constexpr (std::is_integral_v<T>)
    return true;
  else
    return !has_nan(elements, count);
}

template <class T>
void order_positions(const T* elements, std::size_t count, std::int32_t* positions) {
  if (count >= minimum_for_vectors && have_keys(elements, count)) {
    if (std::is_sorted(elements, elements + count)) return std::iota(positions, positions + count, 0);
    if (!positions_by_short_numbers(elements, count, positions)) positions_by_long_numbers(elements, count, positions);
    return;
  }
  if (count <= std::size_t{std::numeric_limits<std::int32_t>::max()})
    return positions_by_comparison(elements, count, positions);
  const Scratch<std::uint64_t> wide(count);
  positions_by_comparison(elements, count, wide.data());
  for (std::size_t i = 0; i < count; ++i) positions[i] = static_cast<std::int32_t>(wide[i]);
}

}  // namespace

void sort_row(double* elements, std::size_t count) { sort_elements(elements, count); }
void sort_row(float* elements, std::size_t count) { std::sort(elements, elements + count); }
void sort_row(std::int32_t* elements, std::size_t count) { sort_elements(elements, count); }
void sort_row(std::int64_t* elements, std::size_t count) { sort_elements(elements, count); }

void sort_positions(const double* elements, std::size_t count, std::int32_t* positions) {
  order_positions(elements, count, positions);
}
void sort_positions(const float* elements, std::size_t count, std::int32_t* positions) {
  positions_by_comparison(elements, count, positions);
}
void sort_positions(const std::int32_t* elements, std::size_t count, std::int32_t* positions) {
  order_positions(elements, count, positions);
}
void sort_positions(const std::int64_t* elements, std::size_t count, std::int32_t* positions) {
  order_positions(elements, count, positions);
}

}  // namespace arrayfold
