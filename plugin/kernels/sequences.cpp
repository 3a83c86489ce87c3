// kernels/sequences.cpp: elements computed from their position, for each processor target

#include "kernels/sequences.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/sequences.cpp"
#include <hwy/foreach_target.h>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"
#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

void fill_doubles(double* out, std::size_t count, double value) {
  for_each_register(hn::ScalableTag<double>(), count,
                    [=](auto tag, std::size_t i) HWY_ATTR { hn::StoreU(hn::Set(tag, value), tag, out + i); });
}

void count_up_doubles(double* out, std::size_t count, std::int32_t start, std::int32_t step) {
  for_each_register(TagFor<std::int32_t, double>(), count, [=](auto tag, std::size_t i) HWY_ATTR {
    const auto here = static_cast<std::int32_t>(static_cast<std::uint32_t>(start) +
                                                static_cast<std::uint32_t>(i) * static_cast<std::uint32_t>(step));
    const auto steps = hn::Mul(hn::Iota(tag, 0), hn::Set(tag, step));
    store(tag, hn::Add(hn::Set(tag, here), steps), out + i);
  });
}

template <class T>
void spaced(T* out, std::size_t count, double first, double step) {
  const hn::ScalableTag<double> whole;
  constexpr std::size_t lanes = hn::MaxLanes(whole);
  const auto write = [=](auto tag, auto positions, std::size_t i) HWY_ATTR {
    const auto numbers = hn::Add(hn::Set(tag, first), hn::Mul(positions, hn::Set(tag, step)));
    const hn::Rebind<T, decltype(tag)> elements;
    hn::StoreU(from_doubles(elements, numbers), elements, out + i);
  };
  // Counting in a register takes fewer instructions than converting a position for each register.
  auto positions = hn::Iota(whole, 0);
  const auto beyond = [&](std::size_t n)
                          HWY_ATTR { return hn::Add(positions, hn::Set(whole, static_cast<double>(n))); };
  std::size_t i = 0;
  for (; count - i >= 4 * lanes; i += 4 * lanes, positions = beyond(4 * lanes)) {
    write(whole, positions, i);
    write(whole, beyond(lanes), i + lanes);
    write(whole, beyond(2 * lanes), i + 2 * lanes);
    write(whole, beyond(3 * lanes), i + 3 * lanes);
  }
  for_each_register(whole, count - i, [=](auto tag, std::size_t k) HWY_ATTR {
    write(tag, hn::Add(hn::Iota(tag, 0), hn::Set(tag, static_cast<double>(i + k))), i + k);
  });
}

constexpr auto spacing_of = [](auto zero) { return EvenSpacing<decltype(zero)>{&spaced}; };
constexpr auto all_spacing = for_element_types<EvenSpacing>(spacing_of);

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

constexpr decltype(&HWY_STATIC_DISPATCH(fill_doubles)) fill_by_target[] = ARRAYFOLD_LOOPS(fill_doubles);
constexpr decltype(&HWY_STATIC_DISPATCH(count_up_doubles)) count_up_by_target[] = ARRAYFOLD_LOOPS(count_up_doubles);
const ForElementTypes<EvenSpacing>* const even_spacing_by_target[] = ARRAYFOLD_LOOPS(all_spacing);

void fill(double* out, std::size_t count, double value) { fill_by_target[target_index()](out, count, value); }

void count_up(double* out, std::size_t count, std::int32_t start, std::int32_t step) {
  count_up_by_target[target_index()](out, count, start, step);
}

}  // namespace arrayfold
#endif
