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

template <class From, class To>
void convert_all(const From* in, To* out, std::size_t count) {
  for_each_register(TagFor<From, double>(), count, [=](auto tag, std::size_t i) HWY_ATTR {
    const hn::Rebind<To, decltype(tag)> results;
    const auto numbers = hn::LoadU(tag, in + i);
    if constexpr (std::is_same_v<From, std::int32_t> && std::is_same_v<To, std::int64_t>)
      hn::StoreU(hn::PromoteTo(results, numbers), results, out + i);
    else if constexpr (std::is_integral_v<From> && std::is_integral_v<To>)
      hn::StoreU(lower_halves(results, numbers), results, out + i);
    else
      hn::StoreU(from_doubles(results, as_doubles(tag, numbers)), results, out + i);
  });
}

constexpr ForElementTypes<Conversions> all_conversions({nullptr, &convert_all, &convert_all},
                                                       {&convert_all, &convert_all, &convert_all},
                                                       {&convert_all, nullptr, &convert_all},
                                                       {&convert_all, &convert_all, nullptr});

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

const ForElementTypes<Conversions>* const conversions_by_target[] = ARRAYFOLD_LOOPS(all_conversions);

}  // namespace arrayfold
#endif
