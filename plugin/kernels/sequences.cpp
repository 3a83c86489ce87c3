// kernels/sequences.cpp: elements computed from their position, for each processor target

#include "kernels/sequences.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/sequences.cpp"
#include <hwy/foreach_target.h>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"
#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold {
namespace HWY_NAMESPACE {

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
  for_each_register(hn::ScalableTag<double>(), count, [=](auto tag, std::size_t i) HWY_ATTR {
    const auto positions = hn::Add(hn::Iota(tag, 0), hn::Set(tag, static_cast<double>(i)));
    const auto numbers = hn::Add(hn::Set(tag, first), hn::Mul(positions, hn::Set(tag, step)));
    const hn::Rebind<T, decltype(tag)> elements;
    hn::StoreU(from_doubles(elements, numbers), elements, out + i);
  });
}

constexpr ForElementTypes<EvenSpacing> all_spacing({&spaced}, {&spaced}, {&spaced}, {&spaced});

}  // namespace HWY_NAMESPACE
}  // namespace arrayfold
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

ARRAYFOLD_EXPORT(fill_by_target, fill_doubles);
ARRAYFOLD_EXPORT(count_up_by_target, count_up_doubles);
ARRAYFOLD_EXPORT(even_spacing_by_target, all_spacing);

void fill(double* out, std::size_t count, double value) { fill_by_target[target_index()](out, count, value); }

void count_up(double* out, std::size_t count, std::int32_t start, std::int32_t step) {
  count_up_by_target[target_index()](out, count, start, step);
}

}  // namespace arrayfold
#endif
