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

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "kernels/conversion.hpp"
#include "kernels/large_results.hpp"
#include "kernels/per_target-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

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
/// quarter, down to one. `first` is a multiple of the lanes of D, so the lower bits of `count` say what is left.
template <class D, class Step>
HWY_INLINE void for_each_narrower(D tag, std::size_t first, std::size_t count, const Step& step) {
  if constexpr (hn::MaxLanes(tag) > 1) {
    const hn::Half<D> half;
    constexpr std::size_t lanes = hn::MaxLanes(half);
    if ((count & lanes) != 0) {
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
  for (const std::size_t end = count / (4 * lanes) * (4 * lanes); first != end; first += 4 * lanes) {
    step(tag, first);
    step(tag, first + lanes);
    step(tag, first + 2 * lanes);
    step(tag, first + 3 * lanes);
  }
  for (const std::size_t end = count / lanes * lanes; first != end; first += lanes) step(tag, first);
  for_each_narrower(tag, first, count, step);
}

/// The same in no particular order: the four registers of a turn come from the four quarters of the elements, which
/// keeps more loads from memory in flight.
template <class D, class Step>
HWY_INLINE void for_each_register_in_quarters(D tag, std::size_t count, const Step& step) {
  constexpr std::size_t lanes = hn::MaxLanes(tag);
  const std::size_t quarter = count / (4 * lanes) * lanes;
  std::size_t first = 0;
  for (; first < quarter; first += lanes) {
    step(tag, first);
    step(tag, first + quarter);
    step(tag, first + 2 * quarter);
    step(tag, first + 3 * quarter);
  }
  for (first += 3 * quarter; count - first >= lanes; first += lanes) step(tag, first);
  for_each_narrower(tag, first, count, step);
}

// ---- Questions

/// True when `is_it(tag, lanes)` holds for some element.
template <class T, class IsIt>
HWY_INLINE bool any_of(const T* elements, std::size_t count, IsIt is_it) {
  bool found = false;
  for_each_register(hn::ScalableTag<T>(), count, [&](auto tag, std::size_t i) HWY_ATTR {
    found |= !hn::AllFalse(tag, is_it(tag, hn::LoadU(tag, elements + i)));
  });
  return found;
}

/// Only a negative zero has the bits of a sign alone.
template <class D, class V>
HWY_INLINE hn::Mask<D> is_negative_zero(D tag, V lanes) {
  const hn::RebindToSigned<D> bits;
  const auto sign = hn::BitCast(bits, hn::Set(tag, -hn::TFromD<D>{0}));
  return hn::RebindMask(tag, hn::Eq(hn::BitCast(bits, lanes), sign));
}

// ---- Folds in no particular order

/// Where the four accumulators of a fold read: next to each other, or each its own quarter of the elements.
enum class Reading { together, in_quarters };

/// Folds `folded` and the elements behind the last whole register into one number. Halves first, so a narrower register
/// of elements joins where it fits.
template <class Fold, class D>
HWY_INLINE hn::TFromD<D> fold_lanes(D tag, hn::Vec<D> folded, const hn::TFromD<D>* elements, std::size_t count) {
  if constexpr (hn::MaxLanes(tag) == 1) {
    return hn::GetLane(folded);
  } else {
    const hn::Half<D> half;
    constexpr std::size_t lanes = hn::MaxLanes(half);
    // A single lane has no upper half: the name is found by its argument.
    auto halves = Fold()(half, hn::LowerHalf(half, folded), UpperHalf(half, folded));
    if ((count & lanes) != 0) {
      halves = Fold()(half, halves, hn::LoadU(half, elements));
      elements += lanes;
    }
    return fold_lanes<Fold>(half, halves, elements, count);
  }
}

/// Folds the elements by `Fold()(tag, a, b)`, in any order; `start` may be folded in several times. Four accumulators
/// take whole registers, two each a turn: with one, compilers add as many copies of registers as there are operations.
template <class Fold, Reading reading, class T>
HWY_INLINE T fold_freely(const T* elements, std::size_t count, T start) {
  const hn::ScalableTag<T> tag;
  using V = hn::Vec<decltype(tag)>;
  constexpr std::size_t lanes = hn::MaxLanes(tag);
  const std::size_t turns = count / (8 * lanes);
  const std::size_t apart = reading == Reading::together ? 2 * lanes : turns * 2 * lanes;
  const std::size_t step = reading == Reading::together ? 8 * lanes : 2 * lanes;
  const Fold fold;
  const auto with_two = [=](V folded, const T* from) HWY_ATTR {
    return fold(tag, fold(tag, folded, hn::LoadU(tag, from)), hn::LoadU(tag, from + lanes));
  };
  V a = hn::Set(tag, start);
  if (turns != 0) {
    V b = a, c = a, d = a;
    for (std::size_t turn = 0; turn < turns; ++turn) {
      const T* const from = elements + turn * step;
      a = with_two(a, from), b = with_two(b, from + apart);
      c = with_two(c, from + 2 * apart), d = with_two(d, from + 3 * apart);
    }
    a = fold(tag, fold(tag, a, b), fold(tag, c, d));
  }
  std::size_t i = turns * 8 * lanes;
  for (; i + lanes <= count; i += lanes) a = fold(tag, a, hn::LoadU(tag, elements + i));
  return fold_lanes<Fold>(tag, a, elements + i, count - i);
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

/// Doubles without their fraction as lanes of integers, which can hold them. Single lanes are cast: Highway's fallback
/// takes what lies between the smallest integer and the next one for the smallest.
template <class D, class V>
HWY_INLINE hn::Vec<D> without_fraction(D tag, V doubles) {
  using T = hn::TFromD<D>;
  if constexpr (hn::MaxLanes(tag) == 1)
    return hn::Set(tag, static_cast<T>(hn::GetLane(doubles)));
  else if constexpr (sizeof(T) == sizeof(double))
    return hn::ConvertTo(tag, doubles);
  else
    return hn::DemoteTo(tag, doubles);
}

/// The lower halves of 64-bit integers, as 32-bit ones.
template <class D, class V>
HWY_INLINE hn::Vec<D> lower_halves(D tag, V numbers) {
  const hn::RebindToUnsigned<D> halves;
  return hn::BitCast(tag, hn::TruncateTo(halves, hn::BitCast(hn::Rebind<std::uint64_t, D>(), numbers)));
}

/// Doubles as lanes of `tag`: rounded to float, and `truncated` to integers. Single lanes are cast: Highway's fallback
/// never rounds to infinity.
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
    return without_fraction(tag,
                            hn::IfThenElse(hn::Lt(doubles, hn::Set(wide, -lowest)), doubles, hn::Set(wide, lowest)));
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

/// The lanes as the elements of a result of type R: as they are, or integers and 32-bit numbers widened to double.
template <class R, class D, class V>
HWY_INLINE hn::Vec<hn::Rebind<R, D>> as_results(D tag, V lanes) {
  if constexpr (std::is_same_v<hn::TFromD<D>, R>) {
    return lanes;
  } else {
    static_assert(std::is_same_v<R, double>, "lanes are stored as they are or as doubles");
    return as_doubles(tag, lanes);
  }
}

/// Stores the lanes as elements of a result.
template <class D, class V, class R>
HWY_INLINE void store(D tag, V lanes, R* out) {
  hn::StoreU(as_results<R>(tag, lanes), hn::Rebind<R, D>(), out);
}

/// Stores `result_at(tag, first)` past the caches for all elements of a large result, where that takes less time, and
/// tells whether it did. Not a part of the loops that call it, so that small results do not pay for its registers.
template <class D, class R, class ResultAt>
HWY_NOINLINE bool store_past_caches(D tag, R* out, std::size_t count, ResultAt result_at) {
  if (!has_used_pages(out, count * sizeof(R))) return false;
  constexpr std::size_t lanes = hn::MaxLanes(tag);
  const std::size_t end = count / lanes * lanes;
  for (std::size_t i = 0; i < end; i += lanes)
    hn::Stream(as_results<R>(tag, result_at(tag, i)), hn::Rebind<R, D>(), out + i);
  hwy::FlushStream();
  for_each_narrower(tag, end, count,
                    [=](auto narrower, std::size_t i) HWY_ATTR { store(narrower, result_at(narrower, i), out + i); });
  return true;
}

/// Stores `result_at(tag, first)` for all elements of a result. Over an operand a result goes into the caches, which
/// hold its lines already.
template <class D, class R, class ResultAt>
HWY_INLINE void store_results(D tag, R* out, std::size_t count, ResultAt result_at, bool is_over_operand = false) {
  if (HWY_UNLIKELY(is_large<R>(count)) && !is_over_operand && store_past_caches(tag, out, count, result_at)) return;
  for_each_register(tag, count,
                    [=](auto narrower, std::size_t i) HWY_ATTR { store(narrower, result_at(narrower, i), out + i); });
}

/// Truth values are stored as bytes of 0 or 1.
HWY_INLINE std::uint8_t* bytes_of(bool* truths) {
  static_assert(sizeof(bool) == 1, "truth values are bytes");
  return static_cast<std::uint8_t*>(static_cast<void*>(truths));
}

/// Stores each lane of a mask as a truth value.
template <class D, class M>
HWY_INLINE void store_truths(D tag, M mask, bool* out) {
  const hn::Rebind<std::uint8_t, D> bytes;
  hn::StoreU(bytes_of_mask(tag, bytes, mask), bytes, bytes_of(out));
}
/// The same for two registers, with one store.
template <class D, class M>
HWY_INLINE void store_truths(D tag, M first, M second, bool* out) {
  const hn::Twice<hn::Rebind<std::uint8_t, D>> bytes;
  hn::StoreU(bytes_of_masks(tag, bytes, first, second), bytes, bytes_of(out));
}

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
