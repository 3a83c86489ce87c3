// kernels/extremes.cpp: the smallest and the largest element, for each processor target

#include "kernels/extremes.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/extremes.cpp"
#include <hwy/foreach_target.h>

#include <algorithm>
#include <type_traits>

#include "kernels/block_scan-inl.hpp"
#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

/// Returns b if it beats a, else a; so a wins ties and comparisons with NaN. On registers, lane by lane.
struct Smaller {
  template <class T>
  HWY_INLINE static bool beats(T b, T a) {
    return b < a;
  }
  template <class T>
  HWY_INLINE T operator()(T a, T b) const {
    return b < a ? b : a;
  }
  template <class D, class V>
  HWY_INLINE V operator()(D tag, V a, V b) const {
    return first_if_less(tag, b, a);
  }
};
struct Larger {
  template <class T>
  HWY_INLINE static bool beats(T b, T a) {
    return a < b;
  }
  template <class T>
  HWY_INLINE T operator()(T a, T b) const {
    return a < b ? b : a;
  }
  template <class D, class V>
  HWY_INLINE V operator()(D tag, V a, V b) const {
    return first_if_greater(tag, b, a);
  }
};

// ---- Positions

/// The first element equal to `value`. Requires: one exists.
template <class T>
const T* find(const T* elements, std::size_t count, T value) {
  const hn::ScalableTag<T> tag;
  constexpr std::size_t lanes = hn::MaxLanes(tag);
  const auto wanted = hn::Set(tag, value);
  const auto at = [=](std::size_t i) HWY_ATTR { return hn::Eq(hn::LoadU(tag, elements + i), wanted); };
  std::size_t i = 0;
  for (; count - i >= 4 * lanes; i += 4 * lanes) {
    const auto any = hn::Or(hn::Or(at(i), at(i + lanes)), hn::Or(at(i + 2 * lanes), at(i + 3 * lanes)));
    if (!hn::AllFalse(tag, any)) break;
  }
  for (; count - i >= lanes; i += lanes) {
    const std::intptr_t lane = hn::FindFirstTrue(tag, at(i));
    if (lane >= 0) return elements + i + lane;
  }
  // A loop of this target: the library's would be compiled for the baseline.
  while (!(elements[i] == value)) ++i;
  return elements + i;
}

/// Chunk by chunk; a chunk is searched only when something in it beats all before.
template <class Choose, class T>
const T* first_extreme(const T* elements, std::size_t count, T start) {
  constexpr std::size_t longest = 2048;
  if (start != start) return nullptr;
  const T* found = nullptr;
  for (std::size_t i = 0; i < count; i += longest) {
    const std::size_t size = std::min(longest, count - i);
    const T value = fold_freely<Choose, Reading::together>(elements + i, size, start);
    if (Choose::beats(value, start)) {
      found = find(elements + i, size, value);
      start = *found;
    }
  }
  return found;
}

// ---- Values

/// `Choose` between the elements of a block: of a pair with a NaN the other element counts.
template <class Choose>
struct PassingOverNan {
  template <class D, class V>
  HWY_INLINE V operator()(D tag, V a, V b) const {
    return hn::IfThenElse(hn::Eq(a, a), Choose()(tag, a, b), b);
  }
};

template <class Choose, class T>
HWY_NOINLINE T extreme_in_order(const T* elements, std::size_t whole, T accumulated) {
  return fold_blocks<PassingOverNan<Choose>>(elements, whole, accumulated, Choose());
}

/// The order matters only where the extreme of a chunk is a zero, which may have either sign: such a chunk is folded in
/// order, unless there was a zero before.
template <class Choose, class T>
HWY_INLINE T floating_extreme(const T* elements, std::size_t whole, T accumulated) {
  constexpr std::size_t longest = 128 * block_length<T>;
  for (std::size_t i = 0; i < whole; i += longest) {
    const std::size_t size = std::min(longest, whole - i);
    const T extreme = fold_freely<Choose, Reading::together>(elements + i, size, accumulated);
    if (extreme == 0 && accumulated != 0)
      accumulated = extreme_in_order<Choose>(elements + i, size, accumulated);
    else
      accumulated = Choose()(accumulated, extreme);
  }
  return accumulated;
}

/// Integers that compare equal are the same, so any order will do. Elements beyond the second-level cache are read in
/// several places at once.
template <class Choose, class T>
T integer_extreme(const T* elements, std::size_t whole, T accumulated) {
  constexpr std::size_t cached = (std::size_t{512} << 10) / sizeof(T);
  if (whole > cached) return fold_freely<Choose, Reading::in_quarters>(elements, whole, accumulated);
  return fold_freely<Choose, Reading::together>(elements, whole, accumulated);
}

template <class Choose, class T>
T extreme_by_blocks(const T* elements, std::size_t count, std::size_t stride, T start) {
  const auto choose_whole = [](const T* blocks, std::size_t whole, T accumulated) {
    if constexpr (std::is_integral_v<T>)
      return integer_extreme<Choose>(blocks, whole, accumulated);
    else
      return floating_extreme<Choose>(blocks, whole, accumulated);
  };
  return scan_blocks(elements, count, stride, start, choose_whole, Choose());
}

constexpr auto extremes_of = [](auto zero) {
  using T = decltype(zero);
  return Extremes<T>{{&first_extreme<Smaller, T>, &extreme_by_blocks<Smaller, T>},
                     {&first_extreme<Larger, T>, &extreme_by_blocks<Larger, T>}};
};

constexpr auto all_extremes = for_element_types<Extremes>(extremes_of);

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

const ForElementTypes<Extremes>* const extremes_by_target[] = ARRAYFOLD_LOOPS(all_extremes);

}  // namespace arrayfold
#endif
