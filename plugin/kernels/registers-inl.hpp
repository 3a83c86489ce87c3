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
#include <type_traits>

#include <hwy/highway.h>

#include "kernels/per_target-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold {
namespace HWY_NAMESPACE {

/// The tag of registers whose lanes are T, as many as fit the widest register in the wider of T and R.
template <class T, class R = T>
using TagFor = hn::Rebind<T, hn::ScalableTag<std::conditional_t<(sizeof(R) > sizeof(T)), R, T>>>;

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

// ---- Lanes to memory of another type

/// Stores each lane as a T: integers and 32-bit numbers are widened to double.
template <class D, class V, class R>
HWY_INLINE void store(D tag, V lanes, R* out) {
  using T = hn::TFromD<D>;
  if constexpr (std::is_same_v<T, R>) {
    hn::StoreU(lanes, tag, out);
  } else {
    static_assert(std::is_same_v<R, double>, "lanes are stored as they are or as doubles");
    const hn::Rebind<double, D> doubles;
    if constexpr (std::is_same_v<T, std::int64_t>)
      hn::StoreU(hn::ConvertTo(doubles, lanes), doubles, out);
    else
      hn::StoreU(hn::PromoteTo(doubles, lanes), doubles, out);
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
