// kernels/brackets.cpp: elements inside and around a bracket, for each processor target

#include "kernels/brackets.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/brackets.cpp"
#include <hwy/foreach_target.h>

#include <type_traits>

#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold {
namespace HWY_NAMESPACE {

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
constexpr BracketLoops<T> loops_of() {
  return {&count_around<T>};
}

constexpr ForElementTypes<BracketLoops> all_bracket_loops(loops_of<double>(), loops_of<float>(),
                                                          loops_of<std::int32_t>(), loops_of<std::int64_t>());

/// Only a negative zero has the bits of a sign alone.
template <class T>
bool any_negative_zero(const T* elements, std::size_t count) {
  bool found = false;
  for_each_register(hn::ScalableTag<T>(), count, [&](auto tag, std::size_t i) HWY_ATTR {
    const hn::RebindToSigned<decltype(tag)> bits;
    const auto sign = hn::BitCast(bits, hn::Set(tag, -T{0}));
    found |= !hn::AllFalse(bits, hn::Eq(hn::BitCast(bits, hn::LoadU(tag, elements + i)), sign));
  });
  return found;
}

bool any_negative_zero_of_doubles(const double* elements, std::size_t count) {
  return any_negative_zero(elements, count);
}
bool any_negative_zero_of_floats(const float* elements, std::size_t count) {
  return any_negative_zero(elements, count);
}

}  // namespace HWY_NAMESPACE
}  // namespace arrayfold
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

ARRAYFOLD_EXPORT(bracket_loops_by_target, all_bracket_loops);
ARRAYFOLD_EXPORT(any_negative_zero_of_doubles_by_target, any_negative_zero_of_doubles);
ARRAYFOLD_EXPORT(any_negative_zero_of_floats_by_target, any_negative_zero_of_floats);

bool has_negative_zero(const double* elements, std::size_t count) {
  return any_negative_zero_of_doubles_by_target[target_index()](elements, count);
}
bool has_negative_zero(const float* elements, std::size_t count) {
  return any_negative_zero_of_floats_by_target[target_index()](elements, count);
}

}  // namespace arrayfold
#endif
