// order/sorting.cpp: sorting one run of elements

#include "order/sorting.hpp"

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>
#include <type_traits>

#include <hwy/contrib/sort/vqsort.h>

#include "array/scratch.hpp"

namespace arrayfold {
namespace {

// Below this the fixed cost of the vectorised sort is larger than its gain.
constexpr std::size_t least_for_vectors = 256;

/// Are elements that compare equal the same in every bit, and all comparable?
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

// Reals are sorted in their place as the integers that their bits are once those of negative numbers are turned over.
// The vectorised sort for reals loses elements beside an infinity.
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

// In twice the width, whose sort is several times as fast.
void sort_by_vectors(std::int32_t* elements, std::size_t count) {
  const Scratch<std::int64_t> wide(count);
  std::copy_n(elements, count, wide.data());
  sort_by_vectors(wide.data(), count);
  for (std::size_t i = 0; i < count; ++i) elements[i] = static_cast<std::int32_t>(wide[i]);
}

template <class T>
void sort_elements(T* elements, std::size_t count) {
  if (count >= least_for_vectors && totally_ordered(elements, count))
    sort_by_vectors(elements, count);
  else
    std::sort(elements, elements + count);
}

// ---- Positions
//
// For the vectorised sort an element and its position are one unsigned number, the element above: numbers are ordered
// as the elements are, and equal elements by position.

constexpr std::uint64_t sign_bit = std::uint64_t{1} << 63;

std::uint64_t key_of(std::int32_t x) { return static_cast<std::uint32_t>(x) ^ (std::uint32_t{1} << 31); }
std::uint64_t key_of(std::int64_t x) { return static_cast<std::uint64_t>(x) ^ sign_bit; }
std::uint64_t key_of(double x) {
  x += 0.0;  // zeros of both signs are equal
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  return bits ^ ((bits & sign_bit) != 0 ? ~std::uint64_t{0} : sign_bit);
}

/// `pair(key, position)` makes the number, `position(number)` takes it apart.
template <class Number, class T, class Pair, class Position>
void positions_by_vectors(const T* elements, std::size_t count, std::int32_t* positions, Pair pair, Position position) {
  const Scratch<Number> numbers(count);
  for (std::size_t i = 0; i < count; ++i) numbers[i] = pair(key_of(elements[i]), i);
  hwy::Sorter()(numbers.data(), count, hwy::SortAscending());
  for (std::size_t i = 0; i < count; ++i) positions[i] = static_cast<std::int32_t>(position(numbers[i]));
}

template <class T>
void positions_by_vectors(const T* elements, std::size_t count, std::int32_t* positions) {
  // Two times 32 bits are enough for 32-bit integers in any run of less than 16 GiB.
  if (sizeof(T) == 4 && count <= std::numeric_limits<std::uint32_t>::max())
    return positions_by_vectors<std::uint64_t>(
        elements, count, positions, [](std::uint64_t key, std::size_t i) { return key << 32 | i; },
        [](std::uint64_t number) { return number; });
  positions_by_vectors<hwy::uint128_t>(
      elements, count, positions,
      [](std::uint64_t key, std::size_t i) {
        return hwy::uint128_t{i, key};
      },
      [](const hwy::uint128_t& number) { return number.lo; });
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
  if (count >= least_for_vectors && !has_nan(elements, count)) return positions_by_vectors(elements, count, positions);
  if (count <= std::size_t{std::numeric_limits<std::int32_t>::max()})
    return positions_by_comparison(elements, count, positions);
  const Scratch<std::uint64_t> wide(count);
  positions_by_comparison(elements, count, wide.data());
  for (std::size_t i = 0; i < count; ++i) positions[i] = static_cast<std::int32_t>(wide[i]);
}

}  // namespace

void sort_run(double* elements, std::size_t count) { sort_elements(elements, count); }
void sort_run(float* elements, std::size_t count) { std::sort(elements, elements + count); }
void sort_run(std::int32_t* elements, std::size_t count) { sort_elements(elements, count); }
void sort_run(std::int64_t* elements, std::size_t count) { sort_elements(elements, count); }

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
