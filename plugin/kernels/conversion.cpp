// kernels/conversion.cpp: numbers of one type as numbers of another, for each processor target

#include "kernels/conversion.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/conversion.cpp"
#include <hwy/foreach_target.h>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"
#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

/// The lower halves of 64-bit integers.
template <class D, class V>
HWY_INLINE hn::Vec<D> lower_halves(D tag, V numbers) {
  const hn::RebindToUnsigned<D> halves;
  return hn::BitCast(tag, hn::TruncateTo(halves, hn::BitCast(hn::Rebind<std::uint64_t, D>(), numbers)));
}

template <class From, class To>
void convert_all(const From* in, To* out, std::size_t count) {
  for_each_register(TagFor<From, double>(), count, [=](auto tag, std::size_t i) HWY_ATTR {
    const hn::Rebind<To, decltype(tag)> results;
    const auto numbers = hn::LoadU(tag, in + i);
    if constexpr (std::is_integral_v<From> && std::is_integral_v<To>)
      hn::StoreU(lower_halves(results, numbers), results, out + i);
    else
      hn::StoreU(from_doubles(results, as_doubles(tag, numbers)), results, out + i);
  });
}

constexpr ForElementTypes<Conversions> all_conversions({nullptr, &convert_all, &convert_all},
                                                       {&convert_all, &convert_all, &convert_all},
                                                       {&convert_all, nullptr, nullptr},
                                                       {&convert_all, &convert_all, nullptr});

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

const ForElementTypes<Conversions>* const conversions_by_target[] = ARRAYFOLD_LOOPS(all_conversions);

}  // namespace arrayfold
#endif
