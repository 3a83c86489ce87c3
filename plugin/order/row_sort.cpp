// order/row_sort.cpp: sorting one row of elements

#include "order/row_sort.hpp"

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>
#include <type_traits>

#include <hwy/contrib/sort/vqsort.h>

#include "array/scratch.hpp"

namespace arrayfold {
namespace {

// For fewer elements the fixed cost of the vectorised sort exceeds its gain.
constexpr std::size_t minimum_for_vectors = 256;

/// True when all elements are comparable and those that compare equal have the same bits.
template <class Integer>
bool totally_ordered(const Integer*, std::size_t) {
  return true;
}
bool totally_ordered(const double* elements, std::size_t count) {
  constexpr std::uint64_t negative_zero = std::uint64_t{1} << 63;
  std::uint64_t found = 0;
  for (std::size_t i = 0; i < count; ++i) {
    std::uint64_t bits;
    std::memcpy(&bits, elements + i, sizeof bits);
    found |= static_cast<std::uint64_t>(elements[i] != elements[i]) | static_cast<std::uint64_t>(bits == negative_zero);
  }
  return found == 0;
}

void sort_by_vectors(std::int64_t* elements, std::size_t count) {
  hwy::Sorter()(elements, count, hwy::SortAscending());
}

// Doubles are sorted in place as integers: with the value bits of negative numbers inverted, their bits order like the
// numbers. The vectorised sort for doubles itself loses elements beside an infinity.
void sort_by_vectors(double* elements, std::size_t count) {
  static_assert(sizeof(double) == sizeof(std::int64_t));
  const auto turn_negatives = [=] {
    for (std::size_t i = 0; i < count; ++i) {
      std::int64_t bits;
      std::memcpy(&bits, elements + i, sizeof bits);
      bits ^= bits < 0 ? std::numeric_limits<std::int64_t>::max() : 0;
      std::memcpy(elements + i, &bits, sizeof bits);
    }
  };
  turn_negatives();
  sort_by_vectors(static_cast<std::int64_t*>(static_cast<void*>(elements)), count);
  turn_negatives();
}

// Sorted in twice the width: the 64-bit sort is several times as fast.
void sort_by_vectors(std::int32_t* elements, std::size_t count) {
  const Scratch<std::int64_t> wide(count);
  std::copy_n(elements, count, wide.data());
  sort_by_vectors(wide.data(), count);
  for (std::size_t i = 0; i < count; ++i) elements[i] = static_cast<std::int32_t>(wide[i]);
}

template <class T>
void sort_elements(T* elements, std::size_t count) {
  if (count >= minimum_for_vectors && totally_ordered(elements, count))
    sort_by_vectors(elements, count);
  else
    std::sort(elements, elements + count);
}

// ---- Positions
//
// For the vectorised sort an element and its position are packed into one unsigned number, the element in the upper
// bits: the numbers are ordered like the elements, and equal elements by position.

constexpr std::uint64_t sign_bit = std::uint64_t{1} << 63;

std::uint64_t key_of(std::int32_t x) { return static_cast<std::uint32_t>(x) ^ (std::uint32_t{1} << 31); }
std::uint64_t key_of(std::int64_t x) { return static_cast<std::uint64_t>(x) ^ sign_bit; }
std::uint64_t key_of(double x) {
  x += 0.0;  // zeros of both signs are equal
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  return bits ^ ((bits & sign_bit) != 0 ? ~std::uint64_t{0} : sign_bit);
}

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

/// Sorts 64-bit numbers. Key = (element - smallest, cut to its high bits) above, position below, in as many bits as the
/// largest position needs. False if too many elements differ only in the bits that were cut.
template <class T>
bool positions_by_short_numbers(const T* elements, std::size_t count, std::int32_t* positions) {
  const auto width_of = [](std::uint64_t x) { return x == 0 ? 0 : 64 - __builtin_clzll(x); };
  std::uint64_t low = key_of(elements[0]), high = low;
  for (std::size_t i = 1; i < count; ++i) {
    const std::uint64_t key = key_of(elements[i]);
    low = std::min(low, key), high = std::max(high, key);
  }
  const int place_width = width_of(count - 1);
  const int left_out = std::max(0, width_of(high - low) + place_width - 64);
  const auto position = [=](std::uint64_t number) { return number & ((std::uint64_t{1} << place_width) - 1); };

  const Scratch<std::uint64_t> numbers(count);
  for (std::size_t i = 0; i < count; ++i) numbers[i] = (key_of(elements[i]) - low) >> left_out << place_width | i;
  hwy::Sorter()(numbers.data(), count, hwy::SortAscending());
  const auto alike = [=](std::uint64_t a, std::uint64_t b) { return (a ^ b) >> place_width == 0; };
  const auto before = [=](std::uint64_t a, std::uint64_t b) {
    const std::uint64_t key_a = key_of(elements[position(a)]), key_b = key_of(elements[position(b)]);
    return key_a != key_b ? key_a < key_b : a < b;
  };
  if (left_out > 0 && !sort_groups(numbers.data(), count, alike, before)) return false;
  for (std::size_t i = 0; i < count; ++i) positions[i] = static_cast<std::int32_t>(position(numbers[i]));
  return true;
}

/// Sorts 128-bit numbers, which hold all bits of the element.
template <class T>
void positions_by_long_numbers(const T* elements, std::size_t count, std::int32_t* positions) {
  const Scratch<hwy::uint128_t> numbers(count);
  for (std::size_t i = 0; i < count; ++i) numbers[i] = {i, key_of(elements[i])};
  hwy::Sorter()(numbers.data(), count, hwy::SortAscending());
  for (std::size_t i = 0; i < count; ++i) positions[i] = static_cast<std::int32_t>(numbers[i].lo);
}

template <class T, class Position>
void positions_by_comparison(const T* elements, std::size_t count, Position* positions) {
  std::iota(positions, positions + count, Position{0});
  std::sort(positions, positions + count, [=](Position a, Position b) { return elements[a] < elements[b]; });
}

template <class T>
bool has_nan(const T* elements, std::size_t count) {
  bool found = false;
  if constexpr (std::is_floating_point_v<T>)
    for (std::size_t i = 0; i < count; ++i) found |= elements[i] != elements[i];
  return found;
}

template <class T>
void order_positions(const T* elements, std::size_t count, std::int32_t* positions) {
  if (count >= minimum_for_vectors && !has_nan(elements, count)) {
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
