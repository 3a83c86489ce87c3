// kernels/registers-inl.hpp: walks over memory, a register at a time
//
// Kernel sources include this header once for each processor target, within the target's own namespace. A step gets a
// tag, which says the type and the number of lanes, and computes that many elements. One lane suffices: on a processor
// without vectors every step is a single element.

#if defined(ARRAYFOLD_REGISTERS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ARRAYFOLD_REGISTERS_INL
#undef ARRAYFOLD_REGISTERS_INL
#else
#define ARRAYFOLD_REGISTERS_INL
#endif

#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include <hwy/highway.h>

#include "kernels/conversion.hpp"
#include "kernels/per_target-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold {
namespace HWY_NAMESPACE {

/// The tag of registers whose lanes are T, as many as fit the widest register in the wider of T and R.
template <class T, class R = T>
using TagFor = hn::Rebind<T, hn::ScalableTag<std::conditional_t<(sizeof(R) > sizeof(T)), R, T>>>;

// ---- Products

/// The product of lanes; integers wrap in their width.
template <class D, class V>
HWY_INLINE V product(D tag, V a, V b) {
  if constexpr (std::is_same_v<hn::TFromD<D>, std::int64_t>)
    return product_of_64_bits(tag, a, b);
  else
    return hn::Mul(a, b);
}

// ---- Walks

/// Calls `step(tag, first)` for the elements behind the last whole register of D: registers of half the lanes, a
/// quarter, down to one.
template <class D, class Step>
HWY_INLINE void for_each_narrower(D tag, std::size_t first, std::size_t count, const Step& step) {
  if constexpr (hn::MaxLanes(tag) > 1) {
    const hn::Half<D> half;
    constexpr std::size_t lanes = hn::MaxLanes(half);
    if (((count - first) & lanes) != 0) {
      step(half, first);
      first += lanes;
    }
    for_each_narrower(half, first, count, step);
  }
}

/// Calls `step(tag, first)` for consecutive elements, which together are `count`: whole registers of D, four a turn,
/// then narrower ones. No element beyond the end is touched, and none twice.
template <class D, class Step>
HWY_INLINE void for_each_register(D tag, std::size_t count, const Step& step) {
  constexpr std::size_t lanes = hn::MaxLanes(tag);
  std::size_t first = 0;
  for (; first + 4 * lanes <= count; first += 4 * lanes) {
    step(tag, first);
    step(tag, first + lanes);
    step(tag, first + 2 * lanes);
    step(tag, first + 3 * lanes);
  }
  for (; first + lanes <= count; first += lanes) step(tag, first);
  for_each_narrower(tag, first, count, step);
}

// ---- Lanes of one type as lanes of another

/// 32-bit numbers and 64-bit integers as doubles, rounded as a cast rounds. Doubles stay what they are.
template <class D, class V>
HWY_INLINE hn::Vec<hn::Rebind<double, D>> as_doubles(D, V lanes) {
  using T = hn::TFromD<D>;
  const hn::Rebind<double, D> doubles;
  if constexpr (std::is_same_v<T, double>)
    return lanes;
  else if constexpr (sizeof(T) == sizeof(double))
    return hn::ConvertTo(doubles, lanes);
  else
    return hn::PromoteTo(doubles, lanes);
}

/// Doubles as lanes of `tag`: rounded to float, and `truncated` to integers. Single lanes are cast: Highway's fallback
/// never rounds to infinity, and gives the smallest integer for what lies between that and the next one.
template <class D, class V>
HWY_INLINE hn::Vec<D> from_doubles(D tag, V doubles) {
  using T = hn::TFromD<D>;
  if constexpr (std::is_same_v<T, double>) {
    return doubles;
  } else if constexpr (hn::MaxLanes(tag) == 1) {
    if constexpr (std::is_integral_v<T>)
      return hn::Set(tag, truncated<T>(hn::GetLane(doubles)));
    else
      return hn::Set(tag, static_cast<T>(hn::GetLane(doubles)));
  } else if constexpr (std::is_integral_v<T>) {
    // Highway saturates: only what is beyond the largest integer, and NaN, differ from `truncated`.
    const hn::Rebind<double, D> wide;
    constexpr auto lowest = static_cast<double>(std::numeric_limits<T>::min());
    const auto fitting = hn::IfThenElse(hn::Lt(doubles, hn::Set(wide, -lowest)), doubles, hn::Set(wide, lowest));
    if constexpr (sizeof(T) == sizeof(double))
      return hn::ConvertTo(tag, fitting);
    else
      return hn::DemoteTo(tag, fitting);
  } else {
    return hn::DemoteTo(tag, doubles);
  }
}

// ---- Lanes from memory of another type

/// As many elements as `tag` has lanes, each converted to the type of the lanes.
template <class D, class T>
HWY_INLINE hn::Vec<D> load_as(D tag, const T* elements) {
  using R = hn::TFromD<D>;
  if constexpr (std::is_same_v<T, R>) {
    return hn::LoadU(tag, elements);
  } else if constexpr (sizeof(T) > sizeof(R)) {
    // Registers have no conversion to a narrower type that rounds once.
    R converted[hn::MaxLanes(tag)];
    for (std::size_t lane = 0; lane < hn::MaxLanes(tag); ++lane) converted[lane] = static_cast<R>(elements[lane]);
    return hn::LoadU(tag, converted);
  } else {
    const hn::Rebind<T, D> stored;
    const auto lanes = hn::LoadU(stored, elements);
    if constexpr (std::is_same_v<R, double>)
      return as_doubles(stored, lanes);
    else if constexpr (sizeof(T) == sizeof(R))
      return hn::ConvertTo(tag, lanes);
    else
      return hn::PromoteTo(tag, lanes);
  }
}

// ---- Lanes to memory of another type

/// Stores each lane as a T: integers and 32-bit numbers are widened to double.
template <class D, class V, class R>
HWY_INLINE void store(D tag, V lanes, R* out) {
  if constexpr (std::is_same_v<hn::TFromD<D>, R>) {
    hn::StoreU(lanes, tag, out);
  } else {
    static_assert(std::is_same_v<R, double>, "lanes are stored as they are or as doubles");
    hn::StoreU(as_doubles(tag, lanes), hn::Rebind<double, D>(), out);
  }
}

/// Stores each lane of a mask as a truth value, a byte of 0 or 1.
template <class D, class M>
HWY_INLINE void store_truths(D tag, M mask, bool* out) {
  static_assert(sizeof(bool) == 1, "truth values are stored as bytes");
  auto* const bytes = static_cast<std::uint8_t*>(static_cast<void*>(out));
  const hn::Rebind<std::uint8_t, D> small;
  hn::StoreU(bytes_of_mask(tag, small, mask), small, bytes);
}

}  // namespace HWY_NAMESPACE
}  // namespace arrayfold
HWY_AFTER_NAMESPACE();

#endif
