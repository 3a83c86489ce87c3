// kernels/sort_keys.cpp: elements as integers that sort like them, for each processor target

#include "kernels/sort_keys.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/sort_keys.cpp"
#include <hwy/foreach_target.h>

#include <algorithm>
#include <limits>

#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

template <class D>
using SignedOf = hn::RebindToSigned<D>;

// ---- Doubles as they are

bool any_nan(const double* elements, std::size_t count) {
  return any_of(elements, count, [](auto, auto x) HWY_ATTR { return hn::IsNaN(x); });
}

bool all_in_order(const double* elements, std::size_t count) {
  return !any_of(elements, count,
                 [](auto tag, auto x) HWY_ATTR { return hn::Or(hn::IsNaN(x), is_negative_zero(tag, x)); });
}

void turn(double* elements, std::size_t count) {
  for_each_register(hn::ScalableTag<double>(), count, [=](auto tag, std::size_t i) HWY_ATTR {
    const SignedOf<decltype(tag)> integers;
    const auto bits = hn::BitCast(integers, hn::LoadU(tag, elements + i));
    const auto value_bits = hn::Set(integers, std::numeric_limits<std::int64_t>::max());
    const auto turned = hn::Xor(bits, hn::And(hn::BroadcastSignBit(bits), value_bits));
    hn::StoreU(hn::BitCast(tag, turned), tag, elements + i);
  });
}

// ---- Keys

template <class D>
using KeysOf = hn::Rebind<std::uint64_t, D>;

template <class D, class V>
HWY_INLINE hn::Vec<KeysOf<D>> keys_of(D tag, V elements) {
  using T = hn::TFromD<D>;
  const KeysOf<D> keys;
  if constexpr (std::is_same_v<T, double>) {
    const SignedOf<D> integers;
    const auto sign = hn::Set(integers, std::numeric_limits<std::int64_t>::min());
    // Adding 0 makes zeros of both signs equal.
    const auto bits = hn::BitCast(integers, hn::Add(elements, hn::Zero(tag)));
    return hn::BitCast(keys, hn::Xor(bits, hn::Or(hn::BroadcastSignBit(bits), sign)));
  } else {
    const auto turned = hn::Xor(elements, hn::Set(tag, std::numeric_limits<T>::min()));
    if constexpr (std::is_same_v<T, std::int32_t>)
      return hn::PromoteTo(keys, hn::BitCast(hn::RebindToUnsigned<D>(), turned));
    else
      return hn::BitCast(keys, turned);
  }
}

template <class T>
std::uint64_t key_of(T element) {
  const hn::CappedTag<T, 1> one;
  return hn::GetLane(keys_of(one, hn::Set(one, element)));
}

/// Keys are ordered like their elements, so those of the extremes suffice.
template <class T>
KeyRange range_of_keys(const T* elements, std::size_t count) {
  const hn::ScalableTag<T> tag;
  constexpr std::size_t lanes = hn::MaxLanes(tag);
  auto lows = hn::Set(tag, *elements), highs = lows;
  std::size_t i = 0;
  for (; count - i >= lanes; i += lanes) {
    const auto x = hn::LoadU(tag, elements + i);
    lows = hn::Min(lows, x), highs = hn::Max(highs, x);
  }
  T extremes[2 * lanes];
  hn::StoreU(lows, tag, extremes);
  hn::StoreU(highs, tag, extremes + lanes);
  T low = *elements, high = low;
  const auto include = [&](const T* first, const T* end) {
    for (; first != end; ++first) low = std::min(low, *first), high = std::max(high, *first);
  };
  include(extremes, extremes + 2 * lanes);
  include(elements + i, elements + count);
  return {key_of(low), key_of(high)};
}

template <class T>
void pack_keys(const T* elements, std::size_t count, const KeyPacking& packing, std::uint64_t* numbers) {
  const auto [low, left_out, position_width] = packing;
  for_each_register(TagFor<T, std::uint64_t>(), count,
                    [=, lowest = low, cut = left_out, width = position_width](auto tag, std::size_t i) HWY_ATTR {
                      const KeysOf<decltype(tag)> keys;
                      const auto key = hn::Sub(keys_of(tag, hn::LoadU(tag, elements + i)), hn::Set(keys, lowest));
                      const auto upper = hn::ShiftLeftSame(hn::ShiftRightSame(key, cut), width);
                      hn::StoreU(hn::Or(upper, hn::Iota(keys, i)), keys, numbers + i);
                    });
}

template <class T>
void pack_whole_keys(const T* elements, std::size_t count, hwy::uint128_t* numbers) {
  for (std::size_t i = 0; i < count; ++i) numbers[i] = {i, key_of(elements[i])};
}

template <class T>
constexpr SortKeys<T> keys{&range_of_keys<T>, &pack_keys<T>, &pack_whole_keys<T>};

constexpr ForElementTypes<SortKeys> all_sort_keys(keys<double>, {}, keys<std::int32_t>, keys<std::int64_t>);

void positions_of(const std::uint64_t* numbers, std::size_t count, const KeyPacking& packing, std::int32_t* positions) {
  const std::uint64_t mask = packing.position_in(~std::uint64_t{0});
  for_each_register(hn::ScalableTag<std::uint64_t>(), count, [=](auto tag, std::size_t i) HWY_ATTR {
    const hn::Rebind<std::int32_t, decltype(tag)> ints;
    const auto found = hn::And(hn::LoadU(tag, numbers + i), hn::Set(tag, mask));
    hn::StoreU(lower_halves(ints, found), ints, positions + i);
  });
}

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

constexpr decltype(&HWY_STATIC_DISPATCH(any_nan)) any_nan_by_target[] = ARRAYFOLD_LOOPS(any_nan);
constexpr decltype(&HWY_STATIC_DISPATCH(all_in_order)) all_in_order_by_target[] = ARRAYFOLD_LOOPS(all_in_order);
constexpr decltype(&HWY_STATIC_DISPATCH(turn)) turn_by_target[] = ARRAYFOLD_LOOPS(turn);
const ForElementTypes<SortKeys>* const sort_keys_by_target[] = ARRAYFOLD_LOOPS(all_sort_keys);
constexpr decltype(&HWY_STATIC_DISPATCH(positions_of)) positions_by_target[] = ARRAYFOLD_LOOPS(positions_of);

bool has_nan(const double* elements, std::size_t count) { return any_nan_by_target[target_index()](elements, count); }

bool in_total_order(const double* elements, std::size_t count) {
  return all_in_order_by_target[target_index()](elements, count);
}

void turn_negatives(double* elements, std::size_t count) { turn_by_target[target_index()](elements, count); }

void unpack_positions(const std::uint64_t* numbers, std::size_t count, const KeyPacking& packing,
                      std::int32_t* positions) {
  positions_by_target[target_index()](numbers, count, packing, positions);
}

}  // namespace arrayfold
#endif
