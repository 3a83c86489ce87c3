// kernels/brackets.cpp: elements inside and around a bracket, for each processor target

#include "kernels/brackets.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/brackets.cpp"
#include <hwy/foreach_target.h>

#include <type_traits>

#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

/// Whole registers may be written to `gathered`: never beyond its end, as no more are inside than were read.
template <class T>
void count_around(const T* elements, std::size_t count, const Bracket<T>& bracket, BracketCounts& counts, T* gathered) {
  const T low = bracket.low, high = bracket.high;
  BracketCounts found;
  const auto add = [&](auto tag, std::size_t i) HWY_ATTR __attribute__((always_inline)) {
    const auto x = hn::LoadU(tag, elements + i), lowest = hn::Set(tag, low), highest = hn::Set(tag, high);
    const auto above_low = hn::Lt(lowest, x);
    found.inside += gather_true(tag, elements + i, hn::And(above_low, hn::Lt(x, highest)), gathered + found.inside);
    found.below += hn::CountTrue(tag, hn::Lt(x, lowest));
    if constexpr (std::is_integral_v<T>) {
      found.at_most_low += hn::MaxLanes(tag) - hn::CountTrue(tag, above_low);
      found.at_most_high += hn::MaxLanes(tag) - hn::CountTrue(tag, hn::Lt(highest, x));
    } else {
      found.at_most_low += hn::CountTrue(tag, hn::Le(x, lowest));
      found.at_most_high += hn::CountTrue(tag, hn::Le(x, highest));
      found.any_nan |= !hn::AllTrue(tag, hn::Eq(x, x));
    }
  };
  for_each_register(hn::ScalableTag<T>(), count, add);
  counts.below += found.below, counts.at_most_low += found.at_most_low, counts.inside += found.inside;
  counts.at_most_high += found.at_most_high, counts.any_nan |= found.any_nan;
}

template <class T>
bool any_negative_zero(const T* elements, std::size_t count) {
  return any_of(elements, count, [](auto tag, auto x) HWY_ATTR { return is_negative_zero(tag, x); });
}

constexpr auto brackets_of = [](auto zero) {
  using T = decltype(zero);
  BracketLoops<T> all{&count_around<T>, nullptr};
  if constexpr (std::is_floating_point_v<T>) all.any_negative_zero = &any_negative_zero<T>;
  return all;
};

constexpr auto all_bracket_loops = for_element_types<BracketLoops>(brackets_of);

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

const ForElementTypes<BracketLoops>* const bracket_loops_by_target[] = ARRAYFOLD_LOOPS(all_bracket_loops);

}  // namespace arrayfold
#endif
