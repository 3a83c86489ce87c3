// array/extremes.hpp: the smallest and the largest of many elements
//
// The comparisons are strict: among equal elements, zeros of both signs included, the first one counts, and NaN neither
// beats anything nor is beaten.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "array/aligned_storage.hpp"

namespace arrayfold {

template <class T>
constexpr bool is_batch = false;
template <class T>
constexpr bool is_batch<xsimd::batch<T>> = true;

/// True where the instruction for the minimum of two registers returns its second operand for ties and NaN.
#ifdef __x86_64__
constexpr bool keeps_the_second = true;
#else
constexpr bool keeps_the_second = false;
#endif

/// Returns b if b < a, else a; so a wins ties and comparisons with NaN. On registers, lane by lane: on x86-64 `min(b,
/// a)` has the same rule, but there is no such instruction for 64-bit integers.
struct Smaller {
  template <class T>
  static bool beats(T b, T a) {
    return b < a;
  }
  template <class T>
  T operator()(const T& a, const T& b) const {
    if constexpr (is_batch<T> && (!keeps_the_second || std::is_same_v<T, xsimd::batch<std::int64_t>>))
      return xsimd::select(b < a, b, a);
    else if constexpr (is_batch<T>)
      return xsimd::min(b, a);
    else
      return b < a ? b : a;
  }
};
/// Returns b if b > a, else a, by the same rules.
struct Larger {
  template <class T>
  static bool beats(T b, T a) {
    return a < b;
  }
  template <class T>
  T operator()(const T& a, const T& b) const {
    if constexpr (is_batch<T> && !keeps_the_second)
      return xsimd::select(a < b, b, a);
    else if constexpr (is_batch<T>)
      return xsimd::max(b, a);
    else
      return a < b ? b : a;
  }
};

/// The elements of a chunk step: four registers. Chunks are a multiple of it.
template <class T>
constexpr std::size_t chunk_step = 4 * xsimd::batch<T>::size;

/// A value equal to the extreme of `start`, which is not NaN, and a chunk of elements. Which of several equal ones it
/// is, a zero of which sign for instance, is not defined.
template <class T, class Choose>
T chunk_extreme(const T* elements, std::size_t count, T start, Choose choose) {
  using Register = xsimd::batch<T>;
  constexpr std::size_t lanes = Register::size;
  Register a(start), b(start), c(start), d(start);
  for (std::size_t i = 0; i < count; i += chunk_step<T>) {
    const auto e = Register::load_unaligned(elements + i), f = Register::load_unaligned(elements + i + lanes);
    const auto g = Register::load_unaligned(elements + i + 2 * lanes);
    const auto h = Register::load_unaligned(elements + i + 3 * lanes);
    a = choose(a, e), b = choose(b, f), c = choose(c, g), d = choose(d, h);
  }
  T folded[lanes];
  choose(choose(a, b), choose(c, d)).store_unaligned(folded);
  T value = start;
  for (const T lane : folded) value = choose(value, lane);
  return value;
}

/// The first element equal to `value`. Requires: one exists, and the count is a multiple of `chunk_step`.
template <class T>
const T* find_in_chunk(const T* elements, T value) {
  using Register = xsimd::batch<T>;
  constexpr std::size_t lanes = Register::size;
  const Register wanted(value);
  const auto at = [&](std::size_t lane) { return Register::load_unaligned(elements + lane) == wanted; };
  while (!xsimd::any(at(0) | at(lanes) | at(2 * lanes) | at(3 * lanes))) elements += chunk_step<T>;
  return std::find(elements, elements + chunk_step<T>, value);
}

/// The first of the elements' extremes that beats `start`; null when none does. A `start` of NaN is never beaten.
template <class T, class Choose>
const T* first_extreme(const T* elements, std::size_t count, T start, Choose choose) {
  constexpr std::size_t longest = 2048;
  static_assert(longest % chunk_step<T> == 0, "a chunk is compared in whole steps");
  const T* found = nullptr;
  std::size_t i = 0;
  // Chunk by chunk; a chunk is searched only when something in it beats all before.
  while (count - i >= chunk_step<T>) {
    const std::size_t size = std::min(longest, (count - i) / chunk_step<T> * chunk_step<T>);
    const T value = chunk_extreme(elements + i, size, start, choose);
    if (choose.beats(value, start)) {
      found = find_in_chunk(elements + i, value);
      start = *found;
    }
    i += size;
  }
  for (; i < count; ++i)
    if (choose.beats(elements[i], start)) start = *(found = elements + i);
  return found;
}

}  // namespace arrayfold
