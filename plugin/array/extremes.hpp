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

/// The second of two where it beats the first, which stays with ties and NaN. Lane by lane for registers, whose
/// instruction gives its second operand then; for 64-bit integers there is none.
struct Smaller {
  template <class T>
  static bool beats(T b, T a) {
    return b < a;
  }
  template <class T>
  T operator()(const T& a, const T& b) const {
    if constexpr (std::is_same_v<T, xsimd::batch<std::int64_t>>)
      return xsimd::select(b < a, b, a);
    else if constexpr (is_batch<T>)
      return xsimd::min(b, a);
    else
      return b < a ? b : a;
  }
};
struct Larger {
  template <class T>
  static bool beats(T b, T a) {
    return a < b;
  }
  template <class T>
  T operator()(const T& a, const T& b) const {
    if constexpr (is_batch<T>)
      return xsimd::max(b, a);
    else
      return a < b ? b : a;
  }
};

/// What `choose` makes of `start` and a chunk of elements in no particular order: a value equal to their extreme. `nan`
/// tells whether there was one among the elements.
template <class T>
struct ChunkExtreme {
  T value;
  bool nan;
};

/// Chunks are whole steps, of four registers each.
template <class T>
constexpr std::size_t chunk_step = 4 * xsimd::batch<T>::size;

template <class T, class Choose>
ChunkExtreme<T> chunk_extreme(const T* elements, std::size_t count, T start, Choose choose) {
  using Register = xsimd::batch<T>;
  constexpr std::size_t lanes = Register::size;
  Register a(start), b(start), c(start), d(start);
  // The `!=` of registers is false where both are NaN.
  auto nan = xsimd::isnan(a);
  for (std::size_t i = 0; i < count; i += chunk_step<T>) {
    const auto e = Register::load_unaligned(elements + i), f = Register::load_unaligned(elements + i + lanes);
    const auto g = Register::load_unaligned(elements + i + 2 * lanes);
    const auto h = Register::load_unaligned(elements + i + 3 * lanes);
    if constexpr (std::is_floating_point_v<T>)
      nan = nan | xsimd::isnan(e) | xsimd::isnan(f) | xsimd::isnan(g) | xsimd::isnan(h);
    a = choose(a, e), b = choose(b, f), c = choose(c, g), d = choose(d, h);
  }
  T folded[lanes];
  choose(choose(a, b), choose(c, d)).store_unaligned(folded);
  T value = start;
  for (const T lane : folded) value = choose(value, lane);
  return {value, xsimd::any(nan)};
}

/// The first of some elements that equals `value`, which is among them. They are whole steps.
template <class T>
const T* find_in_chunk(const T* elements, T value) {
  using Register = xsimd::batch<T>;
  constexpr std::size_t lanes = Register::size;
  const Register wanted(value);
  const auto at = [&](std::size_t lane) { return Register::load_unaligned(elements + lane) == wanted; };
  while (!xsimd::any(at(0) | at(lanes) | at(2 * lanes) | at(3 * lanes))) elements += chunk_step<T>;
  return std::find(elements, elements + chunk_step<T>, value);
}

/// The first of the elements' extremes that beats `start`; null when none does.
template <class T, class Choose>
const T* first_extreme(const T* elements, std::size_t count, T start, Choose choose) {
  constexpr std::size_t longest = 2048;
  const T* found = nullptr;
  std::size_t i = 0;
  // Chunk by chunk; a chunk is looked through only when something in it beats all before.
  while (count - i >= chunk_step<T>) {
    const std::size_t size = std::min(longest, (count - i) / chunk_step<T> * chunk_step<T>);
    const T value = chunk_extreme(elements + i, size, start, choose).value;
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
